// Cuts faces that gained too many vertices.
#pragma once

#include <memory>

#include "solid/block_face.h"

namespace k2k {

constexpr size_t MaxRepairedVertices = 28;

// Puts the face at the head of the list; one of more than 28 vertices in pieces of at most 28. The last piece cut off
// stands on the face's leafCopy, the others on the pieces'. A face that has leafCopy set already is fatal then.
void SplitLongFace(std::unique_ptr<CBlockFace> face, FaceList& list);

}  // namespace k2k
