// The search for the widest triple: by trial for common faces, by branch and bound for faces with many corners.
//
// The branch and bound works on runs of consecutive corners. Corners that follow each other lie close together, so the
// box around a run tells well how large a triple with one corner of each of three runs can get. Only triples that come
// within rounding errors of the best are looked at one by one, so the result is that of the trial, to the last bit.
#include "mapread/widest_triple.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "solid/vectors.h"

namespace k2k {

namespace {

// Up to here the trial takes well under a millisecond.
constexpr size_t MaxTrialCorners = 64;

struct Triple {
    double length = -1;
    std::array<int32_t, 3> order{2, 1, 0};  // positions, the highest first
};

// In double, so that triples of equal area are equal for the common coordinates.
double SpannedLength(std::span<const Vec3> corners, const std::array<int32_t, 3>& order) {
    const Vec3d middle = Widen(corners[static_cast<size_t>(order[1])]);
    const Vec3d a = Sub(Widen(corners[static_cast<size_t>(order[0])]), middle);
    const Vec3d b = Sub(middle, Widen(corners[static_cast<size_t>(order[2])]));
    const Vec3d normal = Cross(a, b);
    return std::sqrt(Dot(normal, normal));
}

std::array<int32_t, 3> LowestFirst(const Triple& triple) {
    return {triple.order[2], triple.order[1], triple.order[0]};
}

// A run of consecutive corners and the box around them.
struct Run {
    int32_t first = 0, last = 0;
    Vec3d mins{}, maxs{};
    bool isCorner() const { return first == last; }
};

// Runs as a heap: the halves of run n are 2n and 2n + 1, the whole list is run 1.
class RunTree {
  public:
    explicit RunTree(std::span<const Vec3> corners) : runs_(2 * std::bit_ceil(corners.size())) {
        Build(corners, 1, 0, static_cast<int32_t>(corners.size()) - 1);
    }
    const Run& operator[](size_t n) const { return runs_[n]; }

  private:
    void Build(std::span<const Vec3> corners, size_t n, int32_t first, int32_t last) {
        Run& run = runs_[n];
        run.first = first;
        run.last = last;
        if (run.isCorner()) {
            run.mins = run.maxs = Widen(corners[static_cast<size_t>(first)]);
            return;
        }
        const int32_t middle = first + (last - first) / 2;
        Build(corners, 2 * n, first, middle);
        Build(corners, 2 * n + 1, middle + 1, last);
        for (size_t axis = 0; axis < 3; ++axis) {
            run.mins[axis] = std::min(runs_[2 * n].mins[axis], runs_[2 * n + 1].mins[axis]);
            run.maxs[axis] = std::max(runs_[2 * n].maxs[axis], runs_[2 * n + 1].maxs[axis]);
        }
    }

    std::vector<Run> runs_;
};

struct Interval {
    double low, high;
    double Magnitude() const { return std::max(-low, high); }
};

Interval Difference(const Run& a, const Run& b, size_t axis) {
    return {a.mins[axis] - b.maxs[axis], a.maxs[axis] - b.mins[axis]};
}

Interval Product(const Interval& a, const Interval& b) {
    const std::array<double, 4> ends{a.low * b.low, a.low * b.high, a.high * b.low, a.high * b.high};
    const auto [low, high] = std::minmax_element(ends.begin(), ends.end());
    return {*low, *high};
}

// What a component of the cross product can be at most, in magnitude, rounding included.
double ComponentBound(const Interval& a1, const Interval& b2, const Interval& a2, const Interval& b1) {
    // Each operation, of the measure and of this bound, errs by 2^-53 of its result at most; far more than their sum.
    constexpr double rounding = 64 * std::numeric_limits<double>::epsilon();
    const Interval left = Product(a1, b2);
    const Interval right = Product(a2, b1);
    const double sum = left.Magnitude() + right.Magnitude();
    return std::max(left.high - right.low, right.high - left.low) + sum * rounding;
}

double LengthBound(const Run& high, const Run& middle, const Run& low) {
    std::array<Interval, 3> a{}, b{};
    for (size_t axis = 0; axis < 3; ++axis) {
        a[axis] = Difference(high, middle, axis);
        b[axis] = Difference(middle, low, axis);
    }
    const Vec3d bound{ComponentBound(a[1], b[2], a[2], b[1]), ComponentBound(a[2], b[0], a[0], b[2]),
                      ComponentBound(a[0], b[1], a[1], b[0])};
    const double length = std::sqrt(Dot(bound, bound));
    return std::isnan(length) ? std::numeric_limits<double>::infinity() : length;
}

class BoundedSearch {
  public:
    explicit BoundedSearch(std::span<const Vec3> corners) : corners_(corners), runs_(corners) {}

    Triple Find() {
        Climb();
        Search({1, 1, 1});
        return best_;
    }

  private:
    using RunTriple = std::array<size_t, 3>;  // the run of the highest position first

    struct Branch {
        RunTriple runs{};
        double bound = 0;
    };

    void Try(std::array<int32_t, 3> order) {
        const double length = SpannedLength(corners_, order);
        if (length > best_.length || (length == best_.length && order < best_.order)) best_ = {length, order};
    }

    // A good triple to begin with: moves one corner at a time to where it spans most, until nothing improves.
    void Climb() {
        Try({2, 1, 0});
        double before = -2;
        while (best_.length > before) {
            before = best_.length;
            for (size_t moved = 0; moved < 3; ++moved) TryAllFor(best_.order, moved);
        }
    }

    void TryAllFor(const std::array<int32_t, 3>& start, size_t moved) {
        const std::array<int32_t, 2> kept{start[(moved + 1) % 3], start[(moved + 2) % 3]};
        for (int32_t i = 0; i < static_cast<int32_t>(corners_.size()); ++i) {
            if (i == kept[0] || i == kept[1]) continue;
            std::array<int32_t, 3> order{i, kept[0], kept[1]};
            std::sort(order.rbegin(), order.rend());
            Try(order);
        }
    }

    bool CanHoldTriple(const RunTriple& runs) const {
        return runs_[runs[0]].last > runs_[runs[1]].first && runs_[runs[1]].last > runs_[runs[2]].first;
    }

    // Looks at everything in the three runs that can be as good as the best so far.
    void Search(const RunTriple& runs) {
        const size_t longest = Longest(runs);
        if (runs_[runs[longest]].isCorner()) {
            Try({runs_[runs[0]].first, runs_[runs[1]].first, runs_[runs[2]].first});
            return;
        }
        std::array<Branch, 2> halves{};
        for (size_t half = 0; half < 2; ++half) halves[half] = MakeBranch(runs, longest, half);
        if (halves[1].bound > halves[0].bound) std::swap(halves[0], halves[1]);
        for (const Branch& branch : halves) {
            if (branch.bound >= best_.length) Search(branch.runs);
        }
    }

    Branch MakeBranch(RunTriple runs, size_t split, size_t half) const {
        runs[split] = 2 * runs[split] + half;
        if (!CanHoldTriple(runs)) return {runs, -std::numeric_limits<double>::infinity()};
        return {runs, LengthBound(runs_[runs[0]], runs_[runs[1]], runs_[runs[2]])};
    }

    size_t Longest(const RunTriple& runs) const {
        const auto length = [&](size_t n) { return runs_[runs[n]].last - runs_[runs[n]].first; };
        size_t longest = 0;
        for (size_t n = 1; n < 3; ++n) {
            if (length(n) > length(longest)) longest = n;
        }
        return longest;
    }

    std::span<const Vec3> corners_;
    RunTree runs_;
    Triple best_;
};

}  // namespace

std::array<int32_t, 3> WidestTripleByTrial(std::span<const Vec3> corners) {
    Triple best;
    const auto count = static_cast<int32_t>(corners.size());
    for (int32_t i = 2; i < count; ++i) {
        for (int32_t j = 1; j < i; ++j) {
            for (int32_t k = 0; k < j; ++k) {
                const double length = SpannedLength(corners, {i, j, k});
                if (length > best.length) best = {length, {i, j, k}};
            }
        }
    }
    return LowestFirst(best);
}

std::array<int32_t, 3> WidestTripleByBounds(std::span<const Vec3> corners) {
    return LowestFirst(BoundedSearch(corners).Find());
}

std::array<int32_t, 3> WidestTriple(std::span<const Vec3> corners) {
    return corners.size() <= MaxTrialCorners ? WidestTripleByTrial(corners) : WidestTripleByBounds(corners);
}

}  // namespace k2k
