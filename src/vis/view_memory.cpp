// The views of one base that have been followed to their end, so that no view is followed twice.
#include "vis/view_memory.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <span>
#include <utility>

namespace k2k {
namespace {

constexpr size_t FirstHeadCount = 256;

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
    heads_.assign(FirstHeadCount, NoEntry);
    entries_.clear();
    points_.clear();
    words_.clear();
}

bool ViewMemory::Holds(const FlowView& view, const Word* mightSee) const {
    int32_t bitCount = -1;  // of mightSee, counted when first needed
    for (uint32_t at = heads_[view.hash & (heads_.size() - 1)]; at != NoEntry; at = entries_[at].next) {
        const Entry& entry = entries_[at];
        if (!IsView(entry, view)) continue;
        if (bitCount < 0) bitCount = CountBits(mightSee, rowWords_);
        if (HasAll(entry, mightSee, bitCount)) return true;
    }
    return false;
}

bool ViewMemory::IsView(const Entry& entry, const FlowView& view) const {
    if (entry.hash != view.hash) return false;
    const Vec3d* points = points_.data() + entry.firstPoint;
    const FlowPoints source(points, entry.sourceCount);
    const FlowPoints pass(points + entry.sourceCount, entry.passCount);
    return view == FlowView{entry.portal, source, pass, entry.hash};
}

bool ViewMemory::HasAll(const Entry& entry, const Word* row, int32_t bitCount) const {
    for (const PlacedWord& word : std::span(words_).subspan(entry.firstWord, entry.wordCount)) {
        bitCount -= std::popcount(row[word.at] & word.bits);
    }
    return bitCount == 0;
}

void ViewMemory::Add(const FlowView& view, const Word* mightSee) {
    if (bytes() >= limit_) Clear();
    if (entries_.size() == heads_.size()) Grow();
    Entry entry;
    entry.hash = view.hash;
    entry.portal = view.portal;
    entry.sourceCount = static_cast<uint32_t>(view.source.size());
    entry.passCount = static_cast<uint32_t>(view.pass.size());
    entry.firstPoint = points_.size();
    points_.insert(points_.end(), view.source.begin(), view.source.end());
    points_.insert(points_.end(), view.pass.begin(), view.pass.end());
    entry.firstWord = words_.size();
    for (size_t i = 0; i < rowWords_; ++i) {
        if (mightSee[i] != 0) words_.push_back({i, mightSee[i]});
    }
    entry.wordCount = words_.size() - entry.firstWord;
    entry.next = std::exchange(HeadOf(view.hash), static_cast<uint32_t>(entries_.size()));
    entries_.push_back(entry);
}

size_t ViewMemory::bytes() const {
    return (heads_.size() * sizeof(uint32_t)) + (entries_.size() * sizeof(Entry)) + (points_.size() * sizeof(Vec3d)) +
           (words_.size() * sizeof(PlacedWord));
}

void ViewMemory::Grow() {
    heads_.assign(heads_.size() * 2, NoEntry);
    for (uint32_t at = 0; at < entries_.size(); ++at) entries_[at].next = std::exchange(HeadOf(entries_[at].hash), at);
}

}  // namespace k2k
