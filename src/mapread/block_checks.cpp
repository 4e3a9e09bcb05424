// The checks that decide whether a block is kept.
#include <cmath>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "mapread/face_plane.h"
#include "mapread/file_map.h"
#include "mapread/syntax.h"
#include "solid/plane.h"
#include "solid/polygon.h"
#include "solid/vectors.h"

namespace k2k {

namespace {

constexpr size_t MinVolumeFaces = 4;

CPlane PlaneOf(const MapFace& face) {
    return {face.normal, face.dist, face.planeType};
}

std::vector<CPlane> FlippedPlanes(const MapBlock& block) {
    std::vector<CPlane> planes;
    planes.reserve(block.faces.size());
    for (const MapFace& face : block.faces) planes.push_back(FlippedPlane(PlaneOf(face)));
    return planes;
}

// What the other faces of the block leave of a large polygon. The clipper hands back a polygon that lies wholly behind
// a plane as it is, so something is left in every case.
PolygonRef ClipByOthers(PolygonRef polygon, const std::vector<CPlane>& flipped, size_t own) {
    for (size_t i = 0; i < flipped.size() && polygon != nullptr; ++i) {
        if (i != own) polygon = ClipPolygon(polygon, flipped[i], false, Options().eps);
    }
    return polygon;
}

struct Box {
    Vec3d mins{}, maxs{};
};

Box BoundsOf(const CPolygon& polygon) {
    Box box;
    PolygonBounds(polygon, box.mins, box.maxs);
    return box;
}

// Whether the clipped face keeps clear of the ends of the world on every axis on which it could reach them.
bool IsInside(const Box& clipped, const Box& large) {
    for (size_t axis = 0; axis < 3; ++axis) {
        if (large.maxs[axis] - large.mins[axis] == 0) continue;
        if (!(clipped.mins[axis] > large.mins[axis] && clipped.maxs[axis] < large.maxs[axis])) return false;
    }
    return true;
}

bool IsClosed(const MapBlock& block) {
    if (block.faces.size() < MinVolumeFaces) return false;
    const std::vector<CPlane> flipped = FlippedPlanes(block);
    for (size_t i = 0; i < block.faces.size(); ++i) {
        const PolygonRef large = BasePolygonForPlane(block.faces[i].normal, block.faces[i].dist);
        const PolygonRef clipped = ClipByOthers(large, flipped, i);
        if (clipped == nullptr || !IsInside(BoundsOf(*clipped), BoundsOf(*large))) return false;
    }
    return true;
}

void Extend(Vec3& mins, Vec3& maxs, const Vec3& faceMins, const Vec3& faceMaxs) {
    for (size_t axis = 0; axis < 3; ++axis) {
        mins[axis] = std::min(mins[axis], faceMins[axis]);
        maxs[axis] = std::max(maxs[axis], faceMaxs[axis]);
    }
}

}  // namespace

bool CFileMap::IsDuplicatePlane(std::span<const MapFace> faces, const MapFace& face, int32_t planeNumber) {
    int32_t counter = 0;
    for (auto other = faces.rbegin(); other != faces.rend(); ++other) {
        ++counter;
        if (!ArePointsInPlane(face.points, *other)) continue;
        if (MarkForRereading(face.block)) {
            if (!Options().verbose) return true;
            BuildLog(" WARNING W071a: block %d - Narrow planes!\n Marked for rereading...\n", face.block - 1);
        } else if (BlockWarning(WarnFamily::W071)) {
            BuildLog(" \nWARNING W071: block %d - duplicate planes %d and %d!\n", face.block - 1, planeNumber, counter);
        }
        return true;
    }
    return false;
}

bool CFileMap::IsNotVolume(const MapBlock& block) {
    if (IsClosed(block)) return false;
    const int32_t number = block.number - 1;
    if (MarkForRereading(block.number)) {
        if (!Options().verbose) return true;
        BuildLog(" WARNING W075a: block %d - not a volume !\n Marked for rereading...\n", number);
    } else if (BlockWarning(WarnFamily::W075)) {
        BuildLog("\nWARNING W075: Invalid brush %d - not a volume !\n", number);
    }
    return true;
}

bool CFileMap::IsDuplicateBlock(const MapBlock& block) {
    const MapBlock* other = duplicates_.Find(block);
    if (other == nullptr) return false;
    if (BlockWarning(WarnFamily::W074)) {
        BuildLog(" \nWARNING W074: Duplicate blocks %d and %d!\n", other->number - 1, block.number - 1);
    }
    return true;
}

bool CFileMap::CheckTextureAxes(const MapBlock& block, std::span<const Texinfo> texinfos) {
    for (size_t i = 0; i < block.faces.size(); ++i) {
        Vec3 across = Cross(texinfos[i].vecT, texinfos[i].vecS);
        Normalize(across);
        if (Dot(across, block.faces[i].normal) != 0) continue;
        if (BlockWarning(WarnFamily::W073)) {
            BuildLog(" \nWARNING W073: removed block %d - plane too narrow!\n", block.number - 1);
        }
        return false;
    }
    return true;
}

void CFileMap::ClipPolygons(MapBlock& block) const {
    const std::vector<CPlane> flipped = FlippedPlanes(block);
    for (size_t i = 0; i < block.faces.size(); ++i) {
        MapFace& face = block.faces[i];
        const PolygonRef clipped = ClipByOthers(BasePolygonForPlane(face.normal, face.dist), flipped, i);
        if (clipped == nullptr) {
            BuildLog("\n Face collapsed \n");
            continue;
        }
        const Box box = BoundsOf(*clipped);
        face.mins = Narrow(box.mins);
        face.maxs = Narrow(box.maxs);
        Extend(block.mins, block.maxs, face.mins, face.maxs);
    }
}

}  // namespace k2k
