#include "light/face_samples.h"

#include <algorithm>

#include "driver/build_options.h"
#include "light/surface_geometry.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double FullTexelSlack = 0.001;
constexpr float EpsilonShare = 16;  // texel lines cut with this part of -eps

// The line at a whole coordinate along an axis of the lightmap.
CPlane TexelLine(size_t axis, int32_t at) {
    CPlane line;
    line.normal[axis] = 1;
    line.dist = static_cast<float>(at);
    line.type = static_cast<int32_t>(axis);
    return line;
}

// Cuts a polygon along the texel lines of an axis; visit gets the number of each strip that is not empty and the strip.
template <typename Visit>
void VisitStrips(PolygonRef rest, size_t axis, int32_t strips, Visit visit) {
    const double epsilon = static_cast<double>(Options().eps) / EpsilonShare;
    for (int32_t i = 0; i < strips && rest; i++) {
        PolygonPieces pieces = SplitPolygonEps(rest, TexelLine(axis, i + 1), 0, epsilon);
        if (pieces.back) visit(i, pieces.back);
        rest = std::move(pieces.front);
    }
}

PolygonRef LightmapPolygon(const FaceInfo& info) {
    std::vector<Vec3d> points;
    for (const Vec3& vertex : SurfaceVertices(*info.surface)) {
        const LightmapPoint point = WorldToLightmap(info, vertex);
        points.push_back({point.u, point.v, 0});
    }
    return MakePolygon(std::move(points));
}

PolygonRef WorldPolygon(const FaceInfo& info, const CPolygon& cell) {
    std::vector<Vec3d> points;
    points.reserve(cell.points.size());
    for (const Vec3d& point : cell.points) points.push_back(Widen(LightmapToWorld(info, point[0], point[1])));
    return MakePolygon(std::move(points));
}

SampleFragment FragmentOf(const FaceLight& face, int32_t x, int32_t y, const CPolygon& cell) {
    SampleFragment fragment;
    fragment.x = static_cast<uint32_t>(x);
    fragment.y = static_cast<uint32_t>(y);
    fragment.area = static_cast<float>(static_cast<double>(PolygonArea(cell)) * face.luxelArea);
    const Vec3 centre = PolygonCenter(cell);
    fragment.u = centre[0];
    fragment.v = centre[1];
    Vec3d mins, maxs;
    PolygonBounds(cell, mins, maxs);
    fragment.minU = static_cast<float>(mins[0]);
    fragment.minV = static_cast<float>(mins[1]);
    fragment.maxU = static_cast<float>(maxs[0]);
    fragment.maxV = static_cast<float>(maxs[1]);
    fragment.position = LightmapToWorld(face.info, fragment.u, fragment.v);
    fragment.normal = face.info.normal;
    if (!(fragment.area >= face.luxelArea - FullTexelSlack)) fragment.polygon = WorldPolygon(face.info, cell);
    return fragment;
}

void CutIntoCells(FaceLight& face) {
    VisitStrips(LightmapPolygon(face.info), 1, face.info.size[1], [&](int32_t y, const PolygonRef& row) {
        VisitStrips(row, 0, face.info.size[0], [&](int32_t x, const PolygonRef& cell) {
            face.fragments.push_back(FragmentOf(face, x, y, *cell));
        });
    });
}

void TakeWholeTexels(FaceLight& face) {
    constexpr float half = 0.5F;
    for (int32_t y = 0; y < face.info.size[1]; y++) {
        for (int32_t x = 0; x < face.info.size[0]; x++) {
            SampleFragment fragment;
            fragment.x = static_cast<uint32_t>(x);
            fragment.y = static_cast<uint32_t>(y);
            fragment.u = static_cast<float>(x);
            fragment.v = static_cast<float>(y);
            fragment.minU = fragment.u - half;
            fragment.minV = fragment.v - half;
            fragment.maxU = fragment.u + half;
            fragment.maxV = fragment.v + half;
            fragment.position = LightmapToWorld(face.info, x, y);
            fragment.normal = face.info.normal;
            fragment.area = face.luxelArea;
            face.fragments.push_back(std::move(fragment));
        }
    }
}

}  // namespace

void MakeFragments(FaceLight& face) {
    face.luxelArea = face.info.LuxelArea();
    face.fragments.reserve(static_cast<size_t>(face.info.texels()));
    if (Options().preview) {
        TakeWholeTexels(face);
    } else {
        CutIntoCells(face);
    }
    face.fragments.shrink_to_fit();
}

}  // namespace k2k
