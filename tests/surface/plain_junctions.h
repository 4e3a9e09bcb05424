// Junction repair by plain hash chains, linked lists and repeated passes, to hold the indexed one against.
#pragma once

#include <array>
#include <cmath>
#include <list>
#include <vector>

#include "solid/block_face.h"
#include "solid/vectors.h"
#include "surface/grid_hash.h"
#include "surface/split_long_face.h"

namespace k2k::test {

class PlainJunctions {
  public:
    PlainJunctions(const Vec3& mins, const Vec3& maxs) {
        Vec3 reach{};
        for (size_t i = 0; i < 3; ++i) reach[i] = std::max(std::fabs(mins[i]), std::fabs(maxs[i]));
        hash_ = GridHash(Negate(reach), reach, 1024);
    }

    void Enter(const CBlockFace& face) {
        for (size_t i = 0; i < face.points.size(); ++i) {
            float t1 = 0;
            float t2 = 0;
            Line& line = Find(face.points[i], face.points[(i + 1) % face.points.size()], t1, t2);
            AddPoint(line, t1);
            AddPoint(line, t2);
        }
    }

    void Fix(std::unique_ptr<CBlockFace> face, FaceList& fixed) {
        while (InsertOne(face->points)) {
        }
        SplitLongFace(std::move(face), fixed);
    }

    int added = 0;

  private:
    struct Line {
        Vec3 dir, origin;
        std::list<float> points;
    };

    static Vec3 PointAlong(const Vec3& from, const Vec3& dir, double t) {
        return Narrow({from[0] + t * dir[0], from[1] + t * dir[1], from[2] + t * dir[2]});
    }

    static Vec3 Canonical(Vec3 dir) {
        Normalize(dir);
        for (float& v : dir) {
            if (v > 0.001) return dir;
            if (v < -0.001) return Negate(dir);
            v = 0;
        }
        return {0, 0, 1};
    }

    Line& Find(const Vec3& p1, const Vec3& p2, float& t1, float& t2) {
        const Vec3 dir = Canonical(Sub(p2, p1));
        t1 = static_cast<float>(Dot(p1, dir));
        t2 = static_cast<float>(Dot(p2, dir));
        const Vec3 origin = PointAlong(p1, dir, -t1);
        if (t2 < t1) std::swap(t1, t2);
        uint32_t cell = hash_(origin);
        if (cell > 1023) cell = 1023;
        for (Line& line : chains_[cell]) {
            if (IsSame(line.origin, origin) && IsSame(line.dir, dir)) return line;
        }
        chains_[cell].push_front({dir, origin, {}});
        return chains_[cell].front();
    }

    static bool IsSame(const Vec3& a, const Vec3& b) {
        const Vec3d d = Sub(Widen(a), Widen(b));
        return std::fabs(d[0]) <= 0.001 && std::fabs(d[1]) <= 0.001 && std::fabs(d[2]) <= 0.001;
    }

    static void AddPoint(Line& line, float t) {
        auto at = line.points.begin();
        for (; at != line.points.end(); ++at) {
            if (std::fabs(static_cast<double>(t) - *at) < 0.01) return;
            if (t < *at) break;
        }
        line.points.insert(at, t);
    }

    bool InsertOne(std::vector<Vec3>& ring) {
        for (size_t i = 0; i < ring.size(); ++i) {
            const size_t j = (i + 1) % ring.size();
            float t1 = 0;
            float t2 = 0;
            const Line& line = Find(ring[i], ring[j], t1, t2);
            auto point = line.points.begin();
            while (point != line.points.end() && *point < t1 + 0.01) ++point;
            if (point == line.points.end() || !(*point < t2 - 0.01)) continue;
            ring.insert(ring.begin() + static_cast<std::ptrdiff_t>(j), PointAlong(line.origin, line.dir, *point));
            ++added;
            return true;
        }
        return false;
    }

    GridHash hash_;
    std::array<std::list<Line>, 1024> chains_;
};

}  // namespace k2k::test
