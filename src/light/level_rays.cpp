#include "light/level_rays.h"

#include <algorithm>

#include "light/rays.h"
#include "light/surface_geometry.h"

namespace k2k {
namespace {

constexpr float BoxMargin = 1;            // around all ends of rays
constexpr float SeeThroughMargin = 0.1F;  // a ray that ends within 0.01 of a detail leaf's surface is not stopped there

}  // namespace

CLevelRays::CLevelRays(const LightPatches& patches) {
    const CTraceTree* tree = RayTree();
    if (tree == nullptr || patches.patches.empty()) return;
    Vec3 mins = patches.patches[0].origin;
    Vec3 maxs = mins;
    for (const CLightPatch& patch : patches.patches) {
        for (size_t c = 0; c < 3; c++) {
            mins[c] = std::min(mins[c], patch.origin[c]);
            maxs[c] = std::max(maxs[c], patch.origin[c]);
        }
    }
    for (size_t c = 0; c < 3; c++) {
        mins[c] -= BoxMargin;
        maxs[c] += BoxMargin;
    }
    cells_ = std::make_unique<const CBlockerCells>(*tree, mins, maxs);
    for (const uint32_t surface : tree->SeeThroughFaces()) {
        const std::vector<Vec3> vertices = SurfaceVertices(SurfaceRow(surface));
        if (vertices.empty()) continue;
        FaceBox box{vertices[0], vertices[0]};
        for (const Vec3& vertex : vertices) {
            for (size_t c = 0; c < 3; c++) {
                box.mins[c] = std::min(box.mins[c], vertex[c] - SeeThroughMargin);
                box.maxs[c] = std::max(box.maxs[c], vertex[c] + SeeThroughMargin);
            }
        }
        seeThroughBoxes_.push_back(box);
    }
}

bool CLevelRays::IsBlocked(const Vec3& start, const Vec3& end, Blocker& blocker) const {
    return IsShadowedBy(start, end, blocker);
}

bool CLevelRays::IsOpen(const Vec3& end) const {
    return std::none_of(seeThroughBoxes_.begin(), seeThroughBoxes_.end(), [&](const FaceBox& box) {
        for (size_t c = 0; c < 3; c++) {
            if (end[c] < box.mins[c] || end[c] > box.maxs[c]) return false;
        }
        return true;
    });
}

bool CLevelRays::CastShadow(Blocker blocker, const Vec3& end, ShadowVolume& shadow) const {
    return cells_ && cells_->CastShadow(blocker, end, shadow);
}

}  // namespace k2k
