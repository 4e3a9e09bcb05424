// A level drawn from above: floors from low to high, walls as lines, objects as marks.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "klvtool/canvas.h"
#include "klvtool/entities.h"
#include "klvtool/faces.h"

namespace klvtool {

struct PlanPolygon {
    std::vector<Vec3> outline;
    Vec3 normal{};
    Rgb colour;  // of a floor in full light
};

struct PlanOptions {
    uint32_t size = 1000;       // pixels along the longer side
    std::optional<double> cut;  // leaves out what lies above this height
};

class Plan {
  public:
    Plan(const Bounds& bounds, const PlanOptions& options);

    void DrawFloors(const std::vector<PlanPolygon>& polygons);
    void DrawWalls(const std::vector<PlanPolygon>& polygons);
    void DrawEntities(const std::vector<Entity>& entities);
    void DrawViewpoint(const Vec3& point);
    void DrawWay(const std::vector<Vec3>& points);
    // A bar of a round length, the kinds of marks that were drawn, and a line of text.
    void DrawLegend(const std::string& text);
    Image Finished() const { return canvas_.Finished(); }

  private:
    Spot At(const Vec3& point) const;
    bool IsCutOff(const Vec3& point) const { return options_.cut && double{point[2]} > *options_.cut; }
    void DrawMark(const Entity& entity);
    void DrawPath(const Entity& entity);

    PlanOptions options_;
    Bounds bounds_;
    double scale_;  // pixels a unit
    uint32_t width_, height_;
    Canvas canvas_;
    std::vector<EntityType> drawn_;  // kinds of marks, each once
};

}  // namespace klvtool
