// Finds out where a map leaks: the shortest way from an object to the space around the level.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "klvtool/plan.h"

namespace klvtool {

struct LeakObject {
    size_t number = 0;  // in the map, the level itself being 0
    std::string type, name;
    Vec3 origin{};
};

struct LeakBlock {
    int32_t number = 0;  // as messages of the compiler show it
    std::string texture;
    Vec3 mins{}, maxs{};
    double distance = 0;
};

struct Leak {
    LeakObject object;
    bool isOutside = false;  // the object itself: there is no hole then
    std::vector<Vec3> way;   // from the object to the outside
    Vec3 hole{};             // the middle of the opening where the way leaves the level
    std::array<double, 3> holeSize{};
    LeakBlock nearest;  // to the hole
};

struct LeakReport {
    size_t objects = 0;  // that stand in open space
    std::optional<Leak> leak;
    std::vector<PlanPolygon> faces;  // that open space sees: to draw
    Bounds bounds;
};

// Reads a map as the compiler does, with its options (as on the compiler's command line), and builds the first tree of
// the visible hull. Writes nothing. Throws what the compiler would stop at.
LeakReport FindLeak(const std::string& mapPath, const std::string& options);

// Lines of text: the object, the hole, the block, the points.
std::string Describe(const LeakReport& report);

}  // namespace klvtool
