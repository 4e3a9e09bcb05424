// Portal graphs from the text of a portal file, and simple ones to begin with.
#pragma once

#include <string>

#include "support/files.h"
#include "vis/portal_file.h"
#include "vis/room_grid.h"

namespace k2k::test {

inline VisGraph ReadGraph(int32_t regionCount, const std::string& text) {
    const TempDir folder;
    const std::string path = folder.File("level.$$p");
    WriteFile(path, text);
    return ReadPortalFile(path, regionCount);
}

inline VisGraph ReadGrid(const RoomGridOptions& options) {
    const RoomGrid grid = MakeRoomGrid(options);
    return ReadGraph(grid.RoomCount(), PortalFileText(grid.RoomCount(), grid.openings));
}

// An upright rectangle across the x axis, from region a on the side of lower x to region b.
struct Slot {
    double x = 0;
    double fromY = 0, toY = 64;
};
inline RoomOpening SlotOpening(int32_t a, int32_t b, const Slot& slot) {
    return {a, b, {{slot.x, slot.fromY, 0}, {slot.x, slot.toY, 0}, {slot.x, slot.toY, 64}, {slot.x, slot.fromY, 64}}};
}

// Regions 0, 1, 2 ... along the x axis, with a slot between each and the next at every multiple of 64.
inline std::string CorridorText(int32_t regionCount) {
    std::vector<RoomOpening> openings;
    for (int32_t region = 0; region + 1 < regionCount; ++region) {
        openings.push_back(SlotOpening(region, region + 1, {64.0 * (region + 1)}));
    }
    return PortalFileText(regionCount, openings);
}

}  // namespace k2k::test
