// The polygons that smooth shading works on: a sample typically touches the same few again and again.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "light/polygon_info.h"

namespace k2k {

constexpr size_t PolygonCacheSlots = 80;

// One worker's cache. A polygon whose references are held is not thrown out.
class CPolygonCache {
  public:
    explicit CPolygonCache(const CPhongTable& smooth) : smooth_(smooth) {}

    // Finds or builds the polygon and takes a reference to it. Fatal when all slots are held.
    PolygonInfo& GetPolygon(uint32_t surfaceIndex);
    void ReleasePolygon(uint32_t surfaceIndex);
    // Drops all polygons; the ring position stays.
    void Empty();

  private:
    struct Slot {
        int32_t refs = 0;
        uint32_t surfaceIndex = 0;
        std::unique_ptr<PolygonInfo> polygon;
    };
    Slot* Find(uint32_t surfaceIndex);
    Slot& FreeSlot();

    const CPhongTable& smooth_;
    std::array<Slot, PolygonCacheSlots> slots_;
    size_t ring_ = 0;
};

// A reference for the length of a scope.
class PolygonRefScope {
  public:
    PolygonRefScope(CPolygonCache& cache, uint32_t surfaceIndex)
        : cache_(cache), polygon_(cache.GetPolygon(surfaceIndex)) {}
    ~PolygonRefScope() { cache_.ReleasePolygon(polygon_.surfaceIndex); }
    PolygonRefScope(const PolygonRefScope&) = delete;
    PolygonRefScope& operator=(const PolygonRefScope&) = delete;
    PolygonInfo& operator*() const { return polygon_; }
    PolygonInfo* operator->() const { return &polygon_; }

  private:
    CPolygonCache& cache_;
    PolygonInfo& polygon_;
};

}  // namespace k2k
