// A palette file of one format, put into a level by the colour stage. FUZZ_PALETTE is its name on the command line, and
// FUZZ_PALETTE_FILE its name on the disk.
#include "colour/colour_stage.h"
#include "driver/build_options.h"
#include "fuzzing.h"

namespace k2k::fuzz {
namespace {

void TakePalette(std::string_view palette) {
    PutFile(FUZZ_PALETTE_FILE, palette);
    RunStep([] {
        ParseOptions("level -pal " FUZZ_PALETTE);
        RunColourStage();
    });
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 4096, k2k::fuzz::TakePalette);
}
