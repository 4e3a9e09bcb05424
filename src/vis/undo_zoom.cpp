// Brings a level that was built at a zoom back to its own size.
#include "vis/undo_zoom.h"

#include <array>
#include <cstdint>
#include <limits>

#include "levelfile/geometry_data.h"
#include "levelfile/portal_data.h"

namespace k2k {
namespace {

// Towards zero; what no int32 can hold becomes the lowest one.
int32_t Truncate(double value) {
    constexpr double Limit = 2147483648.0;
    return value > -Limit && value < Limit ? static_cast<int32_t>(value) : std::numeric_limits<int32_t>::min();
}

template <typename T>
T Scaled(T value, float factor) {
    if constexpr (std::is_integral_v<T>) {
        return static_cast<T>(Truncate(static_cast<double>(value) * factor));
    } else {
        return value * factor;
    }
}

template <typename T>
void Scale(std::array<T, 3>& vector, float factor) {
    for (T& component : vector) component = Scaled(component, factor);
}

void ScaleInfo(LevelInfo& info, float factor) {
    Scale(info.mins, factor);
    Scale(info.maxs, factor);
    Scale(info.origin, factor);
    for (std::array<int32_t, 3>& mins : info.hullMins) Scale(mins, factor);
    for (std::array<int32_t, 3>& maxs : info.hullMaxs) Scale(maxs, factor);
}

// Bounds are scaled as they are stored.
template <typename Row>
void ScaleBounds(std::vector<Row>& rows, float factor) {
    for (Row& row : rows) {
        Scale(row.mins, factor);
        Scale(row.maxs, factor);
    }
}

}  // namespace

void UndoZoom(float zoom) {
    const float factor = 1.0F / zoom;
    for (FinalPlaneRecord& plane : Geometry().planes) plane.dist *= factor;
    for (Vec3& vertex : Geometry().vertices) Scale(vertex, factor);
    ScaleBounds(Portals().regions, factor);
    ScaleBounds(Portals().nodes, factor);
    ScaleInfo(Geometry().info, factor);
}

}  // namespace k2k
