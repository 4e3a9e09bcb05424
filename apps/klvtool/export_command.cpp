#include <filesystem>

#include "klvtool/command.h"
#include "klvtool/gltf.h"

namespace klvtool {

int RunExport(Arguments arguments) {
    const ParsedArguments parsed = ParseArguments(arguments, 2, "export LEVEL OUT.glb");
    const std::string name = std::filesystem::path(parsed.names[0]).stem().string();
    SaveFile(parsed.names[1], MakeGlb(MakeScene(LoadLevel(parsed.names[0]), ToUtf8(name))));
    return 0;
}

}  // namespace klvtool
