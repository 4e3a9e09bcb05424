#include "light/blocker_cells.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>

#include "driver/build_options.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double OnPlane = 1e-6;  // corners this near to a plane are on it
constexpr double Slack = 1e-3;    // of the cells, for the rounding of their corners and of shadow planes
constexpr double ParallelCosine = 1 - 1e-9;
constexpr double NearestCell = 0.5;     // nearer cells could stop a ray at its very end
constexpr double FarthestDrift = 0.25;  // of a walk's points from the segment: well below the distance of cells
constexpr double SmallestCross = 0.01;  // of the arms of a shadow plane: smaller ones have no sure direction

double Height(const HalfSpace& space, const Vec3d& point) {
    return Dot(space.normal, point) - space.dist;
}

// How far rounding to 32 bits moves a point of the box at most.
double LargestRounding(const Vec3& mins, const Vec3& maxs) {
    double sum = 0;
    for (size_t c = 0; c < 3; c++) {
        const float largest = std::max(std::fabs(mins[c]), std::fabs(maxs[c]));
        const double spacing = double{std::nextafter(largest, std::numeric_limits<float>::infinity())} - largest;
        sum += spacing / 2 * (spacing / 2);
    }
    return std::sqrt(sum);
}

Vec3d Plus(const Vec3d& a, const Vec3d& b, double t) {
    return {a[0] + b[0] * t, a[1] + b[1] * t, a[2] + b[2] * t};
}

double LengthOf(const Vec3d& v) {
    return std::sqrt(Dot(v, v));
}

// Where walks certainly take a child: the points that lie by -eps on its side of the node's plane, pulled in by the
// inset.
HalfSpace ChildSide(const TraceNode& node, uint32_t side, double eps, double inset) {
    const double sign = side == 0 ? 1 : -1;
    HalfSpace space;
    if (node.type >= 0 && node.type < 3) {
        space.normal[static_cast<size_t>(node.type)] = sign;
    } else {
        for (size_t c = 0; c < 3; c++) space.normal[c] = sign * node.normal[c];
    }
    const double length = LengthOf(space.normal);
    for (double& component : space.normal) component /= length;
    space.dist = (sign * node.dist + eps) / length + inset;
    return space;
}

// A plane through the end and an edge, with the middle of the cell in front.
std::optional<HalfSpace> PlaneThrough(const Vec3d& end, const Vec3d& from, const Vec3d& to, const Vec3d& inside) {
    Vec3d normal = Cross(Sub(from, end), Sub(to, end));
    const double length = LengthOf(normal);
    if (!(length > SmallestCross)) return std::nullopt;
    if (Dot(normal, Sub(inside, end)) < 0) normal = {-normal[0], -normal[1], -normal[2]};
    for (double& component : normal) component /= length;
    return HalfSpace{normal, Dot(normal, end)};
}

}  // namespace

// Cuts a cell out of the box, face by face.
class CBlockerCells::Builder {
  public:
    Builder(const Vec3& mins, const Vec3& maxs) {
        for (size_t axis = 0; axis < 3; axis++) {
            HalfSpace low, high;
            low.normal[axis] = 1;
            low.dist = mins[axis];
            high.normal[axis] = -1;
            high.dist = -static_cast<double>(maxs[axis]);
            spaces_.push_back(low);
            spaces_.push_back(high);
            middle_[axis] = (static_cast<double>(mins[axis]) + maxs[axis]) / 2;
        }
        reach_ = 2 * LengthOf(Sub(Widen(maxs), Widen(mins)));
    }

    // Of planes that look the same way only the innermost counts.
    void Add(const HalfSpace& space) {
        for (HalfSpace& other : spaces_) {
            if (!(Dot(other.normal, space.normal) > ParallelCosine)) continue;
            if (space.dist > other.dist) other = space;
            return;
        }
        spaces_.push_back(space);
    }

    Cell Build() const {
        Cell cell;
        for (uint32_t i = 0; i < spaces_.size(); i++) cell.faces.push_back({spaces_[i], EdgesOf(i)});
        if (!FindCentre(cell) || !IsClosed(cell)) return {};
        return cell;
    }

  private:
    // A square that covers all of the box, in the plane of a face.
    std::vector<FaceEdge> WidePolygon(const HalfSpace& space) const {
        const Vec3d foot = Plus(middle_, space.normal, -Height(space, middle_));
        size_t smallest = 0;
        for (size_t c = 1; c < 3; c++) {
            if (std::fabs(space.normal[c]) < std::fabs(space.normal[smallest])) smallest = c;
        }
        Vec3d axis{};
        axis[smallest] = 1;
        Vec3d u = Cross(space.normal, axis);
        const double length = LengthOf(u);
        for (double& component : u) component /= length;
        const Vec3d v = Cross(space.normal, u);
        std::vector<FaceEdge> edges;
        for (const auto& [s, t] : {std::array{-1.0, -1.0}, {1.0, -1.0}, {1.0, 1.0}, {-1.0, 1.0}}) {
            edges.push_back({Plus(Plus(foot, u, s * reach_), v, t * reach_), {}, 0});
        }
        return edges;
    }

    // Keeps the part of a polygon inside a half-space. Of an edge only its start counts here.
    static std::vector<FaceEdge> Clip(const std::vector<FaceEdge>& polygon, const HalfSpace& space, uint32_t number) {
        std::vector<FaceEdge> kept;
        for (size_t i = 0; i < polygon.size(); i++) {
            const FaceEdge& edge = polygon[i];
            const Vec3d& next = polygon[(i + 1) % polygon.size()].from;
            const double d1 = Height(space, edge.from);
            const double d2 = Height(space, next);
            const bool inside = d1 >= -OnPlane;
            const bool nextInside = d2 >= -OnPlane;
            if (inside) kept.push_back(edge);
            if (inside == nextInside) continue;
            const Vec3d cut = Plus(edge.from, Sub(next, edge.from), std::clamp(d1 / (d1 - d2), 0.0, 1.0));
            // Leaving, the new edge runs along the plane; entering, it is the rest of the old one.
            kept.push_back({cut, {}, inside ? number : edge.across});
        }
        return kept;
    }

    std::vector<FaceEdge> EdgesOf(uint32_t face) const {
        std::vector<FaceEdge> edges = WidePolygon(spaces_[face]);
        for (uint32_t i = 0; i < spaces_.size() && edges.size() >= 3; i++) {
            if (i != face) edges = Clip(edges, spaces_[i], i);
        }
        if (edges.size() < 3) return {};
        for (size_t i = 0; i < edges.size(); i++) edges[i].to = edges[(i + 1) % edges.size()].from;
        return edges;
    }

    // The middle of all corners must lie well inside of all faces, those that were left out as well.
    bool FindCentre(Cell& cell) const {
        Vec3d sum{};
        double count = 0;
        for (const Face& face : cell.faces) {
            for (const FaceEdge& edge : face.edges) {
                sum = Plus(sum, edge.from, 1);
                count++;
            }
        }
        if (count == 0) return false;
        for (size_t c = 0; c < 3; c++) cell.centre[c] = sum[c] / count;
        return std::all_of(spaces_.begin(), spaces_.end(),
                           [&](const HalfSpace& space) { return Height(space, cell.centre) > Slack; });
    }

    // Each edge must be one of the face across as well: nothing got lost in rounding.
    static bool IsClosed(const Cell& cell) {
        for (uint32_t i = 0; i < cell.faces.size(); i++) {
            for (const FaceEdge& edge : cell.faces[i].edges) {
                const auto& others = cell.faces[edge.across].edges;
                const auto meets = [i](const FaceEdge& other) { return other.across == i; };
                if (std::count_if(others.begin(), others.end(), meets) != 1) return false;
                const auto& own = cell.faces[i].edges;
                const auto same = [&](const FaceEdge& other) { return other.across == edge.across; };
                if (std::count_if(own.begin(), own.end(), same) != 1) return false;
            }
        }
        return true;
    }

    std::vector<HalfSpace> spaces_;
    Vec3d middle_{};
    double reach_ = 0;
};

CBlockerCells::CBlockerCells(const CTraceTree& tree, const Vec3& mins, const Vec3& maxs)
    : tree_(tree),
      mins_(mins),
      maxs_(maxs),
      parents_(tree.nodes().size(), -1),
      built_(std::make_unique<std::once_flag[]>(2 * tree.nodes().size())),
      cells_(2 * tree.nodes().size()) {
    const auto& nodes = tree.nodes();
    for (size_t i = 0; i < nodes.size(); i++) {
        for (size_t side = 0; side < 2; side++) {
            const int32_t child = nodes[i].child[side];
            if (child >= 0) parents_[static_cast<size_t>(child)] = static_cast<int32_t>(2 * i + side);
        }
    }
}

const CBlockerCells::Cell& CBlockerCells::CellOf(int32_t leaf) const {
    const auto number = static_cast<size_t>(leaf);
    std::call_once(built_[number], [&] { cells_[number] = BuildCell(leaf); });
    return cells_[number];
}

CBlockerCells::Cell CBlockerCells::BuildCell(int32_t leaf) const {
    size_t length = 0;
    for (int32_t at = leaf; at >= 0; at = parents_[static_cast<size_t>(at / 2)]) length++;
    // A walk cuts the segment once a plane at most. Each cut lies between two points of the walk, and so no farther
    // from the segment than they do, but for its own rounding.
    const double drift = LargestRounding(mins_, maxs_) * static_cast<double>(length);
    const double eps = Options().eps;
    if (!(eps > 0 && drift < FarthestDrift)) return {};
    Builder builder(mins_, maxs_);
    for (int32_t at = leaf; at >= 0; at = parents_[static_cast<size_t>(at / 2)]) {
        builder.Add(
            ChildSide(tree_.nodes()[static_cast<size_t>(at / 2)], static_cast<uint32_t>(at % 2), eps, drift + Slack));
    }
    return builder.Build();
}

bool CBlockerCells::CastShadow(int32_t leaf, const Vec3& end, ShadowVolume& shadow) const {
    const Cell& cell = CellOf(leaf);
    const Vec3d eye = Widen(end);
    const auto isFront = [&](const Face& face) { return Height(face.space, eye) < 0; };
    bool isApart = false;
    shadow.count = 0;
    for (const Face& face : cell.faces) {
        if (face.edges.empty() || !isFront(face)) continue;
        isApart = isApart || Height(face.space, eye) < -NearestCell;
        if (!shadow.Add(face.space)) return false;
        for (const FaceEdge& edge : face.edges) {
            if (isFront(cell.faces[edge.across])) continue;
            const std::optional<HalfSpace> plane = PlaneThrough(eye, edge.from, edge.to, cell.centre);
            if (!plane || !shadow.Add(*plane)) return false;
        }
    }
    return isApart;
}

}  // namespace k2k
