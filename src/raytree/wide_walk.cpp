// The eight-lane tests, in AVX2 without fused multiply-add: every operation rounds as its scalar counterpart does.
#include "raytree/wide_walk.h"

#include <bit>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace k2k::Opcode {

#if defined(__x86_64__)

#define K2K_AVX2 [[gnu::target("avx2")]]

namespace {

struct Lanes3 {
    __m256 x, y, z;
};
struct Floats3 {
    __m128 x, y, z;
};
struct Doubles3 {
    __m256d x, y, z;
};

K2K_AVX2 inline Lanes3 Spread8(const Vec3& v) {
    return {_mm256_set1_ps(v[0]), _mm256_set1_ps(v[1]), _mm256_set1_ps(v[2])};
}

K2K_AVX2 inline Lanes3 Load8(const std::array<WideNode::Lanes, 3>& v) {
    return {_mm256_load_ps(v[0].data()), _mm256_load_ps(v[1].data()), _mm256_load_ps(v[2].data())};
}

K2K_AVX2 inline __m256 Magnitude(__m256 v) {
    return _mm256_andnot_ps(_mm256_set1_ps(-0.0F), v);
}

// Lanes where |a| > b.
K2K_AVX2 inline __m256 Exceeds(__m256 a, __m256 b) {
    return _mm256_cmp_ps(Magnitude(a), b, _CMP_GT_OQ);
}

K2K_AVX2 inline __m256 CrossTerm(__m256 a, __m256 b, __m256 c, __m256 d) {
    return _mm256_sub_ps(_mm256_mul_ps(a, b), _mm256_mul_ps(c, d));
}

K2K_AVX2 inline __m256 ReachTerm(__m256 a, __m256 b, __m256 c, __m256 d) {
    return _mm256_add_ps(_mm256_mul_ps(a, b), _mm256_mul_ps(c, d));
}

struct WideSegment {
    Lanes3 half, center, absHalf;
};

K2K_AVX2 inline WideSegment Widen8(const Segment& s) {
    return {Spread8(s.half), Spread8(s.center), Spread8(s.absHalf)};
}

constexpr uint32_t AllLanes = (1U << WideNode::Width) - 1;

// The children whose boxes the segment meets, one bit each: MeetsBox eight times.
K2K_AVX2 inline uint32_t MeetingChildren(const WideSegment& s, const WideNode& node) {
    const Lanes3 center = Load8(node.center), e = Load8(node.extents);
    const __m256 dx = _mm256_sub_ps(s.center.x, center.x);
    const __m256 dy = _mm256_sub_ps(s.center.y, center.y);
    const __m256 dz = _mm256_sub_ps(s.center.z, center.z);
    __m256 misses = Exceeds(dx, _mm256_add_ps(e.x, s.absHalf.x));
    misses = _mm256_or_ps(misses, Exceeds(dy, _mm256_add_ps(e.y, s.absHalf.y)));
    misses = _mm256_or_ps(misses, Exceeds(dz, _mm256_add_ps(e.z, s.absHalf.z)));
    misses = _mm256_or_ps(
        misses, Exceeds(CrossTerm(s.half.y, dz, s.half.z, dy), ReachTerm(e.y, s.absHalf.z, e.z, s.absHalf.y)));
    misses = _mm256_or_ps(
        misses, Exceeds(CrossTerm(s.half.z, dx, s.half.x, dz), ReachTerm(e.x, s.absHalf.z, e.z, s.absHalf.x)));
    misses = _mm256_or_ps(
        misses, Exceeds(CrossTerm(s.half.x, dy, s.half.y, dx), ReachTerm(e.x, s.absHalf.y, e.y, s.absHalf.x)));
    return static_cast<uint32_t>(_mm256_movemask_ps(misses)) ^ AllLanes;
}

K2K_AVX2 inline Floats3 Spread4(const Vec3& v) {
    return {_mm_set1_ps(v[0]), _mm_set1_ps(v[1]), _mm_set1_ps(v[2])};
}

K2K_AVX2 inline Floats3 Load4(const std::array<TrianglePacket::Lanes, 3>& v) {
    return {_mm_load_ps(v[0].data()), _mm_load_ps(v[1].data()), _mm_load_ps(v[2].data())};
}

K2K_AVX2 inline Floats3 Sub4(const Floats3& a, const Floats3& b) {
    return {_mm_sub_ps(a.x, b.x), _mm_sub_ps(a.y, b.y), _mm_sub_ps(a.z, b.z)};
}

K2K_AVX2 inline Floats3 Cross4(const Floats3& a, const Floats3& b) {
    return {_mm_sub_ps(_mm_mul_ps(a.y, b.z), _mm_mul_ps(a.z, b.y)),
            _mm_sub_ps(_mm_mul_ps(a.z, b.x), _mm_mul_ps(a.x, b.z)),
            _mm_sub_ps(_mm_mul_ps(a.x, b.y), _mm_mul_ps(a.y, b.x))};
}

K2K_AVX2 inline Doubles3 Widen4(const Floats3& v) {
    return {_mm256_cvtps_pd(v.x), _mm256_cvtps_pd(v.y), _mm256_cvtps_pd(v.z)};
}

K2K_AVX2 inline __m256d Dot4(const Doubles3& a, const Doubles3& b) {
    return _mm256_add_pd(_mm256_add_pd(_mm256_mul_pd(a.x, b.x), _mm256_mul_pd(a.y, b.y)), _mm256_mul_pd(a.z, b.z));
}

template <int Comparison>
K2K_AVX2 inline __m256d Where(__m256d a, __m256d b) {
    return _mm256_cmp_pd(a, b, Comparison);
}

K2K_AVX2 inline __m256d Both(__m256d a, __m256d b) {
    return _mm256_and_pd(a, b);
}

// The lanes whose determinant is large enough, on the front side or on either.
template <bool Culling>
K2K_AVX2 inline __m256d IsFaced(__m256d determinant) {
    const __m256d faced = Where<_CMP_GE_OQ>(determinant, _mm256_set1_pd(DeterminantEpsilon));
    if (Culling) return faced;
    return _mm256_or_pd(faced, Where<_CMP_LE_OQ>(determinant, _mm256_set1_pd(-DeterminantEpsilon)));
}

// With culling, u and v stay in the determinant's scale, as in the test of one triangle.
template <bool Culling>
K2K_AVX2 inline __m256d Scaled(__m256d v, __m256d inverse) {
    return Culling ? v : _mm256_mul_pd(v, inverse);
}

// The triangles that the ray's line meets ahead of its origin, one bit each.
template <bool Culling>
K2K_AVX2 inline uint32_t MeetingTriangles(const Ray& ray, const TrianglePacket& packet) {
    const __m256d zero = _mm256_setzero_pd();
    const Floats3 direction = Spread4(ray.direction), e1 = Load4(packet.e1), e2 = Load4(packet.e2);
    const Floats3 p = Cross4(direction, e2);
    const Doubles3 wideP = Widen4(p);
    const __m256d determinant = Dot4(Widen4(e1), wideP);
    __m256d hits = IsFaced<Culling>(determinant);
    if (_mm256_movemask_pd(hits) == 0) return 0;
    const Floats3 t = Sub4(Spread4(ray.origin), Load4(packet.v0));
    const __m256d one = _mm256_set1_pd(1.0);
    const __m256d full = Culling ? determinant : one;  // what u + v can be at most
    const __m256d inverse = Culling ? one : _mm256_div_pd(one, determinant);
    const __m256d u = Scaled<Culling>(Dot4(Widen4(t), wideP), inverse);
    hits = Both(hits, Both(Where<_CMP_GE_OQ>(u, zero), Where<_CMP_LE_OQ>(u, full)));
    if (_mm256_movemask_pd(hits) == 0) return 0;
    const Doubles3 q = Widen4(Cross4(t, e1));
    const __m256d v = Scaled<Culling>(Dot4(Widen4(direction), q), inverse);
    hits = Both(hits, Both(Where<_CMP_GE_OQ>(v, zero), Where<_CMP_LE_OQ>(_mm256_add_pd(u, v), full)));
    hits = Both(hits, Where<_CMP_GE_OQ>(Scaled<Culling>(Dot4(Widen4(e2), q), inverse), zero));
    return static_cast<uint32_t>(_mm256_movemask_pd(hits));
}

}  // namespace

bool CanWalkWideTrees() {
    static const bool can = __builtin_cpu_supports("avx2") != 0;
    return can;
}

K2K_AVX2 bool MeetsAllLanes(const Segment& segment, std::span<const WideNode> nodes) {
    const WideSegment wide = Widen8(segment);
    for (const WideNode& node : nodes) {
        if (MeetingChildren(wide, node) != AllLanes) return false;
    }
    return true;
}

template <bool Culling>
K2K_AVX2 void WideWalk::FindPacket() {
    const WideSegment segment = Widen8(segment_);
    while (top_ != stack_) {
        uint32_t word = *--top_;
        while (!IsTriangle(word)) {
            const WideNode& node = tree_.nodes()[ChildIndex(word)];
            uint32_t met = MeetingChildren(segment, node);
            if (met == 0) break;
            for (; (met & (met - 1)) != 0; met ^= std::bit_floor(met)) {
                *top_++ = node.children[static_cast<size_t>(std::bit_width(met) - 1)];
            }
            word = node.children[static_cast<size_t>(std::countr_zero(met))];
        }
        if (!IsTriangle(word)) continue;
        packet_ = &tree_.packets()[ChildIndex(word)];
        lanes_ = MeetingTriangles<Culling>(ray_, *packet_);
        if (lanes_ != 0) return;
    }
}

#else

bool CanWalkWideTrees() {
    return false;
}

bool MeetsAllLanes(const Segment& /*segment*/, std::span<const WideNode> /*nodes*/) {
    return false;
}

template <bool Culling>
void WideWalk::FindPacket() {}

#endif

bool WideWalk::Next(Proposal& proposal) {
    if (lanes_ == 0) culling_ ? FindPacket<true>() : FindPacket<false>();
    if (lanes_ == 0) return false;
    const auto lane = static_cast<size_t>(std::countr_zero(lanes_));
    lanes_ &= lanes_ - 1;
    proposal = {packet_->triangle[lane], packet_->parent[lane]};
    return true;
}

}  // namespace k2k::Opcode
