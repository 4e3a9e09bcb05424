// Map texts in small, and the state that tests of the map readers begin with.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "levelfile/entity_data.h"
#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k::test {

inline void ResetMapState() {
    ClearEntities();
    Textures().Clear();
    Textures().ClearTexinfos();
    Geometry().Clear();
    Geometry().DetailReject.clear();
    EntityRecords().Clear();
    DetailCount = 0;
}

// Reads texts as maps.
class MapTest : public BuildState {
  protected:
    MapTest() { ResetMapState(); }
    ~MapTest() override { ResetMapState(); }

    // Writes the text to a file and makes it the map of the build.
    void SetMap(const std::string& text) {
        Paths().MapPath = folder_.File("level.$$M");
        WriteFile(Paths().MapPath, text);
    }

    void Read(const std::string& text, bool entitiesOnly = false) {
        SetMap(text);
        ReadMap(entitiesOnly);
    }

    void ExpectFatalRead(const std::string& text, const std::string& message) {
        SCOPED_TRACE(text);
        SetMap(text);
        ExpectFatal([] { ReadMap(false); }, message);
    }

    // The blocks of an entity in the order of the file.
    static std::vector<const MapBlock*> Blocks(size_t entity = 0) {
        std::vector<const MapBlock*> blocks;
        for (const MapBlock& block : Entities().at(entity).blocks) blocks.insert(blocks.begin(), &block);
        return blocks;
    }

    static const Texinfo& TexinfoOf(const MapFace& face) { return Textures().GetTexinfo(face.texinfo); }

    TempDir folder_;
};

// An entity around blocks, as the level.
inline std::string Level(const std::string& blocks) {
    return "{\n0 textures.$$w\npalette.raw\n" + blocks + "}\n";
}

// One face of dialect 5.0: the plane of an axis (0 to 2) at a place, looking along sign.
inline std::string Face50(int axis, int sign, double at, const std::string& behind = "WALL 0 0 0 1 1") {
    std::array<std::array<double, 3>, 3> points{};
    const auto a = static_cast<size_t>(axis);
    for (auto& point : points) point[a] = at;
    points[0][(a + 1) % 3] = 1;
    points[2][(a + 2) % 3] = 1;
    if (sign < 0) std::swap(points[0], points[2]);
    std::string text;
    for (const auto& point : points) {
        text +=
            "( " + std::to_string(point[0]) + ' ' + std::to_string(point[1]) + ' ' + std::to_string(point[2]) + " ) ";
    }
    return text + behind + "\n";
}

// The six faces of a box: -x, +x, -y, +y, -z, +z.
inline std::string BoxFaces50(double low, double high, const std::string& behind = "WALL 0 0 0 1 1") {
    std::string text;
    for (int axis = 0; axis < 3; ++axis) text += Face50(axis, -1, low, behind) + Face50(axis, 1, high, behind);
    return text;
}

inline std::string Box50(double low, double high, const std::string& behind = "WALL 0 0 0 1 1",
                         const std::string& flags = "00000000") {
    return "{\n{ " + flags + " }\n" + BoxFaces50(low, high, behind) + "}\n";
}

// What stands behind the ":" of a face with explicit mapping.
inline const std::string Vectors = "( 1 0 0 0 ) ( 0 -1 0 0 )";

// A box of dialects 5.1 and 7.1: the two counts and eight corners, number x + 2 y + 4 z.
inline std::string BoxHead51(double low, double high, int faces = 6) {
    std::string text = "vertices 8\nfaces " + std::to_string(faces) + "\n";
    for (int corner = 0; corner < 8; ++corner) {
        for (int bit = 1; bit < 8; bit *= 2) text += std::to_string((corner & bit) != 0 ? high : low) + ' ';
        text += "\n";
    }
    return text;
}

// The corners of the box's faces, as a face begins: -z, +z, -y, +y, -x, +x.
inline const std::array<std::string, 6> BoxCorners{"4 0 1 3 2", "4 4 6 7 5", "4 0 4 5 1",
                                                   "4 2 3 7 6", "4 0 2 6 4", "4 1 5 7 3"};

inline std::string BoxFaces51(const std::string& behind) {
    std::string text;
    for (const std::string& corners : BoxCorners) text += corners + " : " + behind + "\n";
    return text;
}

inline std::string Box51(double low, double high, const std::string& behind = "WALL " + Vectors,
                         const std::string& group = "00000000 ndef") {
    return "{\n" + BoxHead51(low, high) + "{ " + group + " }\n" + BoxFaces51(behind) + "}\n";
}

}  // namespace k2k::test
