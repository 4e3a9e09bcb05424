// The views of one base that have been followed to their end, so that no view is followed twice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "vis/bit_row.h"
#include "vis/flow_polygon.h"

namespace k2k {

// What decides, together with the row of what it might see, how a view goes on.
struct FlowView {
    int32_t portal = 0;       // number of the one it goes through
    FlowPoints source, pass;  // what is left of the base and of the portal
    uint64_t hash = 0;        // by HashView

    bool operator==(const FlowView& other) const;
};
uint64_t HashView(const FlowView& view);

// Where portals are many and close, as in a level that leaks, chains of different portals come to the same view again
// and again: the same portal, and the same polygons to the bit since nothing has cut them. Such a view shows nothing
// that is not in the row yet when one of those before it might see all that it might see: each step behind it has been
// taken behind that one as well.
class ViewMemory {
  public:
    // rowWords: length of all rows. The memory begins anew once it has grown to limit bytes.
    ViewMemory(size_t rowWords, size_t limit) : rowWords_(rowWords), limit_(limit) {}

    void Clear();
    // Whether the view was followed with a row that has all of mightSee.
    bool Holds(const FlowView& view, const Word* mightSee) const;
    void Add(const FlowView& view, const Word* mightSee);
    size_t bytes() const;

  private:
    struct Entry {
        uint64_t hash = 0;
        uint32_t next = 0;  // entry with the same head
        int32_t portal = 0;
        uint32_t sourceCount = 0, passCount = 0;
        size_t firstPoint = 0;
        size_t firstWord = 0, wordCount = 0;
    };
    // A word of a row, and which; the others are zero.
    struct PlacedWord {
        size_t at = 0;
        Word bits = 0;
    };
    static constexpr uint32_t NoEntry = ~uint32_t{0};

    uint32_t& HeadOf(uint64_t hash) { return heads_[hash & (heads_.size() - 1)]; }
    bool IsView(const Entry& entry, const FlowView& view) const;
    bool HasAll(const Entry& entry, const Word* row, int32_t bitCount) const;
    void Grow();

    size_t rowWords_, limit_;
    std::vector<uint32_t> heads_;  // by hash; their number is a power of two
    std::vector<Entry> entries_;
    std::vector<Vec3d> points_;      // of all entries: source, then pass
    std::vector<PlacedWord> words_;  // of all entries
};

}  // namespace k2k
