// Rings, shared edges, planes and junctions.
#include <algorithm>
#include <cmath>
#include <span>
#include <unordered_map>

#include "levelcheck/fault_list.h"

namespace levelcheck {
namespace {

// Welding moves a vertex by up to 0.1 on each axis; more than this off its plane is worth telling.
constexpr double PlaneTolerance = 0.25;
// A plane that was found for a merged or near-equal face can be off by the tolerances of clipping as well.
constexpr double GrossPlaneTolerance = 4.0;
// Planes of one distance share a row when their normals differ by less than this on each axis; far from the origin that
// is a wide step.
constexpr double NormalTolerance = 0.01;

std::string Name(size_t i) {
    return "surface " + std::to_string(i);
}

// Welding can give a point two vertices, each within 0.1 of it on each axis; a wider gap in a ring has another cause.
constexpr double WeldGap = 0.5;

// Start and end vertex of a surface edge entry.
std::array<uint32_t, 2> Ends(const LevelView& level, int32_t entry) {
    const Edge edge = level.edges[static_cast<size_t>(std::abs(entry))];
    return entry < 0 ? std::array{edge.second, edge.first} : std::array{edge.first, edge.second};
}

bool AreNear(const LevelView& level, uint32_t a, uint32_t b) {
    if (a >= level.vertices.size() || b >= level.vertices.size()) return false;
    const Point &p = level.vertices[a], &q = level.vertices[b];
    return std::abs(p.x - q.x) < WeldGap && std::abs(p.y - q.y) < WeldGap && std::abs(p.z - q.z) < WeldGap;
}

void CheckRing(const LevelView& level, size_t index, FaultList& faults) {
    const Surface& surface = level.surfaces[index];
    const auto entries =
        std::span(level.surfaceEdges).subspan(surface.firstEdge, static_cast<size_t>(surface.edgeCount));
    for (size_t i = 0; i < entries.size(); i++) {
        const auto [start, end] = Ends(level, entries[i]);
        const uint32_t next = Ends(level, entries[(i + 1) % entries.size()])[0];
        if (start == end) faults.Tolerate("edge without length (its ends were welded)", Name(index));
        if (end == next) continue;
        if (AreNear(level, end, next))
            faults.Tolerate("ring broken by welding", Name(index));
        else
            faults.Add("ring does not close", Name(index));
    }
}

double Distance(const Plane& plane, const Point& p) {
    return double{plane.nx} * p.x + double{plane.ny} * p.y + double{plane.nz} * p.z - plane.dist;
}

void CheckOnPlane(const LevelView& level, size_t index, const std::vector<uint32_t>& ring, FaultList& faults) {
    const Plane& plane = level.planes[level.surfaces[index].plane];
    double worst = 0, reach = 0;
    for (const uint32_t vertex : ring) {
        const Point& p = level.vertices[vertex];
        worst = std::max(worst, std::abs(Distance(plane, p)));
        reach = std::max(reach, std::abs(double{p.x}) + std::abs(double{p.y}) + std::abs(double{p.z}));
    }
    const std::string example = Name(index) + ", " + std::to_string(worst) + " off";
    if (worst > GrossPlaneTolerance + NormalTolerance * reach)
        return faults.Add("vertex far off its surface's plane", example);
    if (worst > PlaneTolerance) faults.Tolerate("vertex off its surface's plane", example);
}

// An edge is walked at most once in each direction.
void CheckSharing(const LevelView& level, FaultList& faults) {
    std::vector<std::array<uint32_t, 2>> uses(level.edges.size());
    for (const int32_t entry : level.surfaceEdges) {
        const auto row = static_cast<size_t>(std::abs(int64_t{entry}));
        if (row < uses.size()) uses[row][entry < 0 ? 1 : 0]++;
    }
    for (size_t i = 1; i < uses.size(); i++) {
        const std::string name = "edge " + std::to_string(i);
        faults.Require(uses[i][0] <= 1 && uses[i][1] <= 1, "edge walked twice in one direction", name);
        faults.Require(uses[i][0] == 1, "edge not used by the surface that made it", name);
    }
}

// Vertices by cell, to find those near an edge.
class VertexGrid {
  public:
    explicit VertexGrid(const LevelView& level) {
        for (uint32_t i = 0; i < level.vertices.size(); i++) cells_[Key(level.vertices[i])].push_back(i);
    }

    // Goes along the line from a to b and gives the lists of the cells near it, some more than once, while visit wants
    // more.
    template <typename F>
    void ForEachCellAlong(const Point& a, const Point& b, F&& visit) const {
        const float longest = std::max({std::abs(b.x - a.x), std::abs(b.y - a.y), std::abs(b.z - a.z)});
        const auto steps = static_cast<int>(longest / CellSize) + 1;
        const auto at = [&](int step) {
            const float t = static_cast<float>(step) / static_cast<float>(steps);
            return Point{a.x + (b.x - a.x) * t, a.y + (b.y - a.y) * t, a.z + (b.z - a.z) * t};
        };
        for (int step = 0; step < steps; step++) {
            if (!ForEachCellAround(at(step), at(step + 1), visit)) return;
        }
    }

  private:
    template <typename F>
    bool ForEachCellAround(const Point& a, const Point& b, F&& visit) const {
        const std::array<int64_t, 3> low{Cell(std::min(a.x, b.x) - 1), Cell(std::min(a.y, b.y) - 1),
                                         Cell(std::min(a.z, b.z) - 1)};
        const std::array<int64_t, 3> high{Cell(std::max(a.x, b.x) + 1), Cell(std::max(a.y, b.y) + 1),
                                          Cell(std::max(a.z, b.z) + 1)};
        for (int64_t x = low[0]; x <= high[0]; x++) {
            for (int64_t y = low[1]; y <= high[1]; y++) {
                for (int64_t z = low[2]; z <= high[2]; z++) {
                    const auto found = cells_.find(KeyOf(x, y, z));
                    if (!visit(found == cells_.end() ? std::span<const uint32_t>{} : found->second)) return false;
                }
            }
        }
        return true;
    }

    static constexpr double CellSize = 64;
    static int64_t Cell(float v) {
        constexpr double Far = 100000;
        return std::isfinite(v) ? static_cast<int64_t>(std::floor(std::clamp(v / CellSize, -Far, Far))) : 0;
    }
    static uint64_t KeyOf(int64_t x, int64_t y, int64_t z) {
        return (static_cast<uint64_t>(x) & 0x1FFFFF) << 42U | (static_cast<uint64_t>(y) & 0x1FFFFF) << 21U |
               (static_cast<uint64_t>(z) & 0x1FFFFF);
    }
    static uint64_t Key(const Point& p) { return KeyOf(Cell(p.x), Cell(p.y), Cell(p.z)); }

    std::unordered_map<uint64_t, std::vector<uint32_t>> cells_;
};

// Whether p lies on the line from a to b, away from both ends.
bool LiesInside(const Point& p, const Point& a, const Point& b) {
    constexpr double OnLine = 0.01, AwayFromEnds = 0.2;
    const double dx = double{b.x} - a.x, dy = double{b.y} - a.y, dz = double{b.z} - a.z;
    const double px = double{p.x} - a.x, py = double{p.y} - a.y, pz = double{p.z} - a.z;
    const double length = std::sqrt(dx * dx + dy * dy + dz * dz);
    if (length < 2 * AwayFromEnds) return false;
    const double t = (px * dx + py * dy + pz * dz) / length;
    if (t < AwayFromEnds || t > length - AwayFromEnds) return false;
    const double offSquared = px * px + py * py + pz * pz - t * t;
    return offSquared < OnLine * OnLine;
}

// A vertex on an edge that it does not end: counted once an edge. Detail surfaces and merged ones are not repaired by
// the compiler, so these are told, not blamed. The search ends with its budget of cells and vertices, so that a file of
// endless edges, or of vertices all in one place, takes no hours.
class JunctionSearch {
  public:
    JunctionSearch(const LevelView& level, uint64_t budget) : level_(level), grid_(level), budget_(budget) {}

    bool HasVertexOn(const Edge& edge) {
        const Point &a = level_.vertices[edge.first], &b = level_.vertices[edge.second];
        if (!(std::abs(a.x - b.x) + std::abs(a.y - b.y) + std::abs(a.z - b.z) < LongestEdge)) return false;
        bool found = false;
        grid_.ForEachCellAlong(a, b, [&](std::span<const uint32_t> vertices) {
            budget_ -= std::min<uint64_t>(budget_, 1 + vertices.size());
            found = std::any_of(vertices.begin(), vertices.end(),
                                [&](uint32_t vertex) { return LiesInside(level_.vertices[vertex], a, b); });
            return !found && !IsAtEnd();
        });
        return found;
    }
    bool IsAtEnd() const { return budget_ == 0; }

  private:
    static constexpr double LongestEdge = 100000;

    const LevelView& level_;
    VertexGrid grid_;
    uint64_t budget_;
};

void CheckJunctions(const LevelView& level, uint64_t budget, FaultList& faults) {
    JunctionSearch search(level, budget);
    for (size_t i = 1; i < level.edges.size(); i++) {
        const Edge edge = level.edges[i];
        const std::string name = "edge " + std::to_string(i);
        if (search.IsAtEnd()) return faults.Tolerate("search for T-junctions ended early", name);
        if (edge.first >= level.vertices.size() || edge.second >= level.vertices.size()) continue;
        if (search.HasVertexOn(edge)) faults.Tolerate("edge with a vertex on it (T-junction)", name);
    }
}

}  // namespace

void CheckSurfaces(const LevelView& level, const CheckOptions& options, FaultList& faults) {
    for (size_t i = 0; i < level.vertices.size(); i++) {
        const Point& p = level.vertices[i];
        const bool finite = std::isfinite(p.x) && std::isfinite(p.y) && std::isfinite(p.z);
        faults.Require(finite, "vertex not finite", "vertex " + std::to_string(i));
    }
    for (size_t i = 0; i < level.planes.size(); i++) {
        const Plane& p = level.planes[i];
        const double length = std::sqrt(double{p.nx} * p.nx + double{p.ny} * p.ny + double{p.nz} * p.nz);
        faults.Require(std::abs(length - 1) < 1e-3 && std::isfinite(p.dist), "plane normal not of unit length",
                       "plane " + std::to_string(i));
    }
    for (size_t i = 0; i < level.surfaces.size(); i++) {
        const std::vector<uint32_t> ring = RingOf(level, level.surfaces[i]);
        if (ring.empty() || level.surfaces[i].plane >= level.planes.size()) continue;
        CheckRing(level, i, faults);
        CheckOnPlane(level, i, ring, faults);
    }
    CheckSharing(level, faults);
    if (options.junctions) CheckJunctions(level, options.junctionBudget, faults);
}

}  // namespace levelcheck
