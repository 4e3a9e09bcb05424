#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "klvtool/command.h"
#include "klvtool/leak_search.h"
#include "klvtool/view_page.h"

namespace klvtool {
namespace {

constexpr double HeadRoom = 1;  // the plan is cut just above the way: the outer roof would hide it

void DrawPlan(const LeakReport& report, const std::string& path) {
    PlanOptions options;
    std::vector<Vec3> shown{{report.bounds.mins}};
    if (report.leak) shown = {report.leak->object.origin, report.leak->hole};
    float top = shown[0][2];
    for (const Vec3& point : shown) top = std::max(top, point[2]);
    if (report.leak) options.cut = double{top} + HeadRoom;
    Plan plan(report.bounds, options);
    plan.DrawFloors(report.faces);
    plan.DrawWalls(report.faces);
    if (report.leak) {
        plan.DrawWay(report.leak->way);
        plan.DrawViewpoint(report.leak->hole);
    }
    const char* ring = report.leak && report.leak->isOutside ? "LEAK: THE OBJECT AT THE RING STANDS OUTSIDE"
                                                             : "LEAK: THE RING IS AT THE HOLE";
    plan.DrawLegend(report.leak ? ring : "SEALED");
    WritePng(path, plan.Finished());
}

// The faces as they stand, without textures; what looks away from the eye is not drawn, so one looks in from outside.
Scene SceneOf(const LeakReport& report, const std::string& name) {
    Scene scene;
    scene.name = name;
    Batch batch;
    batch.name = "faces";
    for (size_t face = 0; face < report.faces.size(); face++) {
        const PlanPolygon& polygon = report.faces[face];
        const auto first = static_cast<uint32_t>(batch.VertexCount());
        for (const Vec3& point : polygon.outline) {
            batch.positions.insert(batch.positions.end(), point.begin(), point.end());
            batch.normals.insert(batch.normals.end(), polygon.normal.begin(), polygon.normal.end());
            batch.regions.push_back(static_cast<float>(face));
        }
        for (uint32_t i = 2; i < polygon.outline.size(); i++) {
            batch.triangles.insert(batch.triangles.end(), {first, first + i, first + i - 1});
        }
    }
    if (batch.VertexCount() != 0) scene.batches.push_back(std::move(batch));
    if (!report.leak) return scene;
    scene.way = report.leak->way;
    const auto place = [](const Vec3& point) { return std::vector<float>(point.begin(), point.end()); };
    const LeakObject& object = report.leak->object;
    scene.entities.push_back({EntityType::Start,
                              {{"position", place(object.origin)},
                               {"angles", std::vector<float>(3)},
                               {"name", object.type + " " + object.name}},
                              {}});
    if (report.leak->isOutside) return scene;
    scene.entities.push_back(
        {EntityType::Sound, {{"position", place(report.leak->hole)}, {"name", std::string("hole")}}, {}});
    return scene;
}

}  // namespace

int RunLeak(Arguments arguments) {
    constexpr std::string_view Valued[] = {"options", "png", "html"};
    const ParsedArguments parsed =
        ParseArguments(arguments, 1, "leak MAP [--options \"OPTIONS\"] [--png OUT.png] [--html OUT.html]", {}, Valued);
    const std::string options = parsed.Has("options") ? parsed.options.at("options") : "";
    const LeakReport report = FindLeak(parsed.names[0], options);
    std::fputs(Describe(report).c_str(), stdout);
    if (parsed.Has("png")) DrawPlan(report, parsed.options.at("png"));
    if (parsed.Has("html")) {
        const std::string name = std::filesystem::path(parsed.names[0]).stem().string();
        SaveFile(parsed.options.at("html"), MakeViewPage(SceneOf(report, ToUtf8(name))));
    }
    return report.leak || report.objects == 0 ? 1 : 0;
}

}  // namespace klvtool
