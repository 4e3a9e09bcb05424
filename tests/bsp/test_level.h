// The state and the files that tests of the geometry stage start from: a folder with a small texture file, a map
// written as text, empty tables.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bsp/clip_hull.h"
#include "bsp/geometry_stage.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"
#include "levelfile/texture_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "solid/block.h"
#include "solid/plane.h"
#include "support/build_state.h"
#include "support/files.h"
#include "surface/surface_tables.h"

namespace k2k::test {

class TreeTest : public BuildState {
  protected:
    TreeTest() { ResetLevel(); }
    ~TreeTest() override { ResetLevel(); }

    static void ResetLevel() {
        ResetPlaneTableForTest();
        ResetHullCaptures();
        ClearEntities();
        ClearDataSets();
        Textures().ClearTexinfos();
        Geometry().info = {};
        Geometry().DetailReject.clear();
        Geometry().levelExtent = 0;
        HullBoxes() = {};
        DetailCount = 0;
        ResetBlocksForTest();
        ReleaseSurfaceTables();
        ResetMeshTables();
    }
};

// The text of a block that fills a box.
inline std::string BlockText(const std::array<int, 3>& mins, const std::array<int, 3>& maxs,
                             std::string_view texture = "ROCK", std::string_view flags = "00000000") {
    const auto point = [](int x, int y, int z) {
        return "( " + std::to_string(x) + " " + std::to_string(y) + " " + std::to_string(z) + " ) ";
    };
    std::string text = "{\n{ " + std::string(flags) + " }\n";
    for (size_t side = 0; side < 6; ++side) {
        const size_t axis = side % 3;
        const size_t u = (axis + 1) % 3;
        const size_t v = (axis + 2) % 3;
        const bool isHigh = side >= 3;
        // p0 - p1 along u and p2 - p1 along v give a normal along the axis.
        std::array<int, 3> p1 = isHigh ? maxs : mins;
        std::array<int, 3> p0 = p1;
        std::array<int, 3> p2 = p1;
        p0[isHigh ? u : v] += 8;
        p2[isHigh ? v : u] += 8;
        text += point(p0[0], p0[1], p0[2]) + point(p1[0], p1[1], p1[2]) + point(p2[0], p2[1], p2[2]);
        text += std::string(texture) + " 0 0 0 1.000000 1.000000\n";
    }
    return text + "}\n";
}

// The six walls of a sealed room, eight units thick.
inline std::string RoomText(const std::array<int, 3>& mins, const std::array<int, 3>& maxs,
                            std::string_view texture = "ROCK") {
    constexpr int Thickness = 8;
    std::array<int, 3> low = mins;
    std::array<int, 3> high = maxs;
    for (size_t i = 0; i < 3; ++i) {
        low[i] -= Thickness;
        high[i] += Thickness;
    }
    std::string text;
    for (size_t axis = 0; axis < 3; ++axis) {
        std::array<int, 3> top = high;
        top[axis] = mins[axis];
        text += BlockText(low, top, texture);
        std::array<int, 3> bottom = low;
        bottom[axis] = maxs[axis];
        text += BlockText(bottom, high, texture);
    }
    return text;
}

inline std::string WorldText(std::string_view blocks) {
    return "{\n0 textures.$$w\npalette.raw\n" + std::string(blocks) + "}\n";
}

inline std::string StartText(const std::array<int, 3>& at) {
    return "{\n1 " + std::to_string(at[0]) + " " + std::to_string(at[1]) + " " + std::to_string(at[2]) +
           "\n0 0 0\nstart\n}\n";
}

// A texture file without textures.
inline std::string EmptyWad() {
    return {"WAD2\0\0\0\0\x0c\0\0\0", 12};
}

// Works in a folder of its own, where level.$$M is the map.
class LevelTest : public TreeTest {
  protected:
    LevelTest() {
        WriteFile("textures.$$w", EmptyWad());
        Paths().MapPath = "level.$$M";
        Paths().LevelPath = "level.klv";
        Options().palgiven = true;
    }

    static void WriteMap(const std::string& text) { WriteFile("level.$$M", text); }

    // Runs the stage on a map; returns what it printed.
    static std::string Build(const std::string& map) {
        WriteMap(map);
        TakeLoggedText();
        RunGeometryStage();
        return TakeLoggedText();
    }

    static size_t CountOf(std::string_view text, std::string_view part) {
        size_t count = 0;
        for (size_t at = text.find(part); at != std::string_view::npos; at = text.find(part, at + 1)) ++count;
        return count;
    }

  private:
    InTempDir folder_;
};

}  // namespace k2k::test
