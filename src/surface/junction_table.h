// The lines that the sides of all faces lie on, with the points where faces have vertices on them.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "levelfile/level_records.h"
#include "surface/grid_hash.h"
#include "surface/near_point_index.h"

namespace k2k {

constexpr uint32_t JunctionHashCells = 1024;

struct JunctionEdge {
    Vec3 dir{};     // canonical: the first component that is not zero is positive
    Vec3 origin{};  // the line's point at parameter 0
    uint32_t chain = 0;
    std::vector<float> points;  // rising parameters along the line, at least 0.01 apart
};

// Where a side of a face lies: a line, and the parameters of its ends, t1 being the smaller one.
struct JunctionSide {
    int32_t edge = 0;
    float t1 = 0, t2 = 0;
    bool isNull = false;  // the side has no length; its line is any vertical one
};

// Sides find the line entered last of those that are equal enough and whose origins hash to the same cell.
class JunctionTable {
  public:
    // Bounds of the model whose faces come.
    JunctionTable(const Vec3& mins, const Vec3& maxs);

    // The line of the side from p1 to p2, which is entered when no line matches. Warns of a side without length;
    // sourceBlock is the number of the face's block for that.
    JunctionSide FindJunctionEdge(const Vec3& p1, const Vec3& p2, int32_t sourceBlock);

    // Enters a point on a line, unless one is there already.
    void AddJunctionPoint(int32_t edge, float t);

    // The first point on the side, seen from t1, that is not at one of its ends.
    std::optional<Vec3> MissingPoint(const JunctionSide& side) const;

    const std::vector<JunctionEdge>& edges() const { return edges_; }

  private:
    int32_t FindLatest(const Vec3& dir, const Vec3& origin, uint32_t chain) const;
    int32_t Enter(const Vec3& dir, const Vec3& origin, uint32_t chain);

    GridHash hash_;
    std::vector<JunctionEdge> edges_;
    NearPointIndex index_;
    size_t pointCount_ = 0;
};

}  // namespace k2k
