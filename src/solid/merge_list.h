// Coplanar faces that are joined as they arrive.
#pragma once

#include <cstdint>
#include <vector>

#include "solid/block_face.h"

namespace k2k {

// A list of faces on one plane. A face that joins the list is merged with the first face in list order that allows it,
// the result with the first that allows that, and so on; what cannot be merged any more goes to the head.
//
// Which faces merge decides the shape of the result, so the partner must be the first in list order. Partners share an
// edge: they are looked up by the points where edges begin, and tried in list order.
class MergeList {
  public:
    void Merge(std::unique_ptr<CBlockFace> face);

    // Turns the order of the list round.
    void Reverse() { isReversed_ = !isReversed_; }

    // All faces, in list order.
    FaceList Take();

  private:
    struct Slot {
        std::unique_ptr<CBlockFace> face;  // null once merged into another
        int64_t position = 0;              // rises along the list, or falls when the list is reversed
    };
    struct Edge {
        int32_t slot;
        int32_t point;  // where the edge begins
        int32_t older;  // next in the same bucket
    };

    bool IsBefore(int32_t slot, int32_t other) const;
    void FindPartners(const CBlockFace& face);
    std::unique_ptr<CBlockFace> MergeWithFirstPartner(const CBlockFace& face);
    void PushHead(std::unique_ptr<CBlockFace> face);
    void AddEdges(int32_t slot);
    void Reindex();

    std::vector<Slot> slots_;
    std::vector<Edge> edges_;
    std::vector<int32_t> buckets_;      // by hash of a point, a power of two of them: the newest edge
    std::vector<int32_t> partners_;     // scratch: slots
    int64_t lowest_ = 0, highest_ = 0;  // positions in use lie between these
    bool isReversed_ = false;
};

// Whether edge i of one face is edge j of the other, in opposite direction.
bool IsOppositeEdge(const CBlockFace& f1, size_t i, const CBlockFace& f2, size_t j);

// Whether two faces of one plane are of the same kind and few enough points to become one.
bool MayMerge(const CBlockFace& f1, const CBlockFace& f2);

}  // namespace k2k
