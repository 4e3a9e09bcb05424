#include "levelcheck/visibility_probe.h"

#include <algorithm>
#include <random>

#include "levelcheck/point_lookup.h"

namespace levelcheck {
namespace {

constexpr double Clearance = 0.25;
constexpr double NearReach = 400;  // half of the segments are short: they are clear more often
constexpr int32_t DetailBit = 16;

using Vec = std::array<double, 3>;

Vec Between(const Vec& a, const Vec& b, double t) {
    return {a[0] + (b[0] - a[0]) * t, a[1] + (b[1] - a[1]) * t, a[2] + (b[2] - a[2]) * t};
}

class Probe {
  public:
    Probe(const LevelView& level, uint64_t seed) : level_(level), random_(seed) {
        for (size_t i = 1; i < level.regions.size(); i++) {
            rows_.push_back(VisRow(level, i).value_or(std::vector<uint8_t>{}));
            if (!IsSolid(i)) open_.push_back(i);
        }
    }

    ProbeResult Run(uint64_t wanted) {
        ProbeResult result;
        while (!open_.empty() && result.clear < wanted && result.tried < wanted * 100) {
            result.tried++;
            Shoot(result);
        }
        return result;
    }

  private:
    int32_t Contents(size_t region) const { return level_.regions[region].contents & ~DetailBit; }
    bool IsSolid(size_t region) const { return region == 0 || (Contents(region) & ~1) == -128; }

    double Random(double low, double high) { return std::uniform_real_distribution<double>(low, high)(random_); }

    // A point of a region, or nothing when the throw left it.
    bool PointIn(size_t region, Vec& point) {
        const Region& row = level_.regions[region];
        for (int a = 0; a < 3; a++) point[a] = Random(row.mins[a], row.maxs[a]);
        return RegionAt(level_, point) == region;
    }

    void Shoot(ProbeResult& result) {
        const size_t from = open_[random_() % open_.size()];
        Vec a{}, b{};
        if (!PointIn(from, a)) return;
        size_t to = 0;
        if (random_() % 2 == 0) {
            for (int i = 0; i < 3; i++) b[i] = a[i] + Random(-NearReach, NearReach);
            to = RegionAt(level_, b);
        } else {
            to = open_[random_() % open_.size()];
            if (!PointIn(to, b)) return;
        }
        if (to == 0 || Contents(to) != Contents(from) || !IsClear(a, b, Contents(from))) return;
        result.clear++;
        if (Sees(from, to) && Sees(to, from)) return;
        if (result.misses++ == 0) {
            result.firstMiss = "region " + std::to_string(from) + " and region " + std::to_string(to) + ", from " +
                               std::to_string(a[0]) + " " + std::to_string(a[1]) + " " + std::to_string(a[2]) + " to " +
                               std::to_string(b[0]) + " " + std::to_string(b[1]) + " " + std::to_string(b[2]);
        }
    }

    bool Sees(size_t from, size_t to) const {
        const auto& row = rows_[from - 1];
        return (to - 1) / 8 < row.size() && (row[(to - 1) / 8] >> ((to - 1) % 8) & 1) != 0;
    }

    // All leaves within Clearance of the segment hold `contents`.
    bool IsClear(const Vec& a, const Vec& b, int32_t contents) const {
        struct Piece {
            int32_t node;
            Vec a, b;
        };
        std::vector<Piece> stack{{level_.info.headNodes[0], a, b}};
        while (!stack.empty()) {
            const Piece piece = stack.back();
            stack.pop_back();
            if (piece.node < 0) {
                if (Contents(static_cast<size_t>(-(piece.node + 1))) != contents) return false;
                continue;
            }
            const Node& node = level_.nodes[piece.node];
            const Plane& plane = level_.planes[node.plane];
            const double da = Distance(plane, piece.a), db = Distance(plane, piece.b);
            // The part of the segment on each side, stretched past the plane by the clearance.
            for (int side = 0; side < 2; side++) {
                const double sa = side == 0 ? da : -da, sb = side == 0 ? db : -db;
                if (sa <= -Clearance && sb <= -Clearance) continue;
                Piece part{node.children[side], piece.a, piece.b};
                if (sa < -Clearance) part.a = Between(piece.a, piece.b, (-Clearance - sa) / (sb - sa));
                if (sb < -Clearance) part.b = Between(piece.a, piece.b, (-Clearance - sa) / (sb - sa));
                stack.push_back(part);
            }
        }
        return true;
    }

    const LevelView& level_;
    std::mt19937_64 random_;
    std::vector<std::vector<uint8_t>> rows_;
    std::vector<size_t> open_;
};

}  // namespace

ProbeResult ProbeVisibility(const LevelView& level, uint64_t wanted, uint64_t seed) {
    if (level.nodes.empty()) return {};
    return Probe(level, seed).Run(wanted);
}

}  // namespace levelcheck
