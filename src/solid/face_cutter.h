// Cutting the faces of one block by other blocks.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "solid/block.h"
#include "solid/block_face.h"

namespace k2k {

// A face in work, with its box: most faces lie wholly on one side of most planes, and the box tells so at once.
struct CutFace {
    CutFace* next = nullptr;
    std::array<Vec3, 2> box{};  // lowest and highest coordinates
    int32_t planenum = 0;
    int32_t planeside = 0;
    bool isSettled = false;  // RemoveShortEdges has nothing to remove
    std::unique_ptr<CBlockFace> face;
};

class FaceCutter {
  public:
    // Takes up copies of the block's faces, as seen from empty space.
    void Start(const CBlock& block);

    // Cuts other out of the faces. With precedence its coplanar faces give way. block is the one that Start was given.
    void ClipBy(const CBlock& other, const CBlock& block, bool precedence);

    // The next face that is left, or null.
    std::unique_ptr<CBlockFace> TakeFace();
    bool HasFaces() const { return !outside_.empty(); }

  private:
    void ClipInside(int32_t planenum, int32_t side, bool precedence);
    void FreeInside(int32_t contents);

    IntrusiveList<CutFace> outside_;  // faces still alive
    IntrusiveList<CutFace> inside_;   // of those, the ones not yet found outside the other block
};

}  // namespace k2k
