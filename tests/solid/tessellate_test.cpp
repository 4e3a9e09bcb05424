#include <GL/glu.h>

#include <algorithm>

#include "solid/vectors.h"
#include "solid_support.h"

namespace k2k {
namespace {

using test::MakeFloorFace;

class TessellateFaceTest : public test::SolidTest {};

double AreaOf(const FaceList& faces) {
    double area = 0;
    for (const CBlockFace& face : faces) area += PolygonArea(*PolygonOfFace(face));
    return area;
}

TEST_F(TessellateFaceTest, CutsAConcaveFaceIntoPlainTriangles) {
    const auto corner = MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {4, 8, 0}, {4, 4, 0}, {8, 4, 0}, {8, 0, 0}});
    const FaceList triangles = TessellateFace(*corner);
    EXPECT_EQ(triangles.size(), 4U);
    EXPECT_NEAR(AreaOf(triangles), 48, 1e-4);
    for (const CBlockFace& triangle : triangles) EXPECT_EQ(triangle.numpoints(), 3);
}

// The corners that the tessellator names for a polygon, as it names them.
std::vector<Vec3> CornersFromGlu(const std::vector<Vec3>& polygon) {
    using Callback = void (*)();
    std::vector<Vec3d> points;
    for (const Vec3& point : polygon) points.push_back(Widen(point));
    std::vector<Vec3> corners;
    GLUtesselator* tessellator = gluNewTess();
    gluTessCallback(tessellator, GLU_TESS_EDGE_FLAG, reinterpret_cast<Callback>(+[](GLboolean) {}));
    gluTessCallback(tessellator, GLU_TESS_VERTEX_DATA, reinterpret_cast<Callback>(+[](void* vertex, void* data) {
                        static_cast<std::vector<Vec3>*>(data)->push_back(Narrow(*static_cast<Vec3d*>(vertex)));
                    }));
    gluTessBeginPolygon(tessellator, &corners);
    gluTessBeginContour(tessellator);
    for (Vec3d& point : points) gluTessVertex(tessellator, point.data(), &point);
    gluTessEndContour(tessellator);
    gluTessEndPolygon(tessellator);
    gluDeleteTess(tessellator);
    return corners;
}

TEST_F(TessellateFaceTest, GivesTheLastTriangleFirstWithItsCornersInOrder) {
    const std::vector<Vec3> comb{{0, 0, 0}, {0, 8, 0}, {2, 2, 0}, {4, 8, 0}, {6, 3, 0}, {8, 8, 0}, {8, 0, 0}};
    const std::vector<Vec3> corners = CornersFromGlu(comb);
    const FaceList triangles = TessellateFace(*MakeFloorFace(comb));
    ASSERT_EQ(triangles.size() * 3, corners.size());
    auto end = corners.end();
    for (const CBlockFace& triangle : triangles) {
        EXPECT_EQ(triangle.points, std::vector<Vec3>(end - 3, end));
        end -= 3;
    }
}

TEST_F(TessellateFaceTest, CopiesTheFieldsOfTheFaceAndLeavesIt) {
    const auto face = MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}});
    face->texinfo = 5;
    face->sourceBlock = 17;
    const FaceList triangles = TessellateFace(*face);
    ASSERT_EQ(triangles.size(), 1U);
    EXPECT_EQ(triangles.front()->texinfo, 5);
    EXPECT_EQ(triangles.front()->sourceBlock, 17);
    EXPECT_EQ(triangles.front()->contents, face->contents);
    EXPECT_EQ(face->numpoints(), 3);
}

TEST_F(TessellateFaceTest, AddsAPointWhereEdgesCross) {
    // A bow tie: its edges meet at (4, 4).
    const auto face = MakeFloorFace({{0, 0, 0}, {8, 8, 0}, {8, 0, 0}, {0, 8, 0}});
    const FaceList triangles = TessellateFace(*face);
    EXPECT_EQ(triangles.size(), 2U);
    for (const CBlockFace& triangle : triangles) {
        EXPECT_EQ(std::count(triangle.points.begin(), triangle.points.end(), Vec3{4, 4, 0}), 1);
    }
    EXPECT_NEAR(AreaOf(triangles), 32, 1e-4);
}

TEST_F(TessellateFaceTest, StaysInStepFromOnePolygonToTheNext) {
    for (int i = 0; i < 5; ++i) {
        const auto face = MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 8, 0}, {4, 4, 0}, {8, 0, 0}});
        EXPECT_NEAR(AreaOf(TessellateFace(*face)), 48, 1e-4);
    }
}

TEST_F(TessellateFaceTest, GivesNothingForALine) {
    EXPECT_TRUE(TessellateFace(*MakeFloorFace({{0, 0, 0}, {8, 8, 0}})).empty());
    EXPECT_TRUE(TessellateFace(*MakeFloorFace({})).empty());
}

TEST_F(TessellateFaceTest, WorksInAnyPlane) {
    const auto wall = MakeFloorFace({{3, 0, 0}, {3, 0, 8}, {3, 4, 8}, {3, 4, 4}, {3, 8, 4}, {3, 8, 0}});
    EXPECT_NEAR(AreaOf(TessellateFace(*wall)), 48, 1e-4);
}

}  // namespace
}  // namespace k2k
