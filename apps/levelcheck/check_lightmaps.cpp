// Lightmap rectangles: inside their page, not overlapping. And the triangles of meshes.
#include <algorithm>
#include <cmath>
#include <map>

#include "levelcheck/fault_list.h"

namespace levelcheck {
namespace {

constexpr uint8_t NoLightmap = 255;

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
    const auto f = [](double v) {
        return static_cast<double>(static_cast<float>(v));
    };  // kept in 32 bits by the compiler
    return static_cast<int64_t>(std::ceil(f(high) / step) + 1 - std::floor(f(low) / step));
}

Rect RectOf(const LevelView& level, size_t index, const std::vector<uint32_t>& ring, const CheckOptions& options) {
    const Surface& surface = level.surfaces[index];
    const auto axes = LightAxes(level, surface, options.litres);
    const int step = 1 << (surface.lightShift & 31);
    const int64_t x = level.meshLevel ? surface.lightOffset & 0xFFFFU : surface.lightX;
    const int64_t y = level.meshLevel ? surface.lightOffset >> 16U : surface.lightY;
    return {x - 1, y - 1, x + TexelExtent(level, ring, axes[0], step), y + TexelExtent(level, ring, axes[1], step),
            index};
}

void CheckOverlaps(std::vector<Rect>& rects, FaultList& faults) {
    std::sort(rects.begin(), rects.end(), [](const Rect& a, const Rect& b) { return a.x0 < b.x0; });
    for (size_t i = 0; i < rects.size(); i++) {
        for (size_t j = i + 1; j < rects.size() && rects[j].x0 <= rects[i].x1; j++) {
            if (rects[j].y0 > rects[i].y1 || rects[i].y0 > rects[j].y1) continue;
            faults.Add("lightmaps overlap", Name(rects[i].surface) + " and " + std::to_string(rects[j].surface));
        }
    }
}

void CheckMesh(const LevelView& level, const Mesh& mesh, const std::string& name, FaultList& faults) {
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
    for (const MeshTriangleRow& triangle : mesh.triangles) {
        const bool surface = triangle.surface >= 0 && static_cast<size_t>(triangle.surface) < level.surfaces.size();
        const bool material = triangle.material >= 0 && static_cast<size_t>(triangle.material) < mesh.materials.size();
        faults.Require(surface, "triangle names no surface", name);
        faults.Require(material, "triangle names no material", name);
        for (const int16_t vertex : triangle.vertices) {
            const bool inRange = vertex >= 0 && static_cast<size_t>(vertex) < mesh.vertices.size();
            faults.Require(inRange, "triangle names no vertex", name);
            if (!inRange || !surface || level.surfaces[triangle.surface].plane >= level.planes.size()) continue;
            const Plane& plane = level.planes[level.surfaces[triangle.surface].plane];
            const auto& p = mesh.vertices[vertex].position;
            const double off = double{plane.nx} * p[0] + double{plane.ny} * p[1] + double{plane.nz} * p[2] - plane.dist;
            if (!(std::abs(off) <= 1)) faults.Tolerate("triangle vertex off its surface's plane", name);
        }
    }
}

}  // namespace

void CheckLightmaps(const LevelView& level, const CheckOptions& options, FaultList& faults) {
    std::map<int, std::vector<Rect>> pages;
    for (size_t i = 0; i < level.surfaces.size(); i++) {
        const Surface& surface = level.surfaces[i];
        if (surface.lightShift == NoLightmap || surface.lightPage == 0) continue;
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
    for (auto& [page, rects] : pages) CheckOverlaps(rects, faults);
}

void CheckMeshes(const LevelView& level, FaultList& faults) {
    for (size_t i = 0; i < level.meshes.size(); i++)
        CheckMesh(level, level.meshes[i], "mesh " + std::to_string(i), faults);
}

}  // namespace levelcheck
