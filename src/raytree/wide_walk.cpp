// The eight-lane tests, in AVX2 without fused multiply-add: every operation rounds as its scalar counterpart does.
#include "raytree/wide_walk.h"

#include <bit>

#include "raytree/segment_test.h"

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace k2k::Opcode {

#if defined(__x86_64__)

#define K2K_AVX2 [[gnu::target("avx2")]]

namespace {

struct Floats3 {
    __m128 x, y, z;
};
struct Doubles3 {
    __m256d x, y, z;
};

// A ray's slabs on all lanes.
struct WideSlab {
    __m256 enterOrigin, leaveOrigin, inverse;
    size_t enterSide, leaveSide;
};
struct WideSlabs {
    WideSlab x, y, z;
    __m256 length;
};

K2K_AVX2 inline WideSlab Widen8(const RaySlab& s) {
    return {_mm256_set1_ps(s.enterOrigin), _mm256_set1_ps(s.leaveOrigin), _mm256_set1_ps(s.inverse), s.enterSide,
            s.leaveSide};
}

// Cuts the part of the ray from first to last down to what lies between two sides of the grown boxes.
K2K_AVX2 inline void CutToSlab(const WideSlab& s, const WideNode& node, __m256& first, __m256& last) {
    const __m256 enter = _mm256_load_ps(node.sides[s.enterSide].data());
    const __m256 leave = _mm256_load_ps(node.sides[s.leaveSide].data());
    first = _mm256_max_ps(first, _mm256_mul_ps(_mm256_sub_ps(enter, s.enterOrigin), s.inverse));
    last = _mm256_min_ps(last, _mm256_mul_ps(_mm256_sub_ps(leave, s.leaveOrigin), s.inverse));
}

// The children whose boxes the ray meets, one bit each. After Kay and Kajiya, "Ray Tracing Complex Scenes" (1986).
K2K_AVX2 inline uint32_t MeetingChildren(const WideSlabs& s, const WideNode& node) {
    __m256 first = _mm256_setzero_ps(), last = s.length;
    CutToSlab(s.x, node, first, last);
    CutToSlab(s.y, node, first, last);
    CutToSlab(s.z, node, first, last);
    return static_cast<uint32_t>(_mm256_movemask_ps(_mm256_cmp_ps(first, last, _CMP_LE_OQ)));
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

// The triangles that the ray meets, one bit each.
template <bool Culling>
K2K_AVX2 inline uint32_t MeetingTriangles(const Ray& ray, float length, const TrianglePacket& packet) {
    const __m256d zero = _mm256_setzero_pd();
    const Floats3 direction = Spread4(ray.direction), e1 = Load4(packet.e1), e2 = Load4(packet.e2);
    const Floats3 p = Cross4(direction, e2);
    const Doubles3 wideP = Widen4(p);
    const __m256d determinant = Dot4(Widen4(e1), wideP);
    __m256d hits = IsFaced<Culling>(determinant);
    const Floats3 t = Sub4(Spread4(ray.origin), Load4(packet.v0));
    const __m256d one = _mm256_set1_pd(1.0);
    const __m256d full = Culling ? determinant : one;  // what u + v can be at most
    const __m256d inverse = Culling ? one : _mm256_div_pd(one, determinant);
    const __m256d u = Scaled<Culling>(Dot4(Widen4(t), wideP), inverse);
    hits = Both(hits, Both(Where<_CMP_GE_OQ>(u, zero), Where<_CMP_LE_OQ>(u, full)));
    const Doubles3 q = Widen4(Cross4(t, e1));
    const __m256d v = Scaled<Culling>(Dot4(Widen4(direction), q), inverse);
    hits = Both(hits, Both(Where<_CMP_GE_OQ>(v, zero), Where<_CMP_LE_OQ>(_mm256_add_pd(u, v), full)));
    if (_mm256_movemask_pd(hits) == 0) return 0;
    const __m256d distance = Scaled<Culling>(Dot4(Widen4(e2), q), inverse);
    hits = Both(hits, Where<_CMP_GE_OQ>(distance, zero));
    const __m256d unscaled = Culling ? _mm256_mul_pd(distance, _mm256_div_pd(one, determinant)) : distance;
    const __m128 inReach = _mm_cmplt_ps(_mm256_cvtpd_ps(unscaled), _mm_set1_ps(length));
    return static_cast<uint32_t>(_mm256_movemask_pd(hits) & _mm_movemask_ps(inReach));
}

}  // namespace

bool CanWalkWideTrees() {
    static const bool can = __builtin_cpu_supports("avx2") != 0;
    return can;
}

template <bool Culling>
K2K_AVX2 void WideWalk::FindPacket() {
    const WideSlabs slabs{Widen8(slabs_[0]), Widen8(slabs_[1]), Widen8(slabs_[2]), _mm256_set1_ps(lengthGrown_)};
    const WideNode* nodes = tree_.nodes();
    const TrianglePacket* packets = tree_.packets();
    uint32_t* top = top_;
    while (top != stack_) {
        uint32_t word = *--top;
        while (!IsTriangle(word)) {
            const WideNode& node = nodes[ChildIndex(word)];
            uint32_t met = MeetingChildren(slabs, node);
            if (met == 0) break;
            for (; (met & (met - 1)) != 0; met &= met - 1) *top++ = node.children[std::countr_zero(met)];
            word = node.children[std::countr_zero(met)];
        }
        if (!IsTriangle(word)) continue;
        packet_ = &packets[ChildIndex(word)];
        lanes_ = MeetingTriangles<Culling>(ray_, length_, *packet_);
        if (lanes_ != 0) break;
    }
    top_ = top;
}

#else

bool CanWalkWideTrees() {
    return false;
}

template <bool Culling>
void WideWalk::FindPacket() {}

#endif

WideWalk::WideWalk(const WideTree& tree, const Ray& ray, float length, float margin, bool culling, uint32_t* stack)
    : tree_(tree),
      ray_(ray),
      length_(length),
      culling_(culling),
      lengthGrown_(length + margin),
      stack_(stack),
      top_(stack) {
    // In place of what lies behind a division by zero: far behind all rays.
    constexpr float Far = 1e30F;
    for (size_t k = 0; k < 3; k++) {
        const float origin = ray.origin[k], direction = ray.direction[k];
        if (direction < 0) {
            slabs_[k] = {origin - margin, origin + margin, 1.0F / direction, k + 3, k};
        } else {
            slabs_[k] = {origin + margin, origin - margin, direction == 0 ? Far : 1.0F / direction, k, k + 3};
        }
    }
    *top_++ = 0;
}

bool WideWalk::Next(Proposal& proposal) {
    if (lanes_ == 0) culling_ ? FindPacket<true>() : FindPacket<false>();
    if (lanes_ == 0) return false;
    const auto lane = static_cast<size_t>(std::countr_zero(lanes_));
    lanes_ &= lanes_ - 1;
    proposal = {packet_->triangle[lane], packet_->parent[lane]};
    return true;
}

}  // namespace k2k::Opcode
