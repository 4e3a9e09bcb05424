// A level file. Each way to update one begins with the file as it is; its lighting has a target of its own.
#include "bsp/geometry_stage.h"
#include "colour/colour_stage.h"
#include "fuzzing.h"
#include "vis/visibility_stage.h"

namespace k2k::fuzz {
namespace {

constexpr std::string_view Map =
    "version 711\n{\n0 textures.$$w\npalette.raw\n{\nvertices 4\nfaces 4\n0 0 0\n64 0 0\n0 64 0\n0 0 64\n"
    "{ 00000000 ndef }\n3 0 1 2 : BRICK ( 1 0 0 0 ) ( 0 1 0 0 )\n3 0 3 1 : BRICK ( 1 0 0 0 ) ( 0 0 1 0 )\n"
    "3 0 2 3 : BRICK ( 0 1 0 0 ) ( 0 0 1 0 )\n3 1 3 2 : *WATER ( 1 0 0 0 ) ( 0 1 0 0 )\n}\n}\n"
    "{\n5 40 50\n}\n{\n2 40 40 40 0 0 0 200 190 180 300\n}\n";

constexpr std::string_view Portals = "PRT1\n2\n1\n4 0 1 (0 0 0 ) (0 0 64 ) (0 64 64 ) (0 64 0 )\n";

void UpdateInput(std::string_view level) {
    PutFile("level.$$M", Map);
    PutFile("level.$$p", Portals);
    PutTexturesAndPalette();
    RunStageOnLevel(level, "-entsonly", RunGeometryStage);
    RunStageOnLevel(level, "-texsonly", RunGeometryStage);
    RunStageOnLevel(level, "-zoomlevel 3", VisibilityStage);
    RunStageOnLevel(level, "-nod3dlmaps", RunColourStage);
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 32768, k2k::fuzz::UpdateInput);
}
