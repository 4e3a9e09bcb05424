#include "light/polygon_cache.h"

#include "driver/build_log.h"

namespace k2k {

CPolygonCache::Slot* CPolygonCache::Find(uint32_t surfaceIndex) {
    for (Slot& slot : slots_) {
        if (slot.polygon && slot.surfaceIndex == surfaceIndex) return &slot;
    }
    return nullptr;
}

CPolygonCache::Slot& CPolygonCache::FreeSlot() {
    for (size_t tries = 0; tries <= PolygonCacheSlots; tries++) {
        ring_ = (ring_ + 1) % PolygonCacheSlots;
        if (slots_[ring_].refs <= 0) return slots_[ring_];
    }
    FatalError("Couldn't create polygon information- complex geometry !");
}

PolygonInfo& CPolygonCache::GetPolygon(uint32_t surfaceIndex) {
    Slot* slot = Find(surfaceIndex);
    if (slot == nullptr) {
        auto polygon = std::make_unique<PolygonInfo>(MakePolygonInfo(surfaceIndex, smooth_));
        slot = &FreeSlot();
        slot->refs = 0;
        slot->surfaceIndex = surfaceIndex;
        slot->polygon = std::move(polygon);
    }
    if (!slot->polygon) FatalError("Couldn't cache polygon information !");
    slot->refs++;
    return *slot->polygon;
}

void CPolygonCache::ReleasePolygon(uint32_t surfaceIndex) {
    if (Slot* slot = Find(surfaceIndex)) slot->refs--;
}

void CPolygonCache::Empty() {
    for (Slot& slot : slots_) slot = Slot();
}

}  // namespace k2k
