// A level file, lit on both roads as it is.
#include "fuzzing.h"
#include "light/lighting_stage.h"

namespace k2k::fuzz {
namespace {

void LightInput(std::string_view level) {
    RunStageOnLevel(level, "-ambrgb 10 10 10 -solidsky", RunLightingStage);
    RunStageOnLevel(level, "-litv2 -radbounce 2", RunRadiosityStage);
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 32768, k2k::fuzz::LightInput);
}
