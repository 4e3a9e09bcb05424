#include "light/polygon_test.h"

#include "solid/vectors.h"

namespace k2k {

bool IsInsideOutline(const Vec3& point, const std::vector<Vec3>& outline, const Vec3& normal) {
    const size_t count = outline.size();
    if (count < 3) return false;
    double previous = 0;
    for (size_t i = 0; i < count; i++) {
        const Vec3& a = outline[i];
        Vec3 edge = Sub(outline[i + 1 < count ? i + 1 : 0], a);
        Normalize(edge);
        const Vec3 across = Cross(edge, normal);
        double d = Dot(point, across) - Dot(across, a);
        if (d == 0) d = 1;
        if (d * previous < 0) return false;
        previous = d;
    }
    return true;
}

}  // namespace k2k
