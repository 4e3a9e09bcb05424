#include "klvtool/level_diff.h"

#include <algorithm>
#include <cstring>

#include "klvtool/entities.h"
#include "klvtool/summary.h"
#include "klvtool/table_diff.h"
#include "klvtool/textures.h"

namespace klvtool {
namespace {

using levelcheck::LevelView;
using Kind = FieldKind;

constexpr int Palette = 0, Textures = 2, Visibility = 4, Entities = 15, Pages = 16, Meshes = 17;

constexpr FieldLayout PlaneFields[] = {{"normal", Kind::F32, 3}, {"dist", Kind::F32, 1}, {"type", Kind::I32, 1}};
constexpr FieldLayout VertexFields[] = {{"position", Kind::F32, 3}};
constexpr FieldLayout NodeFields[] = {{"plane", Kind::U32, 1},        {"reserved", Kind::U32, 1},
                                      {"mins", Kind::I16, 3},         {"maxs", Kind::I16, 3},
                                      {"reserved", Kind::U32, 1},     {"children", Kind::I32, 2},
                                      {"firstSurface", Kind::U32, 1}, {"surfaceCount", Kind::U32, 1}};
constexpr FieldLayout TexinfoFields[] = {
    {"vecS", Kind::F32, 3},    {"shiftS", Kind::F32, 1},    {"vecT", Kind::F32, 3},     {"shiftT", Kind::F32, 1},
    {"texture", Kind::U32, 1}, {"flags", Kind::U32, 1},     {"reserved", Kind::U16, 1}, {"ambient", Kind::U8, 1},
    {"albedo", Kind::U8, 1},   {"material", Kind::Text, 20}};
constexpr FieldLayout SurfaceFields[] = {
    {"blockId", Kind::U16, 1},     {"side", Kind::U16, 1},       {"firstEdge", Kind::U32, 1},
    {"edgeCount", Kind::I16, 1},   {"texInfoId", Kind::I16, 1},  {"lightShift", Kind::U8, 1},
    {"lightPage", Kind::U8, 1},    {"lightX", Kind::U8, 1},      {"lightY", Kind::U8, 1},
    {"lightOffset", Kind::U32, 1}, {"planeNumber", Kind::U32, 1}};
constexpr FieldLayout HullFields[] = {{"plane", Kind::U32, 1}, {"reserved", Kind::U32, 1}, {"children", Kind::I32, 2}};
constexpr FieldLayout RegionFields[] = {
    {"contents", Kind::I32, 1}, {"visOffset", Kind::I32, 1},    {"mins", Kind::I16, 3},        {"maxs", Kind::I16, 3},
    {"reserved", Kind::U32, 2}, {"firstSurface", Kind::U32, 1}, {"surfaceCount", Kind::U32, 1}};
constexpr FieldLayout NumberFields[] = {{"number", Kind::I32, 1}};
constexpr FieldLayout EdgeFields[] = {{"vertices", Kind::U32, 2}};
constexpr FieldLayout InfoFields[] = {
    {"mins", Kind::F32, 3},       {"maxs", Kind::F32, 3},         {"origin", Kind::F32, 3},
    {"headNodes", Kind::I32, 4},  {"hullMins", Kind::I32, 12},    {"hullMaxs", Kind::I32, 12},
    {"visRegions", Kind::I32, 1}, {"firstSurface", Kind::I32, 1}, {"surfaceCount", Kind::I32, 1}};
constexpr FieldLayout ByteFields[] = {{"value", Kind::U8, 1}};
constexpr FieldLayout TexelFields[] = {{"colour", Kind::U8, 3}};
constexpr FieldLayout MeshHeadFields[] = {{"mins", Kind::F32, 3}, {"maxs", Kind::F32, 3}, {"contents", Kind::I32, 1}};
constexpr FieldLayout MeshVertexFields[] = {
    {"position", Kind::F32, 3}, {"texture", Kind::F32, 2}, {"lightmap", Kind::F32, 2}};
constexpr FieldLayout MeshTriangleFields[] = {
    {"vertices", Kind::I16, 3}, {"material", Kind::I16, 1}, {"surface", Kind::I32, 1}};
constexpr FieldLayout MeshMaterialFields[] = {{"texture", Kind::U16, 1}, {"lightPage", Kind::U16, 1},
                                              {"texinfo", Kind::I32, 1}, {"ambient", Kind::F32, 1},
                                              {"albedo", Kind::F32, 1},  {"flags", Kind::U32, 1}};

struct ChunkTable {
    int chunk;
    RecordLayout layout;
    const char* record;
};
// Chunks that are one table, or count as one of bytes.
const ChunkTable ChunkTables[] = {
    {14, InfoFields, "records"},    {3, VertexFields, "vertices"},  {12, EdgeFields, "edges"},
    {13, NumberFields, "entries"},  {1, PlaneFields, "planes"},     {7, SurfaceFields, "surfaces"},
    {6, TexinfoFields, "texinfos"}, {Palette, ByteFields, "bytes"}, {Pages, TexelFields, "texels"},
    {10, RegionFields, "regions"},  {5, NodeFields, "nodes"},       {9, HullFields, "hull nodes"},
    {11, NumberFields, "entries"},
};

class Comparison {
  public:
    Comparison(const LevelView& a, const LevelView& b) : a_(a), b_(b) {}

    std::vector<std::string> Run() {
        if (a_.version != b_.version) Add("version", std::string(1, a_.version) + " and " + b_.version);
        for (const ChunkTable& table : ChunkTables) {
            TableDiff diff;
            CompareTables(table.layout, a_.Chunk(table.chunk), b_.Chunk(table.chunk), diff);
            AddTable(table.chunk, diff, table.record);
        }
        CompareTextures();
        CompareRows();
        CompareEntities();
        CompareMeshes();
        CompareRest();
        return std::move(lines_);
    }

  private:
    void Add(const std::string& what, const std::string& text) { lines_.push_back(what + ": " + text); }

    void AddChunk(int chunk, const std::string& text) {
        seen_[static_cast<size_t>(chunk)] = true;
        Add("chunk " + std::to_string(chunk) + " " + ChunkName(chunk), text);
    }
    void AddTable(int chunk, const TableDiff& diff, const char* record) {
        if (!diff.IsEqual()) AddChunk(chunk, Describe(diff, record));
    }

    bool IsSame(int chunk) const {
        const auto a = a_.Chunk(chunk), b = b_.Chunk(chunk);
        return std::equal(a.begin(), a.end(), b.begin(), b.end());
    }

    void CompareTextures() {
        if (IsSame(Textures)) return;
        const auto a = ReadTextures(a_), b = ReadTextures(b_);
        if (a.size() != b.size()) {
            AddChunk(Textures, std::to_string(a.size()) + " and " + std::to_string(b.size()) + " textures");
        }
        for (size_t i = 0; i < std::min(a.size(), b.size()); i++) CompareTexture(i, a[i], b[i]);
    }

    void CompareTexture(size_t number, const Texture& a, const Texture& b) {
        const std::string what = "texture " + std::to_string(number) + " ";
        if (a.name != b.name) return AddChunk(Textures, what + "\"" + a.name + "\" and \"" + b.name + "\"");
        TableDiff diff;
        CompareTables(ByteFields, a.pixels, b.pixels, diff);
        if (a.width != b.width || a.height != b.height) {
            const auto size = [](const Texture& t) {
                return std::to_string(t.width) + " x " + std::to_string(t.height);
            };
            AddChunk(Textures, what + a.name + ": " + size(a) + " and " + size(b));
        } else if (!diff.IsEqual()) {
            AddChunk(Textures, what + a.name + ": " + Describe(diff, "pixels"));
        }
    }

    // What each region sees, whatever place its row has in the chunk.
    void CompareRows() {
        if (IsSame(Visibility) || a_.regions.size() != b_.regions.size()) return;
        size_t differing = 0, first = 0, onlyA = 0, onlyB = 0;
        for (size_t i = 1; i < a_.regions.size(); i++) {
            const std::vector<bool> a = VisibleFrom(a_, i), b = VisibleFrom(b_, i);
            if (a == b) continue;
            if (differing++ == 0) first = i;
            for (size_t k = 0; k < a.size(); k++) {
                onlyA += a[k] && !b[k] ? 1 : 0;
                onlyB += b[k] && !a[k] ? 1 : 0;
            }
        }
        if (differing == 0) return;
        AddChunk(Visibility, std::to_string(differing) + " of " + std::to_string(a_.regions.size() - 1) +
                                 " rows differ, first of region " + std::to_string(first) +
                                 "; pairs visible in the first only " + std::to_string(onlyA) +
                                 ", in the second only " + std::to_string(onlyB));
    }

    void CompareEntities() {
        if (IsSame(Entities)) return;
        const auto a = ReadEntities(a_), b = ReadEntities(b_);
        if (a.size() != b.size()) {
            AddChunk(Entities, std::to_string(a.size()) + " and " + std::to_string(b.size()) + " entities");
        }
        for (size_t i = 0; i < std::min(a.size(), b.size()); i++) CompareEntity(i, a[i], b[i]);
    }

    void CompareEntity(size_t number, const Entity& a, const Entity& b) {
        const std::string what = "entity " + std::to_string(number) + " ";
        if (a.type != b.type || a.fields.size() != b.fields.size()) {
            return AddChunk(Entities, what + a.TypeName() + " and " + b.TypeName());
        }
        for (size_t i = 0; i < a.fields.size(); i++) {
            const std::string before = ValueText(a.fields[i].value), after = ValueText(b.fields[i].value);
            if (before == after) continue;
            AddChunk(Entities,
                     what + a.TypeName() + " " + a.fields[i].name + ": \"" + before + "\" and \"" + after + "\"");
        }
        if (a.points != b.points) AddChunk(Entities, what + "points of the path");
    }

    void CompareMeshes() {
        if (IsSame(Meshes)) return;
        if (a_.meshes.size() != b_.meshes.size()) {
            AddChunk(Meshes, std::to_string(a_.meshes.size()) + " and " + std::to_string(b_.meshes.size()) + " meshes");
        }
        TableDiff heads, vertices, triangles, materials;
        for (size_t i = 0; i < std::min(a_.meshes.size(), b_.meshes.size()); i++) {
            const levelcheck::Mesh &a = a_.meshes[i], &b = b_.meshes[i];
            constexpr size_t HeadBytes = 28;
            CompareTables(MeshHeadFields, Bytes(&a, HeadBytes), Bytes(&b, HeadBytes), heads);
            CompareTables(MeshVertexFields, Bytes(a.vertices), Bytes(b.vertices), vertices);
            CompareTables(MeshTriangleFields, Bytes(a.triangles), Bytes(b.triangles), triangles);
            CompareTables(MeshMaterialFields, Bytes(a.materials), Bytes(b.materials), materials);
        }
        AddTable(Meshes, heads, "heads");
        AddTable(Meshes, vertices, "vertices");
        AddTable(Meshes, triangles, "triangles");
        AddTable(Meshes, materials, "materials");
    }

    // What no table shows: bytes between the parts of a chunk, and places in the file.
    void CompareRest() {
        for (int chunk = 0; chunk < levelcheck::ChunkCount; chunk++) {
            if (seen_[static_cast<size_t>(chunk)] || IsSame(chunk)) continue;
            AddChunk(chunk, std::to_string(a_.Chunk(chunk).size()) + " and " + std::to_string(b_.Chunk(chunk).size()) +
                                " bytes, different ones");
        }
        if (lines_.empty() && a_.bytes != b_.bytes)
            Add("files", "equal chunks in different places, or with different bytes between");
    }

    static std::span<const uint8_t> Bytes(const void* data, size_t size) {
        return {static_cast<const uint8_t*>(data), size};
    }
    template <typename T>
    static std::span<const uint8_t> Bytes(const std::vector<T>& rows) {
        return Bytes(rows.data(), rows.size() * sizeof(T));
    }

    const LevelView &a_, &b_;
    std::vector<std::string> lines_;
    std::array<bool, levelcheck::ChunkCount> seen_{};
};

}  // namespace

std::vector<std::string> CompareLevels(const LevelView& a, const LevelView& b) {
    return Comparison(a, b).Run();
}

}  // namespace klvtool
