// What the steps of the radiosity road work with, for levels made by hand. Lights and rays are those of the level.
#pragma once

#include "light/radiosity_direct.h"
#include "light/radiosity_texels.h"
#include "light/rays.h"
#include "light/regions.h"
#include "light/surface_geometry.h"
#include "test_level.h"

namespace k2k::test {

// From the level in work as it stands; surfaces have no patches.
struct RoadState {
    RoadState() : faceLights(Geometry().surfaces.size()) {
        std::vector<Vec3> centres;
        for (const SurfaceRecord& surface : Geometry().surfaces) {
            std::vector<Vec3d> points;
            for (const Vec3& vertex : SurfaceVertices(surface)) points.push_back(Widen(vertex));
            centres.push_back(PolygonCenter(*MakePolygon(points)));
        }
        normals.SetCentres(std::move(centres));
        patches.surfacePatches.assign(Geometry().surfaces.size(), NoPatch);
    }

    // A fragment for each piece of the surface, without light.
    FaceLight Fragments(uint32_t surface) const {
        FaceLight face;
        face.info = InitFace(surface, normals);
        MakeFragments(face);
        return face;
    }

    // The direct pass on one surface.
    const FaceLight& Light(uint32_t surface) {
        lights = BuildDirectLights(patches);
        BuildFaceLights({normals, lights, patches, faceLights}, surface);
        return *faceLights[surface];
    }

    CLightPatch& AddPatch(uint32_t surface, const std::vector<Vec3d>& corners, const Vec3& totallight) {
        CLightPatch patch;
        patch.polygon = MakePolygon(corners);
        PolygonBounds(*patch.polygon, patch.mins, patch.maxs);
        patch.surfaceIndex = surface;
        patch.normal = SurfaceNormal(SurfaceRow(surface));
        patch.origin = Add(PolygonCenter(*patch.polygon), patch.normal);
        patch.area = PolygonArea(*patch.polygon);
        patch.totallight = totallight;
        patch.next = patches.surfacePatches[surface];
        patches.surfacePatches[surface] = patches.count();
        return patches.patches.emplace_back(patch);
    }

    CVertexNormals normals;
    LightPatches patches;
    std::vector<DirectLight> lights;
    FaceLights faceLights;
};

// A level that is open everywhere.
class OpenLevel : public TestLevel {
  public:
    OpenLevel() {
        const int32_t open = Region(ContentsEmpty);
        Node(Plane({0, 0, 1}, -4096), open, open);
    }
};

class RadiosityTest : public LightTest {
  protected:
    RadiosityTest() { Options().lmambient = 0; }
};

}  // namespace k2k::test
