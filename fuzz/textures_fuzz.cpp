// A texture file, for a map that uses some names and for the sizes that meshes ask for.
#include "fuzzing.h"
#include "levelfile/texture_data.h"
#include "texture/texture_store.h"

namespace k2k::fuzz {
namespace {

void LoadInput(std::string_view wad) {
    PutFile("textures.$$w", wad);
    RunStep([] {
        for (const char* name : {"BRICK", "*WATER", "NOWHERE"}) Textures().FindTextureName(name);
        LoadTextures("textures.wad", "level.$$M");
        for (uint32_t texture = 0; texture <= Textures().names.size(); ++texture) Textures().ImageSize(texture);
    });
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 16384, k2k::fuzz::LoadInput);
}
