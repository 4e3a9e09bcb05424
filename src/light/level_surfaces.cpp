#include "light/level_surfaces.h"

#include "levelfile/geometry_data.h"
#include "levelfile/texture_data.h"
#include "light/regions.h"
#include "light/surface_geometry.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr Vec3 DefaultReflectivity{0.5F, 0.5F, 0.5F};

}  // namespace

LevelSurfaces::LevelSurfaces(const CVertexNormals& normals)
    : normals_(normals), reflectivity_(Textures().texinfos.size(), DefaultReflectivity) {}

uint32_t LevelSurfaces::SurfaceCount() const {
    return static_cast<uint32_t>(Geometry().surfaces.size());
}

PatchSurface LevelSurfaces::Surface(uint32_t surfaceIndex) const {
    const SurfaceRecord& row = SurfaceRow(surfaceIndex);
    PatchSurface surface;
    for (const Vec3& vertex : SurfaceVertices(row)) surface.outline.push_back(Widen(vertex));
    surface.normal = SurfaceNormal(row);
    if (row.texInfoId < 0) return surface;
    const Texinfo& texinfo = SurfaceTexinfo(row);
    surface.shaded = (texinfo.flags & TextureNoLightmap) == 0;
    surface.sky = (texinfo.flags & TextureSky) != 0;
    surface.reflectivity = reflectivity_[static_cast<size_t>(&texinfo - Textures().texinfos.data())];
    return surface;
}

Vec3 LevelSurfaces::NormalAt(uint32_t surfaceIndex, const Vec3& point) const {
    return normals_.FaceNormalAt(surfaceIndex, point);
}

int32_t LevelSurfaces::RegionAt(const Vec3& point) const {
    return k2k::RegionAt(point);
}

}  // namespace k2k
