// Rays against meshes: building the tree, and shadow rays per second beside a test of every triangle and, where it is
// installed, beside Embree, in the same run and over the same rays. K2K_BENCH_LEVEL names a mesh level of one's own.
//
// Shadow rays pass the triangles that they meet from behind. Embree is given a filter that lets them pass (to_embree),
// so that both answer one question; without it rays stop at either side, earlier (to_embree_unculled).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <ctime>
#include <functional>
#include <limits>
#include <random>
#include <span>

#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "raytree/ray_scene.h"
#include "raytree/ray_tree.h"
#include "solid/vectors.h"

#if defined(K2K_HAVE_EMBREE)
#include <embree3/rtcore.h>
#endif

namespace k2k {
namespace {

using Triangle = std::array<uint32_t, 3>;

struct TriangleSoup {
    std::vector<Vec3> vertices;
    std::vector<Triangle> triangles;
    std::vector<int32_t> surfaces;  // of the triangles
};

struct Segment {
    Vec3 start, end;
    int32_t surface;  // that the start belongs to
};

// Hills over a square of cells x cells quads. Triangles face downwards, into the ground, as those of levels do.
TriangleSoup Terrain(uint32_t cells) {
    constexpr float CellSize = 32;
    TriangleSoup soup;
    for (uint32_t y = 0; y <= cells; y++) {
        for (uint32_t x = 0; x <= cells; x++) {
            const double hills = std::sin(0.31 * x) * std::cos(0.23 * y) * 60 + std::sin(0.05 * (x + 2.0 * y)) * 200;
            soup.vertices.push_back({CellSize * static_cast<float>(x), CellSize * static_cast<float>(y),
                                     static_cast<float>(hills) + 0.37F * static_cast<float>((x * 7 + y * 13) % 11)});
        }
    }
    for (uint32_t y = 0; y < cells; y++) {
        for (uint32_t x = 0; x < cells; x++) {
            const uint32_t a = y * (cells + 1) + x, b = a + 1, c = a + cells + 2, d = a + cells + 1;
            soup.triangles.push_back({a, c, b});
            soup.triangles.push_back({a, d, c});
        }
    }
    return soup;
}

// One mesh for each 10,000 triangles, as vertex numbers have 16 bits.
void MakeMeshesOf(const TriangleSoup& soup) {
    constexpr size_t TrianglesOfMesh = 10000;
    Geometry().Clear();
    for (size_t i = 0; i < soup.triangles.size(); i++) {
        if (i % TrianglesOfMesh == 0) Geometry().meshes.emplace_back().materials.emplace_back();
        CMesh& mesh = Geometry().meshes.back();
        MeshTriangle triangle;
        for (size_t c = 0; c < 3; c++) {
            triangle.vertices[c] = static_cast<int16_t>(mesh.vertices.size());
            mesh.vertices.emplace_back().position = soup.vertices[soup.triangles[i][c]];
        }
        triangle.surface = static_cast<int32_t>(i);
        mesh.triangles.push_back(triangle);
    }
}

// The triangles of the level in work, without sky: those that stop rays.
TriangleSoup SoupOfMeshes() {
    TriangleSoup soup;
    for (const CMesh& mesh : Geometry().meshes) {
        const auto base = static_cast<uint32_t>(soup.vertices.size());
        for (const MeshVertex& vertex : mesh.vertices) soup.vertices.push_back(vertex.position);
        for (const MeshTriangle& triangle : mesh.triangles) {
            if ((mesh.materials[static_cast<size_t>(triangle.material)].flags & TextureSky) != 0) continue;
            Triangle corners{};
            for (size_t c = 0; c < 3; c++) corners[c] = base + static_cast<uint32_t>(triangle.vertices[c]);
            soup.triangles.push_back(corners);
            soup.surfaces.push_back(triangle.surface);
        }
    }
    return soup;
}

// Rays as lighting casts them: runs of neighbouring samples of one triangle, one unit off it in the open,
// to a lamp in reach. Lamps are off all triangles, as a ray that ends on one is a matter of rounding.
std::vector<Segment> ShadowRays(const TriangleSoup& soup, size_t count, const Vec3& lampOffset, bool inRuns) {
    constexpr size_t RunLength = 64;
    constexpr double LampReach = 500;
    std::mt19937 random(5);
    std::uniform_real_distribution<float> weight(0, 1);
    const auto pointOn = [&](const Triangle& t, const Vec3& offset) {
        const float a = weight(random), b = weight(random) * (1 - a);
        const Vec3 &v0 = soup.vertices[t[0]], &v1 = soup.vertices[t[1]], &v2 = soup.vertices[t[2]];
        return Add(Add(v0, offset), Add(Scale(Sub(v1, v0), a), Scale(Sub(v2, v0), b)));
    };
    const auto anyTriangle = [&]() -> const Triangle& { return soup.triangles[random() % soup.triangles.size()]; };
    const auto normalOf = [&](const Triangle& t) {
        const Vec3& v0 = soup.vertices[t[0]];
        Vec3 normal = Cross(Sub(soup.vertices[t[1]], v0), Sub(soup.vertices[t[2]], v0));
        Normalize(normal);
        return normal;
    };
    std::vector<Vec3> lamps;
    for (size_t i = 0; i < soup.triangles.size() / 8; i++) {
        const Triangle& triangle = anyTriangle();
        lamps.push_back(pointOn(triangle, Sub(lampOffset, normalOf(triangle))));
    }
    std::vector<Segment> rays;
    while (rays.size() < count) {
        const Triangle& triangle = anyTriangle();
        const Vec3 normal = normalOf(triangle);
        if (normal == Vec3{}) continue;
        const Vec3 lamp = lamps[random() % lamps.size()];
        const Vec3 way = Sub(lamp, soup.vertices[triangle[0]]);
        if (Dot(way, way) > LampReach * LampReach || Dot(way, normal) > 0) continue;
        for (size_t i = 0; i < RunLength; i++) {
            rays.push_back({pointOn(triangle, Negate(normal)), lamp,
                            soup.surfaces[static_cast<size_t>(&triangle - soup.triangles.data())]});
        }
    }
    if (!inRuns) std::shuffle(rays.begin(), rays.end(), random);
    return rays;
}

double ThreadSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + 1e-9 * static_cast<double>(now.tv_nsec);
}

// Of this thread alone: a busy machine does not count.
double SecondsOf(const std::function<void()>& work) {
    const double begin = ThreadSeconds();
    work();
    return ThreadSeconds() - begin;
}

// How many of the rays are blocked.
size_t CountByTree(std::span<const Segment> rays, bool culling) {
    std::vector<CollisionFace> faces;
    size_t blocked = 0;
    for (const Segment& ray : rays) {
        QueryRay(ray.start, ray.end, culling, false, true, faces);
        blocked += faces.empty() ? 0 : 1;
    }
    return blocked;
}

// The same without asking for the face.
size_t CountBlocked(std::span<const Segment> rays) {
    return static_cast<size_t>(
        std::count_if(rays.begin(), rays.end(), [](const Segment& s) { return IsRayBlocked(s.start, s.end, -1); }));
}

// As radiosity asks: the start's own surface does not count when it comes first.
size_t CountBlockedByOthers(std::span<const Segment> rays) {
    return static_cast<size_t>(std::count_if(rays.begin(), rays.end(),
                                             [](const Segment& s) { return IsRayBlocked(s.start, s.end, s.surface); }));
}

// Every triangle until one is hit.
size_t CountByEveryTriangle(const TriangleSoup& soup, std::span<const Segment> rays) {
    size_t blocked = 0;
    for (const Segment& ray : rays) {
        Vec3 direction = Sub(ray.end, ray.start);
        const float length = Normalize(direction);
        for (const auto& [a, b, c] : soup.triangles) {
            const Vec3 &v0 = soup.vertices[a], e1 = Sub(soup.vertices[b], v0), e2 = Sub(soup.vertices[c], v0);
            const Vec3 p = Cross(direction, e2);
            const double determinant = Dot(e1, p);
            if (determinant < 1e-06) continue;
            const Vec3 t = Sub(ray.start, v0);
            const double u = Dot(t, p);
            if (u < 0 || u > determinant) continue;
            const Vec3 q = Cross(t, e1);
            const double v = Dot(direction, q), along = Dot(e2, q);
            if (v < 0 || u + v > determinant || along < 0 || along / determinant >= length) continue;
            blocked++;
            break;
        }
    }
    return blocked;
}

#if defined(K2K_HAVE_EMBREE)
void PassBackFaces(const RTCFilterFunctionNArguments* arguments) {
    const auto& ray = *reinterpret_cast<const RTCRay*>(arguments->ray);
    const auto& hit = *reinterpret_cast<const RTCHit*>(arguments->hit);
    if (ray.dir_x * hit.Ng_x + ray.dir_y * hit.Ng_y + ray.dir_z * hit.Ng_z > 0) arguments->valid[0] = 0;
}

class EmbreeScene {
  public:
    EmbreeScene(const TriangleSoup& soup, bool culling) : device_(rtcNewDevice("threads=1,set_affinity=0")) {
        scene_ = rtcNewScene(device_);
        RTCGeometry geometry = rtcNewGeometry(device_, RTC_GEOMETRY_TYPE_TRIANGLE);
        Fill(geometry, RTC_BUFFER_TYPE_VERTEX, RTC_FORMAT_FLOAT3, soup.vertices);
        Fill(geometry, RTC_BUFFER_TYPE_INDEX, RTC_FORMAT_UINT3, soup.triangles);
        if (culling) rtcSetGeometryOccludedFilterFunction(geometry, PassBackFaces);
        rtcCommitGeometry(geometry);
        rtcAttachGeometry(scene_, geometry);
        rtcReleaseGeometry(geometry);
        rtcCommitScene(scene_);
    }
    EmbreeScene(const EmbreeScene&) = delete;
    EmbreeScene& operator=(const EmbreeScene&) = delete;
    ~EmbreeScene() {
        rtcReleaseScene(scene_);
        rtcReleaseDevice(device_);
    }

    size_t CountBlocked(std::span<const Segment> rays) const {
        RTCIntersectContext context;
        rtcInitIntersectContext(&context);
        size_t blocked = 0;
        for (const Segment& segment : rays) {
            Vec3 direction = Sub(segment.end, segment.start);
            RTCRay ray{};
            ray.tfar = Normalize(direction);
            ray.org_x = segment.start[0], ray.org_y = segment.start[1], ray.org_z = segment.start[2];
            ray.dir_x = direction[0], ray.dir_y = direction[1], ray.dir_z = direction[2];
            ray.mask = ~0U;
            rtcOccluded1(scene_, &context, &ray);
            blocked += ray.tfar < 0 ? 1 : 0;
        }
        return blocked;
    }

  private:
    template <typename T>
    static void Fill(RTCGeometry geometry, RTCBufferType type, RTCFormat format, const std::vector<T>& rows) {
        void* buffer = rtcSetNewGeometryBuffer(geometry, type, 0, format, sizeof(T), rows.size());
        std::copy(rows.begin(), rows.end(), static_cast<T*>(buffer));
    }

    RTCDevice device_;
    RTCScene scene_;
};

double EmbreeBuildSeconds(const TriangleSoup& soup) {
    return SecondsOf([&] { EmbreeScene scene(soup, false); });
}
#endif

void BuildsTheTree(benchmark::State& state) {
    const TriangleSoup soup =
        Terrain(static_cast<uint32_t>(std::lround(std::sqrt(static_cast<double>(state.range(0)) / 2))));
    const Opcode::MeshInterface mesh{soup.vertices, soup.triangles};
    for (auto _ : state) {
        Opcode::Model model;
        benchmark::DoNotOptimize(model.Build({&mesh, {}, state.range(1) != 0}));
    }
    state.counters["triangles"] = static_cast<double>(soup.triangles.size());
#if defined(K2K_HAVE_EMBREE)
    state.counters["embree_ms"] = 1000 * EmbreeBuildSeconds(soup);
#endif
}
BENCHMARK(BuildsTheTree)
    ->ArgNames({"triangles", "wide"})
    ->Args({1000000, 0})
    ->Args({1000000, 1})
    ->Unit(benchmark::kMillisecond);

// The least time of several rounds, and what came out.
struct Timing {
    double seconds = std::numeric_limits<double>::infinity();
    size_t blocked = 0;

    void Take(const std::function<size_t()>& count) {
        seconds = std::min(seconds, SecondsOf([&] { blocked = count(); }));
    }
};

// Times the rays of a scene whose meshes are in place, by all means in turn.
void CompareShadowRays(benchmark::State& state, const Vec3& lampOffset, bool inRuns) {
    const TriangleSoup soup = SoupOfMeshes();
    const std::vector<Segment> rays = ShadowRays(soup, 65536, lampOffset, inRuns);
    const std::span<const Segment> few(rays.data(), std::max<size_t>(64, 2000000 / soup.triangles.size()) / 64 * 64);
    BuildRayScene();
    Timing any, others, face, either, brute;
#if defined(K2K_HAVE_EMBREE)
    const EmbreeScene culled(soup, true), unculled(soup, false);
    Timing embree, embreeEither;
#endif
    for (auto _ : state) {
        any.Take([&] { return CountBlocked(rays); });
        others.Take([&] { return CountBlockedByOthers(rays); });
        face.Take([&] { return CountByTree(rays, true); });
        either.Take([&] { return CountByTree(rays, false); });
        brute.Take([&] { return CountByEveryTriangle(soup, few); });
#if defined(K2K_HAVE_EMBREE)
        embree.Take([&] { return culled.CountBlocked(rays); });
        embreeEither.Take([&] { return unculled.CountBlocked(rays); });
#endif
    }
    if (any.blocked != face.blocked) state.SkipWithError("the two queries disagree");
    const auto count = static_cast<double>(rays.size());
    state.counters["triangles"] = static_cast<double>(soup.triangles.size());
    state.counters["blocked"] = static_cast<double>(any.blocked) / count;
    state.counters["rays_per_s"] = count / any.seconds;
    state.counters["to_brute"] = count / any.seconds * brute.seconds / static_cast<double>(few.size());
#if defined(K2K_HAVE_EMBREE)
    state.counters["embree_blocked"] = static_cast<double>(embree.blocked) / count;
    state.counters["to_embree"] = embree.seconds / any.seconds;
    state.counters["to_embree_unculled"] = embreeEither.seconds / any.seconds;
    state.counters["others_to_embree"] = embree.seconds / others.seconds;
    state.counters["first_face_to_embree"] = embree.seconds / face.seconds;
    state.counters["first_of_either_to_embree"] = embreeEither.seconds / either.seconds;
#endif
    ReleaseRayScene();
    Geometry().Clear();
}

constexpr Vec3 AboveTerrain{0, 0, 200};
constexpr Vec3 InsideARoom{0, 0, 60};

void ShadowRaysOnTerrain(benchmark::State& state) {
    MakeMeshesOf(Terrain(static_cast<uint32_t>(state.range(0))));
    CompareShadowRays(state, AboveTerrain, state.range(1) != 0);
}
BENCHMARK(ShadowRaysOnTerrain)
    ->ArgNames({"cells", "runs"})
    ->ArgsProduct({{32, 512}, {0, 1}})
    ->Unit(benchmark::kMillisecond);

void ShadowRaysOnALevel(benchmark::State& state) {
    const char* path = std::getenv("K2K_BENCH_LEVEL");
    if (path == nullptr) return state.SkipWithError("K2K_BENCH_LEVEL names no mesh level");
    CFileKLV file(path);
    if (!file.Open(true) || !file.Load()) return state.SkipWithError("not a level");
    file.Close();
    CompareShadowRays(state, InsideARoom, state.range(0) != 0);
}
BENCHMARK(ShadowRaysOnALevel)->ArgName("runs")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace k2k
