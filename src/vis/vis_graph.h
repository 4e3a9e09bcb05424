// Regions and the portals between them, as visibility sees them.
#pragma once

#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "solid/polygon.h"
#include "vis/bit_row.h"

namespace k2k {

constexpr int32_t MaxRegionPortals = 256;    // portals that leave one region
constexpr int32_t MaxPortalRecord = 131072;  // largest record number that the flood accepts

enum class PortalStatus : int32_t { None = 0, Working = 1, Done = 2 };

// One direction of an opening. Records 2k and 2k + 1 are the two directions of portal k of the file.
struct VisPortal {
    CPlane plane;        // the normal points into the region that the portal leads to
    int32_t region = 0;  // that region
    PolygonRef polygon;  // shared by the two directions
    PortalStatus status = PortalStatus::None;
    Word* visBits = nullptr;   // what is really seen through the portal; complete once status is Done
    Word* mightSee = nullptr;  // the cheap upper bound
    int32_t mightSeeCount = 0;
    int32_t canSeeCount = 0;
};

// A status is read while other workers write theirs; whoever sees Done also sees the finished row.
inline PortalStatus LoadStatus(const VisPortal& portal) {
    return std::atomic_ref(const_cast<PortalStatus&>(portal.status)).load(std::memory_order_acquire);
}
inline void StoreStatus(VisPortal& portal, PortalStatus status) {
    std::atomic_ref(portal.status).store(status, std::memory_order_release);
}

// A portal on the list of a region that it leaves. The region behind it stands here too, since most portals are passed
// over for it.
struct RegionExit {
    int32_t portal = 0;  // number
    int32_t region = 0;
};

// Owns portals, the lists of portals that leave each region, and all rows.
class VisGraph {
  public:
    VisGraph() = default;
    // lists[r] holds the numbers of the portals that leave region r, in order.
    VisGraph(std::vector<VisPortal> portals, const std::vector<std::vector<int32_t>>& lists);
    VisGraph(VisGraph&&) = default;
    VisGraph& operator=(VisGraph&&) = default;

    int32_t regionCount() const { return static_cast<int32_t>(firstExit_.size()) - 1; }
    size_t rowWords() const { return RowWords(regionCount()); }
    std::span<const RegionExit> ExitsOf(int32_t region) const {
        const size_t first = firstExit_[static_cast<size_t>(region)];
        return {exits_.data() + first, firstExit_[static_cast<size_t>(region) + 1] - first};
    }
    const VisPortal& portal(int32_t number) const { return portals[static_cast<size_t>(number)]; }
    VisPortal& portal(int32_t number) { return portals[static_cast<size_t>(number)]; }

    // Give every portal a row with all bits clear.
    void AllocateMightSee();
    void AllocateVisBits();

    std::vector<VisPortal> portals;

  private:
    std::vector<size_t> firstExit_{0};  // by region, and one more
    std::vector<RegionExit> exits_;
    RowTable mightSeeRows_, visRows_;
};

}  // namespace k2k
