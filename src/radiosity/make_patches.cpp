#include "radiosity/make_patches.h"

#include <cmath>
#include <optional>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr float SmallestArea = 1;
constexpr double SampleReach = 16;      // one texel
constexpr double DarkestSample = 3.0;   // sum of the components
constexpr double SmallestMargin = 1.0;  // a cut leaves at least this much on both sides
constexpr int32_t MaxPatches = 1000000;

// Appends an empty patch and returns its number.
int32_t NewPatch(LightPatches& patches) {
    if (patches.count() >= MaxPatches) FatalError("E017: Map size - too many surfaces");
    patches.patches.emplace_back();
    return patches.count() - 1;
}

void SetPolygon(CLightPatch& patch, PolygonRef polygon) {
    patch.polygon = std::move(polygon);
    PolygonBounds(*patch.polygon, patch.mins, patch.maxs);
    patch.area = PolygonArea(*patch.polygon);
    if (patch.area <= SmallestArea) patch.area = SmallestArea;
}

// Puts the patch one normal length in front of a point of its surface.
void Place(CLightPatch& patch, const Vec3& centroid, const Vec3& normal, const PatchLevel& level) {
    patch.normal = normal;
    patch.origin = Add(centroid, normal);
    patch.region = level.RegionAt(patch.origin);
}

CLightPatch PatchOf(const PatchSurface& surface, uint32_t surfaceIndex, PolygonRef polygon, const PatchLevel& level) {
    CLightPatch patch;
    patch.surfaceIndex = surfaceIndex;
    Place(patch, PolygonCenter(*polygon), surface.normal, level);
    SetPolygon(patch, std::move(polygon));
    patch.sky = surface.sky;
    if (!surface.sky) patch.reflectivity = surface.reflectivity;
    patch.totallight = patch.baselight;
    return patch;
}

// The grid plane that cuts the patch: the first one inside it on the first axis that has one.
std::optional<CPlane> CuttingPlane(const CLightPatch& patch, int32_t size) {
    for (size_t axis = 0; axis < 3; axis++) {
        const double a = std::floor((patch.mins[axis] + SmallestMargin) / size);
        const double b = std::floor((patch.maxs[axis] - SmallestMargin) / size);
        if (!(b > a)) continue;
        CPlane plane;
        plane.normal[axis] = 1;
        plane.dist = static_cast<float>(size * (a + 1));
        plane.type = static_cast<int32_t>(axis);
        return plane;
    }
    return std::nullopt;
}

void TakePiece(CLightPatch& patch, PolygonRef piece, const PatchLevel& level) {
    const Vec3 centroid = PolygonCenter(*piece);
    SetPolygon(patch, std::move(piece));
    Place(patch, centroid, level.NormalAt(patch.surfaceIndex, centroid), level);
    patch.emit = {};
    patch.send = {};
}

// The patch keeps what lies in front of the plane. Returns the number of the new patch, which takes the rest; NoPatch
// when coordinates are too large for the cut to leave something on both sides.
int32_t CutPatch(LightPatches& patches, int32_t number, const CPlane& plane, const PatchLevel& level) {
    const PolygonPieces pieces = SplitPolygonEps(patches[number].polygon, plane, 0, 0);
    if (!pieces.front || !pieces.back) return NoPatch;
    const int32_t added = NewPatch(patches);
    CLightPatch& patch = patches[number];
    CLightPatch& rest = patches[added];
    rest.surfaceIndex = patch.surfaceIndex;
    rest.reflectivity = patch.reflectivity;
    rest.baselight = patch.baselight;
    rest.totallight = patch.totallight;
    rest.sky = patch.sky;
    rest.next = patch.next;
    patch.next = added;
    TakePiece(patch, pieces.front, level);
    TakePiece(rest, pieces.back, level);
    return added;
}

// Cuts a patch and its pieces until no grid line crosses them; front pieces before back pieces.
void SubdividePatch(LightPatches& patches, int32_t first, int32_t size, const PatchLevel& level) {
    std::vector<int32_t> todo{first};
    while (!todo.empty()) {
        const int32_t number = todo.back();
        todo.pop_back();
        if (patches[number].sky) continue;
        const std::optional<CPlane> plane = CuttingPlane(patches[number], size);
        if (!plane) continue;
        const int32_t rest = CutPatch(patches, number, *plane, level);
        if (rest == NoPatch) continue;
        todo.push_back(rest);
        todo.push_back(number);
    }
}

bool IsNear(const CLightPatch& patch, const Vec3& position) {
    for (size_t axis = 0; axis < 3; axis++) {
        if (!(patch.mins[axis] <= position[axis] + SampleReach)) return false;
        if (!(patch.maxs[axis] >= position[axis] - SampleReach)) return false;
    }
    return true;
}

}  // namespace

LightPatches MakePatches(const PatchLevel& level, std::vector<Vec3>& centres) {
    const uint32_t count = level.SurfaceCount();
    LightPatches patches;
    patches.surfacePatches.assign(count, NoPatch);
    centres.resize(count);
    for (uint32_t i = 0; i < count; i++) {
        const PatchSurface surface = level.Surface(i);
        const PolygonRef polygon = MakePolygon(PolygonRemoveColinear(surface.outline));
        centres[i] = PolygonCenter(*polygon);
        if (polygon->numpoints() <= 2 || !surface.shaded) continue;
        patches.surfacePatches[i] = NewPatch(patches);
        patches.patches.back() = PatchOf(surface, i, polygon, level);
    }
    return patches;
}

void SubdividePatches(LightPatches& patches, int32_t size, const PatchLevel& level) {
    if (size < 1) return;
    const int32_t uncut = patches.count();
    for (int32_t i = 0; i < uncut; i++) SubdividePatch(patches, i, size, level);
}

void AddSampleToPatches(LightPatches& patches, const Vec3& position, const Vec3& colour, uint32_t surfaceIndex) {
    if (Options().radbounce == 0) return;
    const double sum = static_cast<double>(colour[0]) + colour[1] + colour[2];
    if (sum < DarkestSample) return;
    for (int32_t i = patches.surfacePatches[surfaceIndex]; i != NoPatch; i = patches[i].next) {
        CLightPatch& patch = patches[i];
        if (!IsNear(patch, position)) continue;
        patch.samples++;
        patch.samplelight = Add(patch.samplelight, colour);
    }
}

void AverageSamples(LightPatches& patches, uint32_t surfaceIndex) {
    for (int32_t i = patches.surfacePatches[surfaceIndex]; i != NoPatch; i = patches[i].next) {
        CLightPatch& patch = patches[i];
        if (patch.samples <= 0) continue;
        for (float& component : patch.samplelight) component /= static_cast<float>(patch.samples);
    }
}

}  // namespace k2k
