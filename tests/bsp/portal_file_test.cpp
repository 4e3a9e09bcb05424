// The writer of the interim portal file.
#include "bsp/portal_file.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "bsp/portals.h"
#include "bsp/test_level.h"

namespace k2k {
namespace {

using testing::StartsWith;

// A node on the plane x = 0 with two leaves, and the opening between them.
class PortalFile : public test::LevelTest {
  protected:
    PortalFile() {
        Paths().PortalPath = "level.$$p";
        int32_t side = 0;
        root_.planenum = FindPlane({{1, 0, 0}, 0, 0}, side);
        for (auto& child : root_.children) child = std::make_unique<CBspNode>();
        SetContents(ContentsEmpty, ContentsEmpty);
    }

    CBspNode& front() { return *root_.children[0]; }
    CBspNode& back() { return *root_.children[1]; }
    void SetContents(int32_t inFront, int32_t behind) {
        front().contents = inFront;
        back().contents = behind;
    }

    void Open(std::vector<Vec3d> points) {
        portal_ = &portals_.NewPortal(root_.planenum, MakePolygon(std::move(points)));
        AddPortalToNodes(*portal_, front(), back());
    }
    // Clockwise as seen from in front of the plane.
    void OpenSquare() { Open({{0, 0, 8}, {0, 8, 8}, {0, 8, 0}, {0, 0, 0}}); }

    std::string Written() {
        WritePortalFile(root_);
        return test::ReadFile("level.$$p");
    }

    CBspNode root_;
    TreePortals portals_;
    CPortal* portal_ = nullptr;
};

TEST_F(PortalFile, NamesTheLeafFirstThatThePolygonLooksInto) {
    OpenSquare();
    EXPECT_EQ(Written(), "PORT\n2\n1\n4 0 1 (0 0 8 ) (0 8 8 ) (0 8 0 ) (0 0 0 ) \n");
    EXPECT_EQ(root_.leafNumber, -99);
    portal_->polygon = MakePolygon({{0, 0, 0}, {0, 8, 0}, {0, 8, 8}, {0, 0, 8}});
    EXPECT_EQ(Written(), "PORT\n2\n1\n4 1 0 (0 0 0 ) (0 8 0 ) (0 8 8 ) (0 0 8 ) \n");
}

TEST_F(PortalFile, APolygonLooksAlongItsPlaneFrom099On) {
    OpenSquare();
    // Turned about y: cosines of 0.9903 and 0.9889.
    portal_->polygon = MakePolygon({{1.12, 0, 8}, {1.12, 8, 8}, {0, 8, 0}, {0, 0, 0}});
    EXPECT_THAT(Written(), StartsWith("PORT\n2\n1\n4 0 1 "));
    portal_->polygon = MakePolygon({{1.2, 0, 8}, {1.2, 8, 8}, {0, 8, 0}, {0, 0, 0}});
    EXPECT_THAT(Written(), StartsWith("PORT\n2\n1\n4 1 0 "));
}

TEST_F(PortalFile, NumbersNearAWholeOneAreWrittenAsThat) {
    Open({{0.0009, -0.0009, 63.9991}, {0, 128.5, 64.0011}, {0, 128.4989, -0.25}});
    EXPECT_EQ(Written(), "PORT\n2\n1\n3 0 1 (0 0 64 ) (0 128.500000 64.001099 ) (0 128.498901 -0.250000 ) \n");
}

TEST_F(PortalFile, NumbersAreNarrowedTo32BitsFirst) {
    Open({{0, 0, 16777217}, {0, 0.1, 0}, {0, 33000.0001, 0}});
    EXPECT_EQ(Written(), "PORT\n2\n1\n3 1 0 (0 0 16777216 ) (0 0.100000 0 ) (0 33000 0 ) \n");
}

TEST_F(PortalFile, NumbersBeyondWholeOnesAreWrittenInFull) {
    Open({{0, 0, 4294967296}, {0, 8, 0}, {0, 0, 0}});
    EXPECT_THAT(Written(), testing::HasSubstr("(0 0 4294967296.000000 )"));
}

TEST_F(PortalFile, SolidAndDetailLeavesHaveNoNumber) {
    OpenSquare();
    SetContents(ContentsSolid | ContentsMarked | ContentsDetail, ContentsEmpty);
    EXPECT_EQ(Written(), "PORT\n1\n0\n");
    EXPECT_EQ(front().leafNumber, -1);
    EXPECT_EQ(back().leafNumber, 0);
}

TEST_F(PortalFile, LeavesOfDifferentContentsAreNotJoined) {
    OpenSquare();
    SetContents(ContentsEmpty, ContentsSolid + ContentsOpen);
    EXPECT_EQ(Written(), "PORT\n2\n0\n");
    SetContents(ContentsSolid + ContentsOpen, ContentsSolid + ContentsOpen);
    EXPECT_THAT(Written(), StartsWith("PORT\n2\n1\n4 0 1 "));
}

TEST_F(PortalFile, PortalsOfClipLeavesAreCountedAndNotWritten) {
    OpenSquare();
    for (const int32_t bit : {ContentsClipOnly, 8}) {
        SetContents(ContentsSolid | bit, ContentsSolid | bit);
        EXPECT_EQ(Written(), "PORT\n2\n1\n");
    }
}

TEST_F(PortalFile, APortalIsWrittenWithItsFirstLeafOnly) {
    portal_ = &portals_.NewPortal(root_.planenum, MakePolygon({{0, 0, 8}, {0, 8, 8}, {0, 8, 0}}));
    AddPortalToNodes(*portal_, back(), front());
    EXPECT_THAT(Written(), StartsWith("PORT\n2\n1\n3 1 0 "));
}

TEST_F(PortalFile, AFileThatCannotBeOpenedIsFatal) {
    OpenSquare();
    Paths().PortalPath = "missing/level.$$p";
    test::ExpectFatal([this] { WritePortalFile(root_); }, "E078");
}

TEST_F(PortalFile, AFileThatCannotBeWrittenIsFatal) {
    OpenSquare();
    Paths().PortalPath = "/dev/full";
    test::ExpectFatal([this] { WritePortalFile(root_); }, "E078");
}

}  // namespace
}  // namespace k2k
