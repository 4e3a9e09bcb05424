// klvtool export and view.
#include "klvtool/faces.h"
#include "klvtool/gltf.h"
#include "klvtool/tool.h"
#include "klvtool/view_page.h"

namespace k2k::test {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

uint32_t Word(const std::vector<uint8_t>& bytes, size_t at) {
    uint32_t value = 0;
    if (at + 4 <= bytes.size()) std::memcpy(&value, bytes.data() + at, 4);
    return value;
}

class Export : public KlvtoolTest {
  protected:
    // The text part of the exported level.
    static std::string ExportedText() {
        const ProcessResult run = Klvtool({"export", "level.klv", "level.glb"});
        EXPECT_EQ(run.status, 0) << run.err;
        const std::vector<uint8_t> bytes = ReadBytes("level.glb");
        const size_t length = Word(bytes, 12);
        if (bytes.size() < 20 + length) return "";
        return {bytes.begin() + 20, bytes.begin() + 20 + static_cast<std::ptrdiff_t>(length)};
    }
    static SmallMap LitRoom() { return OneRoom().Light({60, 60, 100}, {200, 100, 50}, 300); }
};

TEST_F(Export, MakesTheTwoPartsOfABinaryFile) {
    Compile(LitRoom());
    ExportedText();
    const std::vector<uint8_t> bytes = ReadBytes("level.glb");
    EXPECT_EQ(Word(bytes, 0), 0x46546C67U);
    EXPECT_EQ(Word(bytes, 4), 2U);
    EXPECT_EQ(Word(bytes, 8), bytes.size());
    const size_t second = 20 + Word(bytes, 12);
    EXPECT_EQ(second % 4, 0U);
    EXPECT_EQ(Word(bytes, second + 4), 0x004E4942U);
    EXPECT_EQ(second + 8 + Word(bytes, second), bytes.size());
}

TEST_F(Export, KeepsLightmapsOverTheSecondCoordinates) {
    Compile(LitRoom());
    const std::string text = ExportedText();
    EXPECT_THAT(text, HasSubstr("\"TEXCOORD_1\":"));
    EXPECT_THAT(text, HasSubstr("\"occlusionTexture\":{\"index\":4,\"texCoord\":1}"));
    EXPECT_THAT(text, HasSubstr("\"extras\":{\"lightmap\":{\"index\":1,\"texCoord\":1}}"));
    EXPECT_THAT(text, HasSubstr("\"name\":\"lightmap page 1 in grey\",\"mimeType\":\"image/png\""));
}

TEST_F(Export, TurnsLightsIntoPunctualOnes) {
    Compile(LitRoom());
    const std::string text = ExportedText();
    EXPECT_THAT(
        text,
        HasSubstr("\"KHR_lights_punctual\":{\"lights\":[{\"type\":\"directional\",\"color\":[1,1,1],\"intensity\":1},"
                  "{\"type\":\"point\",\"color\":[1,0.5,0.25],"));
    EXPECT_THAT(text, HasSubstr("\"range\":7.62}"));
}

TEST_F(Export, KeepsObjectsInExtras) {
    Compile(LitRoom());
    EXPECT_THAT(ExportedText(), HasSubstr("{\"name\":\"player\",\"translation\":[128,128,40],\"extras\":{\"type\":"
                                          "\"start\",\"position\":[128,128,40],"));
}

TEST_F(Export, DrawsSkyInFullLight) {
    Compile(SkyRoom().Light({60, 60, 60}, {200, 100, 50}, 300));
    EXPECT_THAT(ExportedText(), HasSubstr("\"extensions\":{\"KHR_materials_unlit\":{}}"));
}

TEST_F(Export, TakesMeshLevels) {
    Compile(LitRoom(), {"-mesh"});
    EXPECT_THAT(ExportedText(), HasSubstr("\"TEXCOORD_1\":"));
}

TEST_F(Export, TakesALevelOfNothing) {
    Compile(SmallMap());
    EXPECT_THAT(ExportedText(), StartsWith("{\"asset\":{\"version\":\"2.0\",\"generator\":\"klvtool\"},\"scene\":0,"));
}

// Faces look to the side from which their corners run counter-clockwise; every wall of a room looks inwards.
TEST_F(Export, TurnsFacesToTheirFrontSide) {
    const klvtool::Scene scene = klvtool::MakeScene(Compile(LitRoom()).level, "room");
    size_t triangles = 0;
    for (const klvtool::Batch& batch : scene.batches) {
        const auto at = [&](size_t i, size_t axis) { return double{batch.positions[3 * batch.triangles[i] + axis]}; };
        for (size_t i = 0; i + 2 < batch.triangles.size(); i += 3, triangles++) {
            double inwards = 0;
            for (size_t axis = 0; axis < 3; axis++) {
                const size_t u = (axis + 1) % 3, v = (axis + 2) % 3;
                const double normal = (at(i + 1, u) - at(i, u)) * (at(i + 2, v) - at(i, v)) -
                                      (at(i + 1, v) - at(i, v)) * (at(i + 2, u) - at(i, u));
                inwards += normal * ((axis == 2 ? 64.0 : 128.0) - at(i, axis));
            }
            EXPECT_GT(inwards, 0) << batch.name << " triangle " << i / 3;
        }
    }
    EXPECT_GE(triangles, 12U);
}

TEST_F(Export, LightmapCoordinatesLieOnTheTexelsOfTheSurface) {
    const auto level = Compile(LitRoom()).level;
    for (const klvtool::Face& face : klvtool::ReadFaces(level, klvtool::ReadTextures(level))) {
        const levelcheck::Surface& surface = level.surfaces[face.surface];
        float lowS = 256, lowT = 256;
        for (const klvtool::Corner& corner : face.corners) {
            lowS = std::min(lowS, corner.lightmap[0] * 256 - 0.5F);
            lowT = std::min(lowT, corner.lightmap[1] * 256 - 0.5F);
        }
        EXPECT_GE(lowS, surface.lightX);
        EXPECT_LT(lowS, surface.lightX + 1);
        EXPECT_GE(lowT, surface.lightY);
        EXPECT_LT(lowT, surface.lightY + 1);
    }
}

using View = Export;

TEST_F(View, IsOnePageThatNeedsNothingElse) {
    Compile(LitRoom());
    EXPECT_EQ(Klvtool({"view", "level.klv", "level.html"}).status, 0);
    const std::string page = ReadFile("level.html");
    EXPECT_THAT(page, StartsWith("<!doctype html>\n"));
    for (const char* reference : {"<link", "<img", " src=\"", "@import"}) EXPECT_THAT(page, Not(HasSubstr(reference)));
    EXPECT_THAT(page, HasSubstr("<script id=\"level\" type=\"text/plain\">Z2xURg")) << "glTF";
    EXPECT_THAT(page, Not(HasSubstr("@LEVEL@")));
}

TEST_F(View, DrawsTheWayOfALeak) {
    SmallMap map;
    map.Add({{0, 0, 0}, {64, 64, 16}}).Start({32, 32, 40});
    Write(map);
    EXPECT_EQ(Klvtool({"leak", "level.$$M", "--html", "leak.html"}).status, 1);
    EXPECT_THAT(ReadFile("leak.html"), HasSubstr(">Z2xURg"));
}

}  // namespace
}  // namespace k2k::test
