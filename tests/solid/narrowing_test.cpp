// What is stored in 32 bits is rounded to 32 bits, also where it is widened again at once.
#include <gtest/gtest.h>

#include "solid/vectors.h"

namespace k2k::test {
namespace {

// Neither of these numbers fits 32 bits.
constexpr Vec3d Point{1.0 / 3, 100.0 / 7, -1000.0 / 9};
constexpr float Rounded[3] = {static_cast<float>(1.0 / 3), static_cast<float>(100.0 / 7),
                              static_cast<float>(-1000.0 / 9)};

[[gnu::noinline]] Vec3d NarrowedDifference(const Vec3d& a, const Vec3d& b) {
    return Widen(Narrow(Sub(a, b)));
}

[[gnu::noinline]] Vec3d NarrowedTimes(const Vec3d& a, const Vec3d& b, double factor) {
    const Vec3 difference = Narrow(Sub(a, b));
    return {difference[0] * factor, difference[1] * factor, difference[2] * factor};
}

TEST(NarrowingTest, AStoredDifferenceHas32Bits) {
    EXPECT_EQ(NarrowedDifference(Point, {}), (Vec3d{Rounded[0], Rounded[1], Rounded[2]}));
}

TEST(NarrowingTest, AStoredDifferenceHas32BitsInAProductOf64) {
    EXPECT_EQ(NarrowedTimes(Point, {}, 3), (Vec3d{Rounded[0] * 3.0, Rounded[1] * 3.0, Rounded[2] * 3.0}));
}

}  // namespace
}  // namespace k2k::test
