// Lightmap rectangles: inside their page, not overlapping. And the triangles of meshes.
#include <algorithm>
#include <cmath>
#include <map>

#include "levelcheck/fault_list.h"

namespace levelcheck {
namespace {

constexpr uint8_t NoLightmap = 255;
constexpr uint8_t LargestShift = 4;
constexpr int64_t TooManyTexels = 1 << 20;

struct Rect {
    int64_t x0, y0, x1, y1;  // inclusive, with the border texel on each side
    size_t surface;
};

std::string Name(size_t i) {
    return "surface " + std::to_string(i);
}

// The axes that a surface's lightmap lies along, with their offsets.
std::array<std::array<float, 4>, 2> LightAxes(const LevelView& level, const Surface& surface, float litres) {
    if (!level.meshLevel) {
        const TextureMapping& info = level.texinfos[static_cast<size_t>(surface.texinfo)];
        return {info.s, info.t};
    }
    const Plane& plane = level.planes[surface.plane];
    const int axis = ((plane.type % 3) + 3) % 3;
    const float r = litres;
    if (axis == 0) return {{{0, 0, r, 0}, {0, -r, 0, 0}}};
    if (axis == 1) return {{{r, 0, 0, 0}, {0, 0, r, 0}}};
    return {{{r, 0, 0, 0}, {0, -r, 0, 0}}};
}

int64_t TexelExtent(const LevelView& level, const std::vector<uint32_t>& ring, const std::array<float, 4>& axis,
                    int step) {
    double low = 9999999, high = -9999999;
    for (const uint32_t vertex : ring) {
        const Point& p = level.vertices[vertex];
        const double value = double{p.x} * axis[0] + double{p.y} * axis[1] + double{p.z} * axis[2] + axis[3];
        low = std::min(low, value);
        high = std::max(high, value);
    }
    const auto stored = [](double v) { return static_cast<double>(static_cast<float>(v)); };
    const double texels = std::ceil(stored(high) / step) + 1 - std::floor(stored(low) / step);
    return texels >= 0 && texels < TooManyTexels ? static_cast<int64_t>(texels) : TooManyTexels;
}

Rect RectOf(const LevelView& level, size_t index, const std::vector<uint32_t>& ring, const CheckOptions& options) {
    const Surface& surface = level.surfaces[index];
    const auto axes = LightAxes(level, surface, options.litres);
    const int step = 1 << surface.lightShift;
    const int64_t x = level.meshLevel ? surface.lightOffset & 0xFFFFU : surface.lightX;
    const int64_t y = level.meshLevel ? surface.lightOffset >> 16U : surface.lightY;
    return {x - 1, y - 1, x + TexelExtent(level, ring, axes[0], step), y + TexelExtent(level, ring, axes[1], step),
            index};
}

// Takes the texels of a page for one surface after the other. A rectangle ends at the first texel that is taken, so
// that no number of them costs more than the page has texels.
class PageTexels {
  public:
    explicit PageTexels(int64_t size) : size_(size), owners_(static_cast<size_t>(size * size), None) {}

    // The surface that has a texel of the rectangle already, or None.
    size_t Take(const Rect& rect) {
        for (int64_t y = std::max<int64_t>(rect.y0, 0); y <= std::min(rect.y1, size_ - 1); y++) {
            for (int64_t x = std::max<int64_t>(rect.x0, 0); x <= std::min(rect.x1, size_ - 1); x++) {
                size_t& owner = owners_[static_cast<size_t>(y * size_ + x)];
                if (owner != None) return owner;
                owner = rect.surface;
            }
        }
        return None;
    }

    static constexpr size_t None = ~size_t{0};

  private:
    int64_t size_;
    std::vector<size_t> owners_;
};

void CheckOverlaps(const std::vector<Rect>& rects, int64_t pageSize, FaultList& faults) {
    PageTexels page(pageSize);
    for (const Rect& rect : rects) {
        const size_t owner = page.Take(rect);
        if (owner != PageTexels::None)
            faults.Add("lightmaps overlap", Name(owner) + " and " + std::to_string(rect.surface));
    }
}

void CheckMesh(const Mesh& mesh, const std::string& name, FaultList& faults) {
    faults.Require(!mesh.vertices.empty() && !mesh.triangles.empty() && !mesh.materials.empty(),
                   "mesh with an empty table", name);
    for (const MeshVertexRow& vertex : mesh.vertices) {
        for (int a = 0; a < 3; a++) {
            const bool inside = vertex.position[a] >= mesh.mins[a] - 1 && vertex.position[a] <= mesh.maxs[a] + 1;
            // A surface that was merged with a neighbour block's reaches beyond its own block.
            if (!inside) faults.Tolerate("mesh vertex outside the mesh's bounds", name);
        }
        faults.Require(std::isfinite(vertex.u) && std::isfinite(vertex.v), "mesh texture coordinate not finite", name);
        const bool onPage = vertex.s >= 0 && vertex.s <= 1 && vertex.t >= 0 && vertex.t <= 1;
        faults.Require(onPage, "mesh lightmap coordinate outside its page", name);
    }
}

bool NamesRows(const LevelView& level, const Mesh& mesh, const MeshTriangleRow& triangle, const std::string& name,
               FaultList& faults) {
    const auto inRange = [](int64_t number, size_t rows) { return number >= 0 && static_cast<size_t>(number) < rows; };
    const bool surface = inRange(triangle.surface, level.surfaces.size());
    const bool material = inRange(triangle.material, mesh.materials.size());
    const bool vertices = std::all_of(triangle.vertices.begin(), triangle.vertices.end(),
                                      [&](int16_t v) { return inRange(v, mesh.vertices.size()); });
    faults.Require(surface, "triangle names no surface", name);
    faults.Require(material, "triangle names no material", name);
    faults.Require(vertices, "triangle names no vertex", name);
    return surface && material && vertices;
}

bool IsCorner(const LevelView& level, const std::vector<uint32_t>& ring, const MeshVertexRow& vertex) {
    return std::any_of(ring.begin(), ring.end(), [&](uint32_t number) {
        const Point& p = level.vertices[number];
        return p.x == vertex.position[0] && p.y == vertex.position[1] && p.z == vertex.position[2];
    });
}

// A triangle has corners of its surface, lies with them on the lightmap, and shows the surface's texture.
void CheckTriangle(const LevelView& level, const Mesh& mesh, const MeshTriangleRow& triangle,
                   const CheckOptions& options, const std::string& name, FaultList& faults) {
    const auto index = static_cast<size_t>(triangle.surface);
    const Surface& surface = level.surfaces[index];
    const std::vector<uint32_t> ring = RingOf(level, surface);
    const bool mapped = surface.texinfo >= 0 && static_cast<size_t>(surface.texinfo) < level.texinfos.size();
    if (ring.empty() || !mapped || surface.plane >= level.planes.size()) return;
    const TextureMapping& info = level.texinfos[static_cast<size_t>(surface.texinfo)];
    const MeshMaterialRow& material = mesh.materials[static_cast<size_t>(triangle.material)];
    faults.Require(material.flags == info.flags && material.texture == (info.texture & 0xFFFFU) &&
                       material.lightPage == surface.lightPage,
                   "triangle's material is not its surface's", name);
    const bool lit = surface.lightShift != NoLightmap && surface.lightPage != 0;
    const Rect rect = lit ? RectOf(level, index, ring, options) : Rect{};
    for (const int16_t number : triangle.vertices) {
        const MeshVertexRow& vertex = mesh.vertices[static_cast<size_t>(number)];
        faults.Require(IsCorner(level, ring, vertex), "triangle vertex is no corner of its surface", name);
        if (!lit) continue;
        const double x = double{vertex.s} * level.pageSize, y = double{vertex.t} * level.pageSize;
        const bool inside = x >= static_cast<double>(rect.x0) && x <= static_cast<double>(rect.x1 + 1) &&
                            y >= static_cast<double>(rect.y0) && y <= static_cast<double>(rect.y1 + 1);
        faults.Require(inside, "triangle leaves its surface's lightmap", name);
    }
}

// Each surface's ring gives a fan: two triangles fewer than corners.
void CheckFans(const LevelView& level, const Mesh& mesh, const std::string& name, FaultList& faults) {
    std::map<int32_t, size_t> triangles;
    for (const MeshTriangleRow& triangle : mesh.triangles) triangles[triangle.surface]++;
    for (const auto& [surface, count] : triangles) {
        if (surface < 0 || static_cast<size_t>(surface) >= level.surfaces.size()) continue;
        const auto corners = static_cast<size_t>(level.surfaces[static_cast<size_t>(surface)].edgeCount);
        faults.Require(count + 2 == corners, "surface with the wrong number of triangles", name);
    }
}

}  // namespace

void CheckLightmaps(const LevelView& level, const CheckOptions& options, FaultList& faults) {
    std::map<int, std::vector<Rect>> pages;
    for (size_t i = 0; i < level.surfaces.size(); i++) {
        const Surface& surface = level.surfaces[i];
        if (surface.lightShift == NoLightmap || surface.lightPage == 0) continue;
        if (surface.lightShift > LargestShift) {
            faults.Add("lightmap of an unknown texel size", Name(i));
            continue;
        }
        const std::vector<uint32_t> ring = RingOf(level, surface);
        const bool mapped = surface.texinfo >= 0 && static_cast<size_t>(surface.texinfo) < level.texinfos.size();
        if (ring.empty() || !mapped || surface.plane >= level.planes.size()) continue;
        const Rect rect = RectOf(level, i, ring, options);
        const bool inside = rect.x0 >= 0 && rect.y0 >= 0 && rect.x1 < level.pageSize && rect.y1 < level.pageSize;
        faults.Require(inside, "lightmap outside its page", Name(i));
        if (level.pageCount > 0)
            faults.Require(surface.lightPage < level.pageCount, "surface names no lightmap page", Name(i));
        pages[surface.lightPage].push_back(rect);
    }
    for (const auto& [page, rects] : pages) CheckOverlaps(rects, level.pageSize, faults);
}

void CheckMeshes(const LevelView& level, const CheckOptions& options, FaultList& faults) {
    for (size_t i = 0; i < level.meshes.size(); i++) {
        const Mesh& mesh = level.meshes[i];
        const std::string name = "mesh " + std::to_string(i);
        CheckMesh(mesh, name, faults);
        CheckFans(level, mesh, name, faults);
        for (const MeshTriangleRow& triangle : mesh.triangles) {
            if (NamesRows(level, mesh, triangle, name, faults))
                CheckTriangle(level, mesh, triangle, options, name, faults);
        }
    }
}

}  // namespace levelcheck
