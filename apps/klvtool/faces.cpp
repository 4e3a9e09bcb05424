#include "klvtool/faces.h"

#include <algorithm>
#include <cmath>

namespace klvtool {
namespace {

using levelcheck::LevelView;
using levelcheck::Surface;
using levelcheck::TextureMapping;

constexpr uint8_t NoLightmap = 255;
constexpr double BspPageSize = 256;
constexpr float WorldLimit = 1e7F;  // a coordinate beyond it is damaged

float Dot(const std::array<float, 4>& axis, const Vec3& p) {
    return static_cast<float>(double{p[0]} * axis[0] + double{p[1]} * axis[1] + double{p[2]} * axis[2] + axis[3]);
}

std::array<float, 2> ImageSize(const std::vector<Texture>& textures, uint32_t number) {
    if (number >= textures.size() || textures[number].width == 0 || textures[number].height == 0) return {1, 1};
    return {static_cast<float>(textures[number].width), static_cast<float>(textures[number].height)};
}

bool IsUsable(const Vec3& p) {
    return std::all_of(p.begin(), p.end(), [](float v) { return std::abs(v) < WorldLimit; });
}

bool IsFinite(const std::array<float, 2>& p) {
    return std::isfinite(p[0]) && std::isfinite(p[1]);
}

// Newell's normal, turned round for corners that run clockwise.
Vec3 NormalOf(const std::vector<Corner>& corners) {
    std::array<double, 3> sum{};
    for (size_t i = 0; i < corners.size(); i++) {
        const Vec3 &a = corners[i].position, &b = corners[(i + 1) % corners.size()].position;
        for (size_t axis = 0; axis < 3; axis++) {
            const size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
            sum[axis] += (double{b[u]} - a[u]) * (double{b[v]} + a[v]);
        }
    }
    const double length = std::sqrt(sum[0] * sum[0] + sum[1] * sum[1] + sum[2] * sum[2]);
    if (!(length > 1e-6)) return {};
    return {static_cast<float>(sum[0] / length), static_cast<float>(sum[1] / length),
            static_cast<float>(sum[2] / length)};
}

// Puts the face on the list if it can be drawn.
void Finish(Face face, std::vector<Face>& faces) {
    for (Corner& corner : face.corners) {
        if (!IsUsable(corner.position)) return;
        if (!IsFinite(corner.texture)) corner.texture = {};
        if (!IsFinite(corner.lightmap)) corner.lightmap = {};
    }
    face.normal = NormalOf(face.corners);
    if (face.corners.size() >= 3 && face.normal != Vec3{}) faces.push_back(std::move(face));
}

// Lightmap coordinates along the texture axes, counted between texel centres.
void PlaceLightmap(const Surface& surface, const TextureMapping& info, Face& face) {
    const int step = 1 << (surface.lightShift & 15);
    const std::array axes{&info.s, &info.t};
    const std::array<uint8_t, 2> place{surface.lightX, surface.lightY};
    for (size_t i = 0; i < 2; i++) {
        float low = std::numeric_limits<float>::max();
        for (const Corner& corner : face.corners) low = std::min(low, Dot(*axes[i], corner.position));
        const double first = std::floor(low / static_cast<float>(step));
        for (Corner& corner : face.corners) {
            const double texel = place[i] + double{Dot(*axes[i], corner.position)} / step - first;
            corner.lightmap[i] = static_cast<float>((texel + 0.5) / BspPageSize);
        }
    }
}

void ReadSurface(const LevelView& level, const std::vector<Texture>& textures, size_t number,
                 std::vector<Face>& faces) {
    const Surface& surface = level.surfaces[number];
    if (surface.texinfo < 0 || static_cast<size_t>(surface.texinfo) >= level.texinfos.size()) return;
    const TextureMapping& info = level.texinfos[static_cast<size_t>(surface.texinfo)];
    Face face{number, info.texture, info.flags, 0, {}, {}};
    const auto [width, height] = ImageSize(textures, info.texture);
    for (const uint32_t vertex : levelcheck::RingOf(level, surface)) {
        const levelcheck::Point& p = level.vertices[vertex];
        const Vec3 position{p.x, p.y, p.z};
        face.corners.push_back({position, {Dot(info.s, position) / width, Dot(info.t, position) / height}, {}});
    }
    if (surface.lightShift != NoLightmap && surface.lightPage < level.pageCount) {
        face.page = surface.lightPage;
        PlaceLightmap(surface, info, face);
    }
    Finish(std::move(face), faces);
}

void ReadMesh(const LevelView& level, const levelcheck::Mesh& mesh, std::vector<Face>& faces) {
    for (const levelcheck::MeshTriangleRow& triangle : mesh.triangles) {
        if (triangle.material < 0 || static_cast<size_t>(triangle.material) >= mesh.materials.size()) continue;
        const auto& material = mesh.materials[static_cast<size_t>(triangle.material)];
        Face face{static_cast<uint32_t>(triangle.surface), material.texture, material.flags, 0, {}, {}};
        if (material.lightPage < level.pageCount) face.page = material.lightPage;
        for (const int16_t vertex : triangle.vertices) {
            if (vertex < 0 || static_cast<size_t>(vertex) >= mesh.vertices.size()) continue;
            const auto& row = mesh.vertices[static_cast<size_t>(vertex)];
            face.corners.push_back({row.position, {row.u, row.v}, {row.s, row.t}});
        }
        Finish(std::move(face), faces);
    }
}

}  // namespace

std::vector<Face> ReadFaces(const LevelView& level, const std::vector<Texture>& textures) {
    std::vector<Face> faces;
    if (level.meshLevel) {
        for (const levelcheck::Mesh& mesh : level.meshes) ReadMesh(level, mesh, faces);
    } else {
        for (size_t i = 0; i < level.surfaces.size(); i++) ReadSurface(level, textures, i, faces);
    }
    return faces;
}

Vec3 CentreOf(const Face& face) {
    std::array<double, 3> sum{};
    for (const Corner& corner : face.corners) {
        for (size_t axis = 0; axis < 3; axis++) sum[axis] += corner.position[axis];
    }
    Vec3 centre{};
    for (size_t axis = 0; axis < 3; axis++) {
        centre[axis] = static_cast<float>(sum[axis] / static_cast<double>(face.corners.size()));
    }
    return centre;
}

Bounds BoundsOf(const std::vector<Face>& faces) {
    if (faces.empty()) return {};
    Bounds bounds{faces[0].corners[0].position, faces[0].corners[0].position};
    for (const Face& face : faces) {
        for (const Corner& corner : face.corners) {
            for (size_t axis = 0; axis < 3; axis++) {
                bounds.mins[axis] = std::min(bounds.mins[axis], corner.position[axis]);
                bounds.maxs[axis] = std::max(bounds.maxs[axis], corner.position[axis]);
            }
        }
    }
    return bounds;
}

}  // namespace klvtool
