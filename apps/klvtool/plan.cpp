#include "klvtool/plan.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace klvtool {
namespace {

constexpr double Margin = 24, LegendHeight = 44;  // pixels
constexpr float FloorSlope = 0.3F;                // a normal's height from which on a surface counts as floor
constexpr float WallSlope = 0.1F;
constexpr double FloorOpacity = 0.85;
constexpr Rgb Background{26, 28, 32}, Ink{235, 235, 230}, WallInk{12, 12, 14}, CutInk{240, 240, 235},
    WayInk{255, 40, 40}, ViewInk{255, 255, 255};

struct MarkStyle {
    EntityType type;
    const char* word;
    Rgb colour;
};
constexpr MarkStyle Marks[] = {
    {EntityType::Start, "START", {80, 220, 90}},     {EntityType::Light, "LIGHT", {255, 220, 90}},
    {EntityType::Model, "MODEL", {90, 170, 255}},    {EntityType::Extended, "EXTENDED", {60, 110, 230}},
    {EntityType::Sound, "SOUND", {230, 110, 220}},   {EntityType::Path, "PATH", {255, 150, 60}},
    {EntityType::Spotlight, "SPOT", {255, 190, 30}},
};
constexpr double MarkRadius = 5;

const MarkStyle* StyleOf(EntityType type) {
    const auto* style =
        std::find_if(std::begin(Marks), std::end(Marks), [&](const MarkStyle& s) { return s.type == type; });
    return style == std::end(Marks) ? nullptr : style;
}

Rgb Shaded(Rgb colour, double light) {
    const auto channel = [&](uint8_t v) { return static_cast<uint8_t>(std::clamp(v * light, 0.0, 255.0)); };
    return {channel(colour.r), channel(colour.g), channel(colour.b)};
}

std::array<float, 2> HeightsOf(const PlanPolygon& polygon) {
    const auto [low, high] = std::minmax_element(polygon.outline.begin(), polygon.outline.end(),
                                                 [](const Vec3& a, const Vec3& b) { return a[2] < b[2]; });
    return {(*low)[2], (*high)[2]};
}

double Span(const Bounds& bounds, size_t axis) {
    return std::max(1.0, double{bounds.maxs[axis]} - double{bounds.mins[axis]});
}

double ScaleOf(const Bounds& bounds, const PlanOptions& options) {
    return (options.size - 2 * Margin) / std::max(Span(bounds, 0), Span(bounds, 1));
}

uint32_t Pixels(double units, double scale) {
    return static_cast<uint32_t>(std::ceil(units * scale + 2 * Margin));
}

// The longest of 1, 2, 5, 10, 20 ... units within a width.
double RoundLength(double longest) {
    const double power = std::pow(10, std::floor(std::log10(longest)));
    for (const double digit : {5.0, 2.0}) {
        if (digit * power <= longest) return digit * power;
    }
    return power;
}

void DrawShape(Canvas& canvas, Spot at, const MarkStyle& style, double turn) {
    constexpr double R = MarkRadius;
    const auto polygon = [&](std::initializer_list<Spot> corners, double size, Rgb colour) {
        std::vector<Spot> placed;
        for (const Spot& corner : corners) {
            const double x = corner.x * size, y = corner.y * size;
            placed.push_back(
                {at.x + x * std::cos(turn) + y * std::sin(turn), at.y - x * std::sin(turn) + y * std::cos(turn)});
        }
        canvas.Fill(placed, colour);
    };
    switch (style.type) {
        case EntityType::Start:
            polygon({{1.8, 0}, {-1.2, 1.3}, {-0.5, 0}, {-1.2, -1.3}}, R + 2, WallInk);
            return polygon({{1.8, 0}, {-1.2, 1.3}, {-0.5, 0}, {-1.2, -1.3}}, R, style.colour);
        case EntityType::Sound:
            polygon({{1.3, 0}, {0, 1.3}, {-1.3, 0}, {0, -1.3}}, R + 1.5, WallInk);
            return polygon({{1.3, 0}, {0, 1.3}, {-1.3, 0}, {0, -1.3}}, R, style.colour);
        case EntityType::Light:
        case EntityType::Spotlight:
            canvas.Disc(at, R + 1.5, WallInk);
            return canvas.Disc(at, R, style.colour);
        default:
            polygon({{1, 1}, {-1, 1}, {-1, -1}, {1, -1}}, R + 1.5, WallInk);
            return polygon({{1, 1}, {-1, 1}, {-1, -1}, {1, -1}}, R, style.colour);
    }
}

// Where a polygon passes through a height: its two ends, or nothing.
std::vector<Vec3> CutAt(const std::vector<Vec3>& outline, float height) {
    std::vector<Vec3> ends;
    for (size_t i = 0; i < outline.size(); i++) {
        const Vec3 &a = outline[i], &b = outline[(i + 1) % outline.size()];
        if ((a[2] <= height) == (b[2] <= height)) continue;
        const float t = (height - a[2]) / (b[2] - a[2]);
        ends.push_back({a[0] + t * (b[0] - a[0]), a[1] + t * (b[1] - a[1]), height});
    }
    return ends;
}

}  // namespace

Plan::Plan(const Bounds& bounds, const PlanOptions& options)
    : options_(options),
      bounds_(bounds),
      scale_(ScaleOf(bounds, options)),
      width_(std::max(options.size / 2, Pixels(Span(bounds, 0), scale_))),
      height_(Pixels(Span(bounds, 1), scale_) + static_cast<uint32_t>(LegendHeight)),
      canvas_(width_, height_, Background) {}

Spot Plan::At(const Vec3& point) const {
    return {Margin + (double{point[0]} - bounds_.mins[0]) * scale_,
            Margin + (double{bounds_.maxs[1]} - point[1]) * scale_};
}

void Plan::DrawFloors(const std::vector<PlanPolygon>& polygons) {
    std::vector<std::pair<float, const PlanPolygon*>> floors;
    for (const PlanPolygon& polygon : polygons) {
        const auto [low, high] = HeightsOf(polygon);
        if (polygon.normal[2] >= FloorSlope && !(options_.cut && double{low} > *options_.cut))
            floors.emplace_back(low + high, &polygon);
    }
    std::stable_sort(floors.begin(), floors.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (const auto& [height, polygon] : floors) {
        const double top = std::min(options_.cut.value_or(bounds_.maxs[2]), double{bounds_.maxs[2]});
        const double rise = (height / 2 - double{bounds_.mins[2]}) / std::max(1.0, top - double{bounds_.mins[2]});
        std::vector<Spot> outline;
        for (const Vec3& point : polygon->outline) outline.push_back(At(point));
        canvas_.Fill(outline, Shaded(polygon->colour, 0.65 + 0.35 * std::clamp(rise, 0.0, 1.0)), FloorOpacity);
    }
}

void Plan::DrawWalls(const std::vector<PlanPolygon>& polygons) {
    for (const PlanPolygon& polygon : polygons) {
        if (std::abs(polygon.normal[2]) > WallSlope) continue;
        if (options_.cut) {
            const auto ends = CutAt(polygon.outline, static_cast<float>(*options_.cut));
            if (ends.size() == 2) canvas_.Line(At(ends[0]), At(ends[1]), 2, CutInk);
            if (!ends.empty() || IsCutOff(polygon.outline[0])) continue;
        }
        // From above, a wall is the line between its outermost corners.
        const auto [a, b] = std::minmax_element(
            polygon.outline.begin(), polygon.outline.end(),
            [](const Vec3& p, const Vec3& q) { return std::pair(p[0], p[1]) < std::pair(q[0], q[1]); });
        canvas_.Line(At(*a), At(*b), 1, WallInk, 0.6);
    }
}

void Plan::DrawPath(const Entity& entity) {
    const MarkStyle& style = *StyleOf(EntityType::Path);
    for (size_t i = 0; i < entity.points.size(); i++) {
        if (i > 0) canvas_.Line(At(entity.points[i - 1]), At(entity.points[i]), 1.5, style.colour);
        canvas_.Disc(At(entity.points[i]), 2.5, style.colour);
    }
}

void Plan::DrawMark(const Entity& entity) {
    const MarkStyle* style = StyleOf(entity.type);
    if (style == nullptr || !entity.HasPosition() || IsCutOff(entity.Position())) return;
    const std::vector<float> angles = entity.Numbers("angles");
    const double turn =
        angles.empty() || entity.type != EntityType::Start ? 0 : double{angles[0]} * std::numbers::pi / 180;
    DrawShape(canvas_, At(entity.Position()), *style, turn);
    if (std::find(drawn_.begin(), drawn_.end(), entity.type) == drawn_.end()) drawn_.push_back(entity.type);
}

void Plan::DrawEntities(const std::vector<Entity>& entities) {
    for (const Entity& entity : entities) {
        if (entity.type != EntityType::Path || entity.points.empty()) continue;
        DrawPath(entity);
        if (std::find(drawn_.begin(), drawn_.end(), EntityType::Path) == drawn_.end())
            drawn_.push_back(EntityType::Path);
    }
    for (const Entity& entity : entities) DrawMark(entity);
}

void Plan::DrawViewpoint(const Vec3& point) {
    canvas_.Disc(At(point), MarkRadius + 3, WallInk);
    canvas_.Disc(At(point), MarkRadius + 1.5, ViewInk);
    canvas_.Disc(At(point), MarkRadius - 1.5, WallInk);
}

void Plan::DrawWay(const std::vector<Vec3>& points) {
    for (size_t i = 1; i < points.size(); i++) canvas_.Line(At(points[i - 1]), At(points[i]), 3, WayInk);
    for (const Vec3& point : points) canvas_.Disc(At(point), 2.5, WayInk);
}

void Plan::DrawLegend(const std::string& text) {
    const double y = height_ - LegendHeight + 4;
    const double length = RoundLength(width_ / 4.0 / scale_);
    const double end = Margin + length * scale_;
    canvas_.Line({Margin, y}, {end, y}, 2, Ink);
    for (const double x : {Margin, end}) canvas_.Line({x, y - 4}, {x, y + 4}, 2, Ink);
    std::string units = std::to_string(length);
    units.resize(length >= 1 ? units.find('.') : units.size());
    canvas_.Text({end + 8, y - 5}, units + " UNITS", Ink);
    canvas_.Text({Margin, y + 20}, text, Ink);
    double x = end + 8 + Canvas::TextWidth(units + " UNITS") + 30;
    for (const EntityType type : drawn_) {
        const MarkStyle& style = *StyleOf(type);
        DrawShape(canvas_, {x, y}, style, 0);
        canvas_.Text({x + 14, y - 5}, style.word, Ink);
        x += 14 + Canvas::TextWidth(style.word) + 22;
    }
}

}  // namespace klvtool
