// Levels made by hand as patches see them.
#pragma once

#include <algorithm>
#include <atomic>
#include <cmath>
#include <vector>

#include "radiosity/make_patches.h"
#include "radiosity/shadow_rays.h"
#include "radiosity/transfers.h"
#include "solid/vectors.h"

namespace k2k::test {

class HandmadeLevel final : public PatchLevel {
  public:
    uint32_t SurfaceCount() const override { return static_cast<uint32_t>(surfaces.size()); }
    PatchSurface Surface(uint32_t surfaceIndex) const override { return surfaces[surfaceIndex]; }
    Vec3 NormalAt(uint32_t surfaceIndex, const Vec3&) const override { return surfaces[surfaceIndex].normal; }
    int32_t RegionAt(const Vec3& point) const override {
        return std::fabs(point[0]) < 1e6F ? static_cast<int32_t>(point[0]) : 0;
    }

    // A shaded rectangle that faces along an axis, or against it.
    PatchSurface& Quad(size_t axis, double at, double facing, const Vec3d& mins, const Vec3d& maxs) {
        const size_t b = (axis + 1) % 3, c = (axis + 2) % 3;
        PatchSurface surface;
        for (const auto& [useB, useC] : {std::pair{0, 0}, {0, 1}, {1, 1}, {1, 0}}) {
            Vec3d corner{};
            corner[axis] = at;
            corner[b] = useB != 0 ? maxs[b] : mins[b];
            corner[c] = useC != 0 ? maxs[c] : mins[c];
            surface.outline.push_back(corner);
        }
        surface.normal[axis] = static_cast<float>(facing);
        surface.shaded = true;
        surface.reflectivity = {0.5F, 0.5F, 0.5F};
        surfaces.push_back(surface);
        return surfaces.back();
    }

    // The inner faces of a box.
    void Room(const Vec3d& mins, const Vec3d& maxs) {
        for (size_t axis = 0; axis < 3; axis++) {
            Quad(axis, mins[axis], 1, mins, maxs);
            Quad(axis, maxs[axis], -1, mins, maxs);
        }
    }

    // The outer faces of a box.
    void Block(const Vec3d& mins, const Vec3d& maxs) {
        for (size_t axis = 0; axis < 3; axis++) {
            Quad(axis, mins[axis], -1, mins, maxs);
            Quad(axis, maxs[axis], 1, mins, maxs);
        }
    }

    LightPatches Patches(int32_t size = 0) const {
        std::vector<Vec3> centres;
        LightPatches patches = MakePatches(*this, centres);
        SubdividePatches(patches, size, *this);
        return patches;
    }

    std::vector<PatchSurface> surfaces;
};

// Rays in a space with boxes that stop them. Each box also casts the shadow of its inner part.
class BoxRays final : public ShadowRays {
  public:
    struct Box {
        Vec3d mins, maxs;
    };

    bool IsBlocked(const Vec3& start, const Vec3& end, Blocker& blocker) const override {
        rays++;
        blocker = NoBlocker;
        for (size_t i = 0; i < boxes.size(); i++) {
            if (!Meets(boxes[i], Widen(start), Widen(end))) continue;
            blocker = static_cast<Blocker>(i);
            return true;
        }
        return false;
    }

    bool IsOpen(const Vec3&) const override { return open; }

    // Plane by plane: the sides of the box that the end lies before, and planes through the end and the edges between
    // those and the others.
    bool CastShadow(Blocker blocker, const Vec3& end, ShadowVolume& shadow) const override {
        shadow.count = 0;
        Box box = boxes[static_cast<size_t>(blocker)];
        for (size_t c = 0; c < 3; c++) {
            box.mins[c] += 0.01;
            box.maxs[c] -= 0.01;
        }
        const Vec3d eye = Widen(end);
        for (size_t axis = 0; axis < 3; axis++) {
            for (const bool high : {false, true}) {
                if (!IsBefore(box, eye, axis, high)) continue;
                HalfSpace side;
                side.normal[axis] = high ? -1 : 1;
                side.dist = high ? -box.maxs[axis] : box.mins[axis];
                shadow.Add(side);
                AddEdges(box, eye, axis, high, shadow);
            }
        }
        return shadow.count > 0;
    }

    std::vector<Box> boxes;
    bool open = true;
    mutable std::atomic<int64_t> rays = 0;

  private:
    static bool Meets(const Box& box, const Vec3d& start, const Vec3d& end) {
        double low = 0, high = 1;
        for (size_t c = 0; c < 3; c++) {
            const double way = end[c] - start[c];
            if (way == 0) {
                if (start[c] <= box.mins[c] || start[c] >= box.maxs[c]) return false;
                continue;
            }
            double first = (box.mins[c] - start[c]) / way;
            double second = (box.maxs[c] - start[c]) / way;
            if (first > second) std::swap(first, second);
            low = std::max(low, first);
            high = std::min(high, second);
        }
        return low < high;
    }

    static bool IsBefore(const Box& box, const Vec3d& eye, size_t axis, bool high) {
        return high ? eye[axis] > box.maxs[axis] : eye[axis] < box.mins[axis];
    }

    static void AddEdges(const Box& box, const Vec3d& eye, size_t axis, bool high, ShadowVolume& shadow) {
        Vec3d middle;
        for (size_t c = 0; c < 3; c++) middle[c] = (box.mins[c] + box.maxs[c]) / 2;
        for (size_t other = 0; other < 3; other++) {
            if (other == axis) continue;
            const size_t along = 3 - axis - other;
            for (const bool otherHigh : {false, true}) {
                if (IsBefore(box, eye, other, otherHigh)) continue;
                Vec3d from;
                from[axis] = high ? box.maxs[axis] : box.mins[axis];
                from[other] = otherHigh ? box.maxs[other] : box.mins[other];
                Vec3d to = from;
                from[along] = box.mins[along];
                to[along] = box.maxs[along];
                HalfSpace plane;
                plane.normal = Cross(Sub(from, eye), Sub(to, eye));
                if (Dot(plane.normal, Sub(middle, eye)) < 0) {
                    for (double& component : plane.normal) component = -component;
                }
                plane.dist = Dot(plane.normal, eye);
                shadow.Add(plane);
            }
        }
    }
};

}  // namespace k2k::test
