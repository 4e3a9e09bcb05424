// The views of one base that have been followed to their end, so that no view is followed twice.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
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
//
// Views that cost little are not worth remembering. Once the memory has grown to its limit it forgets the cheaper half
// of its views, and takes none that are as cheap.
class ViewMemory {
  public:
    // rowWords: length of all rows; limit: in bytes.
    ViewMemory(size_t rowWords, size_t limit) : rowWords_(rowWords), limit_(limit) {}

    void Clear();
    // Whether the view was followed with a row that has all of mightSee.
    bool Holds(const FlowView& view, const Word* mightSee) const;
    // cost: the calls of RegionFlow that following it took.
    void Add(const FlowView& view, const Word* mightSee, int64_t cost);
    size_t bytes() const;

  private:
    struct Entry {
        uint64_t hash = 0;
        int64_t cost = 0;
        uint32_t next = 0;  // entry with the same head
        int32_t portal = 0;
        uint32_t firstSourcePoint = 0, firstPassPoint = 0, firstWord = 0, wordCount = 0;
        uint8_t sourceCount = 0, passCount = 0;
    };
    static constexpr uint32_t NoEntry = ~uint32_t{0};

    // Of the words of a row those that are not zero, and their places in it.
    struct SparseRow {
        std::span<const Word> words;
        std::span<const uint32_t> places;
    };

    uint32_t& HeadOf(uint64_t hash) { return heads_[hash & (heads_.size() - 1)]; }
    FlowView ViewOf(const Entry& entry) const;
    SparseRow RowOf(const Entry& entry) const;
    Entry& Append(const FlowView& view, int64_t cost);
    void Link(size_t headCount);
    void ForgetCheap();

    size_t rowWords_, limit_;
    int64_t leastCost_ = 0;        // of those that it takes
    std::vector<uint32_t> heads_;  // by hash; their number is a power of two
    std::vector<Entry> entries_;
    std::vector<Vec3d> points_;  // entries in a row with the same source share it
    std::vector<Word> words_;
    std::vector<uint32_t> places_;
};

}  // namespace k2k
