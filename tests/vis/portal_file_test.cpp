// The reader of the interim portal file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/build_state.h"
#include "vis/graph_text.h"

namespace k2k::test {
namespace {

class PortalFileTest : public BuildState {};

const std::string OneSquare = "4 0 1 (0 0 64 ) (0 128.500000 64 ) (0 128.500000 0 ) (0 0 0 ) \n";

std::string Portals(int32_t regions, int32_t portals, const std::string& lines) {
    return "PORT\n" + std::to_string(regions) + "\n" + std::to_string(portals) + "\n" + lines;
}

void ExpectRejected(int32_t regionCount, const std::string& text, const std::string& message) {
    SCOPED_TRACE(text.substr(0, 60));
    ExpectFatal([&] { ReadGraph(regionCount, text); }, message);
}

std::vector<int32_t> ExitPortals(const VisGraph& graph, int32_t region) {
    std::vector<int32_t> portals;
    for (const RegionExit& exit : graph.ExitsOf(region)) portals.push_back(exit.portal);
    return portals;
}

TEST_F(PortalFileTest, MakesTwoRecordsOfAPortal) {
    const VisGraph graph = ReadGraph(2, Portals(2, 1, OneSquare));
    ASSERT_EQ(graph.portals.size(), 2U);
    const VisPortal& fromA = graph.portal(0);
    const VisPortal& fromB = graph.portal(1);
    EXPECT_EQ(fromA.region, 1);
    EXPECT_EQ(fromB.region, 0);
    EXPECT_EQ(fromA.polygon, fromB.polygon);
    EXPECT_THAT(fromA.polygon->points,
                testing::ElementsAre(Vec3d{0, 0, 64}, Vec3d{0, 128.5, 64}, Vec3d{0, 128.5, 0}, Vec3d{0, 0, 0}));
    EXPECT_THAT(ExitPortals(graph, 0), testing::ElementsAre(0));
    EXPECT_THAT(ExitPortals(graph, 1), testing::ElementsAre(1));
}

TEST_F(PortalFileTest, TheRecordOfALooksAgainstThePolygonsOwnNormal) {
    // (p2 - p0) x (p1 - p0) of the square is +x.
    const VisGraph graph = ReadGraph(2, Portals(2, 1, "3 0 1 (32 0 64 ) (32 128 64 ) (32 128 0 ) \n"));
    EXPECT_EQ(graph.portal(0).plane.normal, (Vec3{-1, 0, 0}));
    EXPECT_EQ(graph.portal(0).plane.dist, -32);
    EXPECT_EQ(graph.portal(0).plane.type, -3);
    EXPECT_EQ(graph.portal(1).plane.normal, (Vec3{1, 0, 0}));
    EXPECT_EQ(graph.portal(1).plane.dist, 32);
    EXPECT_EQ(graph.portal(1).plane.type, 0);
}

TEST_F(PortalFileTest, SaysHowManyPortalsItReads) {
    ReadGraph(2, Portals(2, 1, OneSquare));
    EXPECT_EQ(TakeLoggedText(), " \nGenerating 1 portals ...");
}

TEST_F(PortalFileTest, DoesNotCompareTheFirstWord) {
    EXPECT_EQ(ReadGraph(2, "WORD 2 1 " + OneSquare).portals.size(), 2U);
}

TEST_F(PortalFileTest, ReadsAFileWithoutPortals) {
    const VisGraph graph = ReadGraph(3, Portals(3, 0, ""));
    EXPECT_EQ(graph.regionCount(), 3);
    EXPECT_TRUE(graph.portals.empty());
}

TEST_F(PortalFileTest, ReadsALastLineWithoutAnEnd) {
    const std::string line = OneSquare.substr(0, OneSquare.size() - 3);
    EXPECT_EQ(ReadGraph(2, Portals(2, 1, line)).portals.size(), 2U);
}

TEST_F(PortalFileTest, KeepsTheOrderOfThePortalsOfARegion) {
    const VisGraph graph = ReadGraph(2, Portals(2, 3, OneSquare + OneSquare + OneSquare));
    EXPECT_THAT(ExitPortals(graph, 1), testing::ElementsAre(1, 3, 5));
}

TEST_F(PortalFileTest, StopsWhenTheFileIsMissing) {
    ExpectFatal([] { ReadPortalFile("/nowhere/x.$$p", 1); }, " \nCan't read interim file /nowhere/x.$$p\n");
}

TEST_F(PortalFileTest, ADashIsStandardInput) {
    const TempDir folder;
    WriteFile(folder.File("input"), Portals(2, 1, OneSquare));
    ASSERT_NE(std::freopen(folder.File("input").c_str(), "r", stdin), nullptr);
    EXPECT_EQ(ReadPortalFile("-", 2).portals.size(), 2U);
}

TEST_F(PortalFileTest, RejectsABrokenHead) {
    ExpectRejected(2, "", "E116");
    ExpectRejected(2, "PORT\n", "E116");
    ExpectRejected(2, "PORT\n2\n", "E116");
    ExpectRejected(2, "PORT\n2\nx\n", "E116");
    ExpectRejected(2, Portals(2, -1, ""), "E116");
    ExpectRejected(2, std::string(80, 'P') + "\n2\n0\n", "E116");
}

TEST_F(PortalFileTest, RejectsAnotherRegionCountThanTheLevels) {
    ExpectRejected(3, Portals(2, 1, OneSquare), "E11A");
    ExpectRejected(2, Portals(-2, 1, OneSquare), "E11A");
}

TEST_F(PortalFileTest, RejectsABrokenPortalHead) {
    ExpectRejected(2, Portals(2, 1, ""), "E118");
    ExpectRejected(2, Portals(2, 1, "4 0 \n"), "E118");
    ExpectRejected(2, Portals(2, 2, OneSquare), "E118");
}

TEST_F(PortalFileTest, RejectsMoreThan64PointsOrFewerThan3) {
    ExpectRejected(2, Portals(2, 1, "65 0 1 \n"), "E119");
    ExpectRejected(2, Portals(2, 1, "2 0 1 (0 0 0 ) (1 0 0 ) \n"), "E119");
    ExpectRejected(2, Portals(2, 1, "-4 0 1 \n"), "E119");
    ExpectRejected(2, Portals(2, 1, "2147483647 0 1 \n"), "E119");
}

TEST_F(PortalFileTest, Takes64Points) {
    std::string line = "64 0 1 ";
    for (int i = 0; i < 64; ++i) line += "(0 " + std::to_string(i) + " " + std::to_string(i * i) + " ) ";
    EXPECT_EQ(ReadGraph(2, Portals(2, 1, line + "\n")).portal(0).polygon->numpoints(), 64);
}

TEST_F(PortalFileTest, RejectsRegionsOutOfRange) {
    ExpectRejected(2, Portals(2, 1, "3 0 3 (0 0 0 ) (1 0 0 ) (0 1 0 ) \n"), "E11A");
    ExpectRejected(2, Portals(2, 1, "3 2 0 (0 0 0 ) (1 0 0 ) (0 1 0 ) \n"), "E11A");
    ExpectRejected(2, Portals(2, 1, "3 0 -1 (0 0 0 ) (1 0 0 ) (0 1 0 ) \n"), "E11A");
}

TEST_F(PortalFileTest, RejectsABrokenPoint) {
    ExpectRejected(2, Portals(2, 1, "3 0 1 (0 0 0 ) (1 0 0 ) \n"), "E11B");
    ExpectRejected(2, Portals(2, 1, "3 0 1 (0 0 0 ) (1 0 x ) (0 1 0 ) \n"), "E11B");
    ExpectRejected(2, Portals(2, 1, "3 0 1 0 0 0 1 0 0 0 1 0 \n"), "E11B");
}

TEST_F(PortalFileTest, RejectsThe257thPortalOfARegion) {
    std::string lines;
    for (int i = 0; i < 256; ++i) lines += "3 0 " + std::to_string(1 + i / 128) + " (0 0 0 ) (1 0 0 ) (0 1 0 ) \n";
    EXPECT_EQ(ReadGraph(4, Portals(4, 256, lines)).ExitsOf(0).size(), 256U);
    ExpectRejected(4, Portals(4, 257, lines + "3 3 0 (0 0 0 ) (1 0 0 ) (0 1 0 ) \n"),
                   " \nE11c: Map size - region with too many portals");
}

TEST_F(PortalFileTest, AFileCutAnywhereIsRejectedUnlessOnlyItsEndIsGone) {
    const std::string text = Portals(2, 2, OneSquare + OneSquare);
    const size_t lastBracket = text.rfind(')');
    for (size_t length = 0; length < text.size(); ++length) {
        SCOPED_TRACE(length);
        // The bracket behind the last number ends it, but is not needed.
        if (length + 1 >= lastBracket) {
            EXPECT_EQ(ReadGraph(2, text.substr(0, length)).portals.size(), 4U);
        } else {
            EXPECT_THROW(ReadGraph(2, text.substr(0, length)), FatalStop);
        }
    }
}

TEST_F(PortalFileTest, TakesNumbersThatAreNone) {
    const VisGraph graph = ReadGraph(2, Portals(2, 1, "3 0 1 (nan 0 0 ) (1 inf 0 ) (0 1e300 0 ) \n"));
    EXPECT_EQ(graph.portal(0).polygon->numpoints(), 3);
}

}  // namespace
}  // namespace k2k::test
