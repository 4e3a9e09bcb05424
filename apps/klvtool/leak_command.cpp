#include <algorithm>
#include <cstdio>

#include "klvtool/command.h"
#include "klvtool/leak_search.h"

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
    plan.DrawLegend(report.leak ? "LEAK: THE RING IS AT THE HOLE" : "SEALED");
    WritePng(path, plan.Finished());
}

}  // namespace

int RunLeak(Arguments arguments) {
    constexpr std::string_view Valued[] = {"options", "png"};
    const ParsedArguments parsed =
        ParseArguments(arguments, 1, "leak MAP [--options \"OPTIONS\"] [--png OUT.png]", {}, Valued);
    const std::string options = parsed.Has("options") ? parsed.options.at("options") : "";
    const LeakReport report = FindLeak(parsed.names[0], options);
    std::fputs(Describe(report).c_str(), stdout);
    if (parsed.Has("png")) DrawPlan(report, parsed.options.at("png"));
    return report.leak || report.objects == 0 ? 1 : 0;
}

}  // namespace klvtool
