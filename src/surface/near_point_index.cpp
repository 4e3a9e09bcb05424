#include "surface/near_point_index.h"

#include <bit>

namespace k2k {

namespace {

constexpr size_t FirstHeadCount = 1024;

uint64_t Mix(uint64_t hash, uint64_t value) {
    hash = (hash ^ value) * 0x9E3779B97F4A7C15U;
    return hash ^ hash >> 29U;
}

}  // namespace

uint64_t NearPointIndex::KeyOf(uint32_t chain, const Vec3d& cell) {
    uint64_t hash = Mix(0, chain);
    for (const double coordinate : cell) hash = Mix(hash, std::bit_cast<uint64_t>(coordinate + 0.0));  // -0 to +0
    return hash;
}

void NearPointIndex::Clear() {
    heads_.clear();
    entries_.clear();
}

void NearPointIndex::Add(uint32_t chain, const Vec3d& point, int32_t number) {
    if (entries_.size() >= heads_.size()) GrowHeads();
    entries_.push_back({KeyOf(chain, CellOf(point)), -1, number});
    Link(entries_.size() - 1);
}

void NearPointIndex::Link(size_t position) {
    int32_t& head = heads_[entries_[position].key & (heads_.size() - 1)];
    entries_[position].next = head;
    head = static_cast<int32_t>(position);
}

void NearPointIndex::GrowHeads() {
    heads_.assign(heads_.empty() ? FirstHeadCount : heads_.size() * 2, -1);
    for (size_t position = 0; position < entries_.size(); ++position) Link(position);
}

}  // namespace k2k
