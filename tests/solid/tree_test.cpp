#include "solid/tree.h"

#include "solid_support.h"

namespace k2k {
namespace {

class TreeTest : public test::SolidTest {};

TEST_F(TreeTest, SurfaceInfoTakesInAllFaces) {
    CSplitSurface surface;
    surface.faces.push_front(test::MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}}));
    surface.faces.push_front(test::MakeFloorFace({{-5, 2, 0}, {0, 8, 0}, {8, 0, 3}}));
    CalcSurfaceInfo(surface);
    EXPECT_EQ(surface.mins, (Vec3{-5, 0, 0}));
    EXPECT_EQ(surface.maxs, (Vec3{8, 8, 3}));
}

TEST_F(TreeTest, SurfaceInfoNeedsFaces) {
    CSplitSurface surface;
    test::ExpectFatal([&] { CalcSurfaceInfo(surface); }, "E062");
}

TEST_F(TreeTest, SurfaceInfoNeedsContentsOnBothSides) {
    for (const size_t side : {0U, 1U}) {
        CSplitSurface surface;
        auto face = test::MakeFloorFace({{0, 0, 0}, {0, 8, 0}, {8, 0, 0}});
        face->contents[side] = 0;
        surface.faces.push_front(std::move(face));
        test::ExpectFatal([&] { CalcSurfaceInfo(surface); }, "E063");
    }
}

TEST_F(TreeTest, FreesADeepTree) {
    auto root = std::make_unique<CBspNode>();
    CBspNode* node = root.get();
    for (int i = 0; i < 1000000; ++i) {
        node->children[1] = std::make_unique<CBspNode>();
        node = node->children[1].get();
    }
    root.reset();
}

}  // namespace
}  // namespace k2k
