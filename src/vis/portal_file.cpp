// Reader of the interim portal file: a text of convex openings between numbered regions.
#include "vis/portal_file.h"

#include <cstdio>
#include <memory>
#include <utility>

#include "driver/build_log.h"

namespace k2k {
namespace {

constexpr int32_t MinPortalPoints = 3;  // fewer have no plane

struct CloseFile {
    void operator()(std::FILE* file) const {
        if (file != stdin) std::fclose(file);
    }
};
using TextFile = std::unique_ptr<std::FILE, CloseFile>;

TextFile OpenPortalFile(const std::string& path) {
    if (path == "-") return TextFile(stdin);
    TextFile file(std::fopen(path.c_str(), "r"));
    if (!file) FatalError(" \nCan't read interim file %s\n", path.c_str());
    return file;
}

struct FileHead {
    int32_t regionCount = 0;
    int32_t portalCount = 0;
};

FileHead ReadHead(std::FILE* file, int32_t regionCount) {
    char word[80];
    FileHead head;
    const int fields = std::fscanf(file, "%79s\n%i\n%i\n", word, &head.regionCount, &head.portalCount);
    if (fields != 3 || head.portalCount < 0) FatalError("E116");
    // Portal number v stands for row v + 1 of the level's regions; with another count no row can be trusted.
    if (head.regionCount != regionCount) FatalError("E11A");
    return head;
}

struct FilePortal {
    int32_t regionA = 0;
    int32_t regionB = 0;
    PolygonRef polygon;
};

PolygonRef ReadPoints(std::FILE* file, int32_t count) {
    std::vector<Vec3d> points(static_cast<size_t>(count));
    for (Vec3d& point : points) {
        if (std::fscanf(file, "(%lf %lf %lf ) ", &point[0], &point[1], &point[2]) != 3) FatalError("E11B");
    }
    return MakePolygon(std::move(points));
}

FilePortal ReadPortal(std::FILE* file, int32_t regionCount) {
    FilePortal portal;
    int32_t pointCount = 0;
    if (std::fscanf(file, "%i %i %i ", &pointCount, &portal.regionA, &portal.regionB) != 3) FatalError("E118");
    if (pointCount > MaxPolygonPoints || pointCount < MinPortalPoints) FatalError("E119");
    for (const int32_t region : {portal.regionA, portal.regionB}) {
        if (region < 0 || region >= regionCount) FatalError("E11A");
    }
    portal.polygon = ReadPoints(file, pointCount);
    // White space up to the next line; at the end of the file there is none, which is as good.
    if (std::fscanf(file, "\n") == EOF) std::clearerr(file);
    return portal;
}

class GraphBuilder {
  public:
    explicit GraphBuilder(int32_t regionCount) : lists_(static_cast<size_t>(regionCount)) {}

    // Both directions. The polygon's own normal looks from b into a, so the record of a leads against it.
    void Add(const FilePortal& portal) {
        const CPlane plane = PolygonPlane(*portal.polygon);
        AddRecord(portal.regionA, portal.regionB, FlippedPlane(plane), portal.polygon);
        AddRecord(portal.regionB, portal.regionA, plane, portal.polygon);
    }
    VisGraph Finish() { return VisGraph(std::move(portals_), lists_); }

  private:
    void AddRecord(int32_t from, int32_t to, const CPlane& plane, const PolygonRef& polygon) {
        std::vector<int32_t>& list = lists_[static_cast<size_t>(from)];
        if (list.size() >= MaxRegionPortals) FatalError(" \nE11c: Map size - region with too many portals");
        list.push_back(static_cast<int32_t>(portals_.size()));
        VisPortal& record = portals_.emplace_back();
        record.plane = plane;
        record.region = to;
        record.polygon = polygon;
    }

    std::vector<VisPortal> portals_;
    std::vector<std::vector<int32_t>> lists_;
};

}  // namespace

VisGraph ReadPortalFile(const std::string& path, int32_t regionCount) {
    const TextFile file = OpenPortalFile(path);
    const FileHead head = ReadHead(file.get(), regionCount);
    BuildLog(" \nGenerating %i portals ...", head.portalCount);
    GraphBuilder builder(regionCount);
    for (int32_t i = 0; i < head.portalCount; ++i) builder.Add(ReadPortal(file.get(), regionCount));
    return builder.Finish();
}

}  // namespace k2k
