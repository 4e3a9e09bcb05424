#include <algorithm>
#include <array>
#include <cmath>

#include "klvtool/command.h"
#include "klvtool/plan.h"
#include "klvtool/tree.h"

namespace klvtool {
namespace {

using levelcheck::LevelView;

constexpr double SmallestPlan = 64, LargestPlan = 8192;  // pixels
constexpr Rgb Own{255, 190, 70}, Visible{235, 130, 60}, Hidden{120, 124, 130};

// A calm colour of a region's own. Neighbours have far numbers here, so that their borders show.
Rgb RegionColour(size_t region) {
    const double hue = std::fmod(static_cast<double>(region) * 0.618033988749895, 1.0) * 6;
    const auto channel = [&](double shift) {
        const double place = std::fmod(hue + shift, 6.0);
        return static_cast<uint8_t>(150 + 75 * std::clamp(std::abs(place - 3) - 1, 0.0, 1.0));
    };
    return {channel(0), channel(4), channel(2)};
}

// The region in front of a face's middle.
size_t RegionBefore(const LevelView& level, const Face& face) {
    const Vec3 centre = CentreOf(face);
    std::array<double, 3> point{};
    for (size_t axis = 0; axis < 3; axis++) point[axis] = double{centre[axis]} + face.normal[axis];
    return RegionOf(level, point);
}

std::vector<PlanPolygon> PolygonsOf(const LevelView& level, const std::vector<Face>& faces,
                                    const std::vector<Rgb>& colours) {
    std::vector<PlanPolygon> polygons;
    for (const Face& face : faces) {
        if ((face.flags & FlagSky) != 0) continue;
        const size_t region = RegionBefore(level, face);
        PlanPolygon polygon{{}, face.normal, region < colours.size() ? colours[region] : Hidden};
        for (const Corner& corner : face.corners) polygon.outline.push_back(corner.position);
        polygons.push_back(std::move(polygon));
    }
    return polygons;
}

std::vector<Rgb> ColoursOfAll(const LevelView& level) {
    std::vector<Rgb> colours(level.regions.size());
    for (size_t i = 0; i < colours.size(); i++) colours[i] = RegionColour(i);
    return colours;
}

std::vector<Rgb> ColoursFrom(const std::vector<bool>& visible, size_t from) {
    std::vector<Rgb> colours;
    colours.reserve(visible.size());
    for (const bool seen : visible) colours.push_back(seen ? Visible : Hidden);
    colours[from] = Own;
    return colours;
}

std::string Counted(size_t count, const char* what) {
    return std::to_string(count) + " " + what;
}

size_t OpenRegionAt(const LevelView& level, const std::array<double, 3>& point) {
    const size_t region = RegionOf(level, point);
    if (!IsOpen(level, region)) throw UsageError("--from is not in the open space of the level");
    return region;
}

PlanOptions OptionsOf(const ParsedArguments& parsed) {
    PlanOptions options;
    if (parsed.Has("cut")) options.cut = ParseNumber("--cut", parsed.options.at("cut"));
    if (!parsed.Has("size")) return options;
    const double size = ParseNumber("--size", parsed.options.at("size"));
    if (size < SmallestPlan || size > LargestPlan) throw UsageError("--size is 64 to 8192 pixels");
    options.size = static_cast<uint32_t>(size);
    return options;
}

}  // namespace

int RunPlan(Arguments arguments) {
    constexpr std::string_view Valued[] = {"from", "cut", "size"};
    const ParsedArguments parsed =
        ParseArguments(arguments, 2, "plan LEVEL OUT.png [--from X,Y,Z] [--cut Z] [--size PIXELS]", {}, Valued);
    const PlanOptions options = OptionsOf(parsed);
    const LevelView level = LoadLevel(parsed.names[0]);
    const std::vector<Face> faces = ReadFaces(level, {});
    if (faces.empty()) throw std::runtime_error(parsed.names[0] + ": no surfaces to draw");

    Plan plan(BoundsOf(faces), options);
    const size_t regions = level.regions.empty() ? 0 : level.regions.size() - 1;
    std::string text = Counted(regions, "REGIONS, ") + Counted(level.surfaces.size(), "SURFACES");
    std::vector<Rgb> colours = ColoursOfAll(level);
    std::optional<Vec3> eye;
    if (parsed.Has("from")) {
        const auto point = ParsePoint("--from", parsed.options.at("from"));
        const size_t own = OpenRegionAt(level, point);
        const std::vector<bool> visible = VisibleFrom(level, own);
        colours = ColoursFrom(visible, own);
        eye = Vec3{static_cast<float>(point[0]), static_cast<float>(point[1]), static_cast<float>(point[2])};
        text = Counted(static_cast<size_t>(std::count(visible.begin() + 1, visible.end(), true)), "OF ") +
               Counted(regions, "REGIONS VISIBLE FROM REGION ") + std::to_string(own);
    }
    const std::vector<PlanPolygon> polygons = PolygonsOf(level, faces, colours);
    plan.DrawFloors(polygons);
    plan.DrawWalls(polygons);
    plan.DrawEntities(ReadEntities(level));
    if (eye) plan.DrawViewpoint(*eye);
    plan.DrawLegend(text);
    WritePng(parsed.names[1], plan.Finished());
    return 0;
}

}  // namespace klvtool
