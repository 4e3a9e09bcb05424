// The views of one base that have been followed to their end, so that no view is followed twice.
#include "vis/view_memory.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <span>
#include <utility>

namespace k2k {
namespace {

constexpr size_t FirstHeadCount = 256;
constexpr int64_t WorthRemembering = 4;  // calls; what takes fewer is followed again in less time

// By bits: 0 and -0 may lead to different results.
bool SamePoints(FlowPoints a, FlowPoints b) {
    return a.size() == b.size() && (a.data() == b.data() || std::memcmp(a.data(), b.data(), a.size_bytes()) == 0);
}

uint64_t HashPoints(uint64_t hash, FlowPoints points) {
    for (const Vec3d& point : points) {
        const auto bits = std::bit_cast<std::array<uint64_t, 3>>(point);
        hash += bits[0] * 0x9E3779B97F4A7C15 + bits[1] * 0xC2B2AE3D27D4EB4F + bits[2] * 0x165667B19E3779F9;
        hash = (hash ^ hash >> 32U) * 0xD6E8FEB86659FD93;
    }
    return hash;
}

}  // namespace

bool FlowView::operator==(const FlowView& other) const {
    return hash == other.hash && portal == other.portal && SamePoints(source, other.source) &&
           SamePoints(pass, other.pass);
}

uint64_t HashView(const FlowView& view) {
    uint64_t hash = static_cast<uint64_t>(view.portal) * MaxPolygonPoints + view.source.size();
    hash = HashPoints(HashPoints(hash, view.source), view.pass);
    return hash ^ hash >> 29U;
}

void ViewMemory::Clear() {
    leastCost_ = WorthRemembering;
    heads_.assign(FirstHeadCount, NoEntry);
    entries_.clear();
    points_.clear();
    words_.clear();
    places_.clear();
}

bool ViewMemory::Holds(const FlowView& view, const Word* mightSee) const {
    int32_t bitCount = -1;  // of mightSee, counted when first needed
    for (uint32_t at = heads_[view.hash & (heads_.size() - 1)]; at != NoEntry; at = entries_[at].next) {
        const Entry& entry = entries_[at];
        if (entry.hash != view.hash || ViewOf(entry) != view) continue;
        if (bitCount < 0) bitCount = CountBits(mightSee, rowWords_);
        int32_t shared = 0;
        const SparseRow row = RowOf(entry);
        for (size_t i = 0; i < row.words.size(); ++i) shared += std::popcount(mightSee[row.places[i]] & row.words[i]);
        if (shared == bitCount) return true;
    }
    return false;
}

FlowView ViewMemory::ViewOf(const Entry& entry) const {
    const FlowPoints points = points_;
    return {entry.portal, points.subspan(entry.firstSourcePoint, entry.sourceCount),
            points.subspan(entry.firstPassPoint, entry.passCount), entry.hash};
}

ViewMemory::SparseRow ViewMemory::RowOf(const Entry& entry) const {
    return {std::span(words_).subspan(entry.firstWord, entry.wordCount),
            std::span(places_).subspan(entry.firstWord, entry.wordCount)};
}

void ViewMemory::Add(const FlowView& view, const Word* mightSee, int64_t cost) {
    if (cost < leastCost_) return;
    Entry& entry = Append(view, cost);
    for (size_t i = 0; i < rowWords_; ++i) {
        if (mightSee[i] == 0) continue;
        words_.push_back(mightSee[i]);
        places_.push_back(static_cast<uint32_t>(i));
        ++entry.wordCount;
    }
    entry.next = std::exchange(HeadOf(view.hash), static_cast<uint32_t>(entries_.size() - 1));
    if (entries_.size() == heads_.size()) Link(heads_.size() * 2);
    if (bytes() > limit_) ForgetCheap();
}

// An entry without its row, that no head leads to yet.
ViewMemory::Entry& ViewMemory::Append(const FlowView& view, int64_t cost) {
    Entry entry;
    entry.hash = view.hash;
    entry.cost = cost;
    entry.portal = view.portal;
    entry.sourceCount = static_cast<uint8_t>(view.source.size());
    entry.passCount = static_cast<uint8_t>(view.pass.size());
    entry.firstWord = static_cast<uint32_t>(words_.size());
    if (!entries_.empty() && SamePoints(ViewOf(entries_.back()).source, view.source)) {
        entry.firstSourcePoint = entries_.back().firstSourcePoint;
    } else {
        entry.firstSourcePoint = static_cast<uint32_t>(points_.size());
        points_.insert(points_.end(), view.source.begin(), view.source.end());
    }
    entry.firstPassPoint = static_cast<uint32_t>(points_.size());
    points_.insert(points_.end(), view.pass.begin(), view.pass.end());
    return entries_.emplace_back(entry);
}

void ViewMemory::Link(size_t headCount) {
    heads_.assign(headCount, NoEntry);
    for (uint32_t at = 0; at < entries_.size(); ++at) entries_[at].next = std::exchange(HeadOf(entries_[at].hash), at);
}

void ViewMemory::ForgetCheap() {
    std::vector<int64_t> costs;
    for (const Entry& entry : entries_) costs.push_back(entry.cost);
    const auto middle = costs.begin() + static_cast<std::ptrdiff_t>(costs.size() / 2);
    std::nth_element(costs.begin(), middle, costs.end());

    ViewMemory dear(rowWords_, limit_);
    dear.Clear();
    dear.leastCost_ = *middle + 1;
    for (const Entry& entry : entries_) {
        if (entry.cost < dear.leastCost_) continue;
        const SparseRow row = RowOf(entry);
        dear.Append(ViewOf(entry), entry.cost).wordCount = entry.wordCount;
        dear.words_.insert(dear.words_.end(), row.words.begin(), row.words.end());
        dear.places_.insert(dear.places_.end(), row.places.begin(), row.places.end());
    }
    dear.Link(heads_.size() / 2);
    *this = std::move(dear);
}

size_t ViewMemory::bytes() const {
    return (heads_.size() * sizeof(uint32_t)) + (entries_.size() * sizeof(Entry)) + (points_.size() * sizeof(Vec3d)) +
           (words_.size() * (sizeof(Word) + sizeof(uint32_t)));
}

}  // namespace k2k
