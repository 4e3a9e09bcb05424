// Cutting faces to the size that the lighting can cover.
#pragma once

#include "solid/block_face.h"

namespace k2k {

struct TexelSize {
    int32_t size = 0;  // texels from cut to cut
    bool shaded = true;
};
// False: a face of this texture is not cut.
bool SurfaceTexelSize(const CBlockFace& face, TexelSize& out);

// Replaces each face of the list by its pieces; hulls other than 0 are never cut.
FaceList SubdivideList(FaceList faces, int32_t hull);
// Pieces and copies of all faces; the input stays. Announces progress.
FaceList SubdivideCopy(const FaceList& faces);

}  // namespace k2k
