#include "klvtool/leak_search.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <queue>
#include <unordered_map>

#include "bsp/tree_build.h"
#include "klvtool/leak_map.h"
#include "levelfile/texture_data.h"
#include "mapread/entity.h"

namespace klvtool {
namespace {

using k2k::CBspNode;
using k2k::CPortal;

constexpr Rgb FloorColour{176, 186, 170};

double Distance(const Vec3& a, const Vec3& b) {
    return std::hypot(double{a[0]} - b[0], double{a[1]} - b[1], double{a[2]} - b[2]);
}

Vec3 Middle(const Vec3& a, const Vec3& b, float share = 0.5F) {
    return {a[0] + (b[0] - a[0]) * share, a[1] + (b[1] - a[1]) * share, a[2] + (b[2] - a[2]) * share};
}

double SideOf(const CBspNode& node, const Vec3& p) {
    const k2k::CPlane& plane = k2k::TablePlane(node.planenum);
    return double{plane.normal[0]} * p[0] + double{plane.normal[1]} * p[1] + double{plane.normal[2]} * p[2] -
           plane.dist;
}

// Whether no solid leaf lies between two points.
bool IsClear(const CBspNode& root, const Vec3& from, const Vec3& to) {
    struct Piece {
        const CBspNode* node;
        Vec3 a, b;
    };
    std::vector<Piece> pieces{{&root, from, to}};
    while (!pieces.empty()) {
        const auto [node, a, b] = pieces.back();
        pieces.pop_back();
        if (node->IsLeaf()) {
            if (k2k::IsSolid(node->contents)) return false;
            continue;
        }
        const double da = SideOf(*node, a), db = SideOf(*node, b);
        const CBspNode *front = node->children[0].get(), *back = node->children[1].get();
        if (da >= 0 && db >= 0) {
            pieces.push_back({front, a, b});
        } else if (da <= 0 && db <= 0) {
            pieces.push_back({back, a, b});
        } else {
            const Vec3 cut = Middle(a, b, static_cast<float>(da / (da - db)));
            pieces.push_back({da > 0 ? front : back, a, cut});
            pieces.push_back({da > 0 ? back : front, cut, b});
        }
    }
    return true;
}

// The shortest way from any object to the outside, from opening to opening (Dijkstra's method over the portals).
class WaySearch {
  public:
    explicit WaySearch(LeakMap& map) : map_(map) {}

    // Objects that were placed in open leaves; each can begin a way.
    size_t PlaceObjects() {
        const std::vector<k2k::CEntity>& entities = k2k::Entities();
        size_t placed = 0;
        for (size_t i = 1; i < entities.size(); i++) {
            const CBspNode& leaf = k2k::PointInLeaf(*map_.root, entities[i].origin);
            if (k2k::IsSolid(leaf.contents)) continue;
            placed++;
            Extend(leaf, entities[i].origin, 0, NoStep, i);
        }
        return placed;
    }

    // The steps of the way, the one that reaches the outside last; none when nothing leads there.
    struct Step {
        const CPortal* portal;
        const CBspNode* beyond;  // the leaf behind the portal
        Vec3 point;              // the portal's middle
        double length;           // of the way so far
        size_t before;           // the step that led here
        size_t object;
    };
    std::vector<Step> Run() {
        while (!queue_.empty()) {
            const size_t at = queue_.top().second;
            queue_.pop();
            const Step step = steps_[at];
            if (!reached_.emplace(step.beyond, at).second) continue;
            if (step.beyond == &map_.portals.outside) return WayTo(at);
            Extend(*step.beyond, step.point, step.length, at, step.object);
        }
        return {};
    }

  private:
    static constexpr size_t NoStep = std::numeric_limits<size_t>::max();

    // Offers all portals of an open leaf as next steps.
    void Extend(const CBspNode& leaf, const Vec3& from, double length, size_t before, size_t object) {
        for (const CPortal* portal = leaf.portals; portal != nullptr; portal = portal->NextAt(leaf)) {
            const CBspNode& beyond = portal->FarSide(leaf);
            const bool isOutside = &beyond == &map_.portals.outside;
            if ((!isOutside && k2k::IsSolid(beyond.contents)) || reached_.count(&beyond) != 0) continue;
            const Vec3 point = k2k::PolygonCenter(*portal->polygon);
            const double total = length + Distance(from, point);
            steps_.push_back({portal, &beyond, point, total, before, object});
            queue_.emplace(total, steps_.size() - 1);
        }
    }

    std::vector<Step> WayTo(size_t at) const {
        std::vector<Step> way;
        for (; at != NoStep; at = steps_[at].before) way.push_back(steps_[at]);
        std::reverse(way.begin(), way.end());
        return way;
    }

    LeakMap& map_;
    std::vector<Step> steps_;
    using Entry = std::pair<double, size_t>;
    std::priority_queue<Entry, std::vector<Entry>, std::greater<>> queue_;
    std::unordered_map<const CBspNode*, size_t> reached_;
};

constexpr int AllDirections = 26;

// In how many of all directions nothing stands between a point and the margin of the map.
int FreeDirections(const LeakMap& map, const Vec3& point) {
    const float reach = 2 * static_cast<float>(Distance(map.blocks.mins, map.blocks.maxs));
    int free = 0;
    for (int i = 0; i < 27; i++) {
        const std::array<int, 3> way{i % 3 - 1, i / 3 % 3 - 1, i / 9 - 1};
        if (way == std::array{0, 0, 0}) continue;
        Vec3 end{};
        for (size_t axis = 0; axis < 3; axis++) end[axis] = point[axis] + reach * static_cast<float>(way[axis]);
        free += IsClear(*map.root, point, end) ? 1 : 0;
    }
    return free;
}

// The opening where the way leaves the level: behind it, all at once, there is nothing around. The narrower one of two
// that are alike.
size_t FindHole(const LeakMap& map, const std::vector<Vec3>& points, const std::vector<WaySearch::Step>& steps) {
    std::vector<int> free;
    for (size_t i = 0; i + 1 < points.size(); i++)
        free.push_back(FreeDirections(map, Middle(points[i], points[i + 1])));
    size_t hole = 0;
    int largest = std::numeric_limits<int>::min();
    float area = 0;
    for (size_t i = 0; i + 1 < free.size(); i++) {
        const int rise = free[i + 1] - free[i];
        const float size = k2k::PolygonArea(*steps[i].portal->polygon);
        if (rise < largest || (rise == largest && size >= area)) continue;
        hole = i;
        largest = rise;
        area = size;
    }
    return hole;
}

// Leaves out points that the way does not need to go round a corner.
std::vector<Vec3> Straightened(const CBspNode& root, const std::vector<Vec3>& points) {
    std::vector<Vec3> way{points.front()};
    for (size_t at = 0; at + 1 < points.size();) {
        size_t next = points.size() - 1;
        while (next > at + 1 && !IsClear(root, points[at], points[next])) next--;
        way.push_back(points[next]);
        at = next;
    }
    return way;
}

// How far a point is from a block; blocks are convex, so the farthest plane tells, corners aside.
double DistanceTo(const k2k::CBlock& block, const Vec3& p) {
    double farthest = -std::numeric_limits<double>::infinity();
    for (const k2k::CBlockFace& face : block.faces) {
        const k2k::CPlane& plane = k2k::TablePlane(face.planenum);
        const double side = double{plane.normal[0]} * p[0] + double{plane.normal[1]} * p[1] +
                            double{plane.normal[2]} * p[2] - plane.dist;
        farthest = std::max(farthest, face.planeside != 0 ? -side : side);
    }
    double outside = 0;  // the distance to the block's box is never more
    for (size_t axis = 0; axis < 3; axis++) {
        const double over = std::max({double{block.mins[axis]} - p[axis], double{p[axis]} - block.maxs[axis], 0.0});
        outside += over * over;
    }
    return std::max(farthest, std::sqrt(outside));
}

std::string TextureOf(const k2k::CBlock& block) {
    if (block.faces.empty()) return "";
    const uint32_t number = k2k::Textures().GetTexinfo(block.faces.begin()->texinfo).texture;
    const auto& names = k2k::Textures().names;
    if (number >= names.size()) return "";
    const auto& name = names[number];
    return ToUtf8({name.data(), static_cast<size_t>(std::find(name.begin(), name.end(), '\0') - name.begin())});
}

LeakBlock NearestBlock(const k2k::CBlockSet& set, const Vec3& hole) {
    const k2k::CBlock* nearest = nullptr;
    double least = std::numeric_limits<double>::infinity();
    for (const k2k::CBlock& block : set.blocks) {
        const double distance = DistanceTo(block, hole);
        if (!k2k::IsSolid(block.contents) || distance >= least) continue;
        nearest = &block;
        least = distance;
    }
    if (nearest == nullptr) return {};
    return {nearest->blockNumber - 1, TextureOf(*nearest), nearest->mins, nearest->maxs, std::max(0.0, least)};
}

LeakObject ObjectOf(size_t number) {
    const k2k::CEntity& entity = k2k::Entities()[number];
    return {number, ToUtf8(k2k::GetKey(entity.keys, "type")), ToUtf8(k2k::GetKey(entity.keys, "name")), entity.origin};
}

Leak MakeLeak(const LeakMap& map, const std::vector<WaySearch::Step>& steps) {
    Leak leak;
    leak.object = ObjectOf(steps.front().object);
    std::vector<Vec3> points{leak.object.origin};
    for (const WaySearch::Step& step : steps) points.push_back(step.point);
    leak.way = Straightened(*map.root, points);
    leak.isOutside = FreeDirections(map, leak.object.origin) > AllDirections / 2;
    leak.hole = leak.object.origin;
    if (leak.isOutside) return leak;
    const size_t hole = FindHole(map, points, steps);
    leak.hole = steps[hole].point;
    k2k::Vec3d low{}, high{};
    k2k::PolygonBounds(*steps[hole].portal->polygon, low, high);
    for (size_t axis = 0; axis < 3; axis++) leak.holeSize[axis] = high[axis] - low[axis];
    leak.nearest = NearestBlock(map.blocks, leak.hole);
    return leak;
}

// The faces on the tree's nodes.
std::vector<PlanPolygon> FacesOf(const CBspNode& root) {
    std::vector<PlanPolygon> polygons;
    std::vector<const CBspNode*> stack{&root};
    while (!stack.empty()) {
        const CBspNode& node = *stack.back();
        stack.pop_back();
        if (node.IsLeaf()) continue;
        for (const k2k::CBlockFace& face : node.faces) {
            if (face.points.size() >= 3) polygons.push_back({face.points, k2k::FaceNormal(face), FloorColour});
        }
        for (const auto& child : node.children) stack.push_back(child.get());
    }
    return polygons;
}

std::string Point(const Vec3& p) {
    std::array<char, 120> text{};
    std::snprintf(text.data(), text.size(), "%g %g %g", double{p[0]}, double{p[1]}, double{p[2]});
    return text.data();
}

std::string Number(double value) {
    std::array<char, 40> text{};
    std::snprintf(text.data(), text.size(), "%.3g", value);
    return text.data();
}

std::string DescribeHole(const Leak& leak) {
    const LeakBlock& block = leak.nearest;
    return "hole near " + Point(leak.hole) + ", " + Number(leak.holeSize[0]) + " x " + Number(leak.holeSize[1]) +
           " x " + Number(leak.holeSize[2]) + " units\nnearest block " + std::to_string(block.number) + ", " +
           block.texture + ", from " + Point(block.mins) + " to " + Point(block.maxs) + "\n";
}

}  // namespace

LeakReport FindLeak(const std::string& mapPath, const std::string& options) {
    const std::unique_ptr<LeakMap> map = LoadLeakMap(mapPath, options);
    LeakReport report;
    report.bounds = {map->blocks.mins, map->blocks.maxs};
    report.faces = FacesOf(*map->root);
    WaySearch search(*map);
    report.objects = search.PlaceObjects();
    const auto steps = search.Run();
    if (!steps.empty()) report.leak = MakeLeak(*map, steps);
    return report;
}

std::string Describe(const LeakReport& report) {
    if (report.objects == 0) return "no object stands in open space: nothing tells the inside from the outside\n";
    if (!report.leak) return "sealed: none of " + std::to_string(report.objects) + " objects reaches the outside\n";
    const Leak& leak = *report.leak;
    std::string text = "leak from object " + std::to_string(leak.object.number) + ", " + leak.object.type;
    if (!leak.object.name.empty()) text += " \"" + leak.object.name + "\"";
    text += ", at " + Point(leak.object.origin) + "\n";
    text += leak.isOutside ? "the object itself stands outside\n" : DescribeHole(leak);
    text += "way, " + std::to_string(leak.way.size()) + " points:\n";
    for (const Vec3& point : leak.way) text += "  " + Point(point) + "\n";
    return text;
}

}  // namespace klvtool
