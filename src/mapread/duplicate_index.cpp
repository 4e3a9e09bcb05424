// Comparing blocks by their planes.
#include "mapread/duplicate_index.h"

#include <algorithm>
#include <bit>

namespace k2k {

namespace {

bool SamePlane(const MapFace& a, const MapFace& b) {
    return a.dist == b.dist && a.normal == b.normal;
}

uint64_t Mix(uint64_t value) {
    // The finishing step of SplitMix64 (Steele, Lea, Flood 2014).
    value = (value ^ value >> 30U) * 0xBF58476D1CE4E5B9U;
    value = (value ^ value >> 27U) * 0x94D049BB133111EBU;
    return value ^ value >> 31U;
}

// Numbers that compare equal hash equal: adding 0 turns a negative zero into a positive one.
uint64_t Bits(float value) {
    return std::bit_cast<uint32_t>(value + 0.0F);
}

uint64_t HashPlane(const MapFace& face) {
    const uint64_t low = Mix(Bits(face.normal[0]) << 32U | Bits(face.normal[1]));
    return Mix(low ^ (Bits(face.normal[2]) << 32U | Bits(face.dist)));
}

// A sum, since the order of the faces does not count.
uint64_t HashPlanes(const MapBlock& block) {
    uint64_t sum = block.faces.size();
    for (const MapFace& face : block.faces) sum += HashPlane(face);
    return sum;
}

}  // namespace

bool HaveSamePlanes(const MapBlock& a, const MapBlock& b) {
    if (a.faces.size() != b.faces.size()) return false;
    std::vector<bool> taken(b.faces.size(), false);
    return std::all_of(a.faces.begin(), a.faces.end(), [&](const MapFace& face) {
        for (size_t i = 0; i < b.faces.size(); ++i) {
            if (taken[i] || !SamePlane(face, b.faces[i])) continue;
            taken[i] = true;
            return true;
        }
        return false;
    });
}

const MapBlock* DuplicateIndex::Find(const MapBlock& block) const {
    const auto likes = blocks_.find(HashPlanes(block));
    if (likes == blocks_.end()) return nullptr;
    for (const MapBlock* other : likes->second) {
        if (HaveSamePlanes(*other, block)) return other;
    }
    return nullptr;
}

void DuplicateIndex::Add(const MapBlock& block) {
    blocks_[HashPlanes(block)].push_back(&block);
}

}  // namespace k2k
