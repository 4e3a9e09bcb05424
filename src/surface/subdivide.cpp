// Cuts faces along a grid in their texture's space, to the size that the lighting can cover.
#include "driver/build_options.h"
#include "levelfile/mesh.h"
#include "levelfile/texture_data.h"
#include "solid/vectors.h"
#include "surface/progress_step.h"
#include "surface/texel_size.h"

namespace k2k {

namespace {

constexpr int32_t FacesPerMark = 60;

struct TextureAxes {
    Vec3 s{}, t{};
};

// The directions of the grid. False: the plane has no usable axes on a mesh level.
bool GridAxes(const CBlockFace& face, TextureAxes& axes) {
    if (Options().mesh) return LightmapAxes(TablePlane(face.planenum).type, FaceNormal(face), axes.s, axes.t);
    const Texinfo& texinfo = Textures().GetTexinfo(face.texinfo);
    axes = {texinfo.vecS, texinfo.vecT};
    return true;
}

std::unique_ptr<CBlockFace> PieceOfFace(const CBlockFace& face, const CPolygon& polygon) {
    auto piece = std::make_unique<CBlockFace>();
    piece->planenum = face.planenum;
    piece->planeside = face.planeside;
    piece->texinfo = face.texinfo;
    piece->contents = face.contents;
    piece->sourceBlock = face.sourceBlock;
    piece->points.reserve(polygon.points.size());
    for (const Vec3d& point : polygon.points) piece->points.push_back(Narrow(point));
    return piece;
}

// Puts the pieces in front of the list, the last one first. False when the face is not cut; a face that is cut can have
// no pieces.
bool SubdivideFace(const CBlockFace& face, FaceList& reversed) {
    TexelSize texels;
    TextureAxes axes;
    if (!SurfaceTexelSize(face, texels) || !GridAxes(face, axes)) return false;

    const double spacing = static_cast<double>(texels.size) * Options().zoomlevel;
    for (const PolygonRef& polygon : PolygonSlices(PolygonOfFace(face), axes.s, axes.t, spacing)) {
        if (polygon->numpoints() <= MaxFaceVertices) reversed.push_front(PieceOfFace(face, *polygon));
    }
    return true;
}

}  // namespace

bool SurfaceTexelSize(const CBlockFace& face, TexelSize& out) {
    const BuildOptions& options = Options();
    const uint32_t flags = Textures().GetTexinfo(face.texinfo).flags;
    out = {options.sizeshaded, true};
    if ((flags & TextureFlat) != 0) {
        if (options.sizeflat == 0) return false;
        out = {options.sizeflat, false};
    } else if ((flags & TextureTurbulent) != 0) {
        if (options.sizeturb == 0) return false;
        out = {options.sizeturb, false};
    } else if ((flags & TextureNoLightmap) != 0) {
        return false;
    }
    return true;
}

FaceList SubdivideList(FaceList faces, int32_t hull) {
    if (hull != 0) return faces;
    FaceList reversed;
    while (!faces.empty()) {
        std::unique_ptr<CBlockFace> face = faces.pop_front();
        if (!SubdivideFace(*face, reversed)) reversed.push_front(std::move(face));
    }
    reversed.reverse();
    return reversed;
}

FaceList SubdivideCopy(const FaceList& faces) {
    StartProgress(static_cast<int32_t>(faces.size()));
    FaceList reversed;
    for (const CBlockFace& face : faces) {
        StepProgress(FacesPerMark);
        if (!SubdivideFace(face, reversed)) reversed.push_front(face.Clone());
    }
    reversed.reverse();
    return reversed;
}

}  // namespace k2k
