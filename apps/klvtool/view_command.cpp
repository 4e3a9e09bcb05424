#include <filesystem>

#include "klvtool/command.h"
#include "klvtool/view_page.h"

namespace klvtool {

int RunView(Arguments arguments) {
    const ParsedArguments parsed = ParseArguments(arguments, 2, "view LEVEL OUT.html");
    const std::string name = std::filesystem::path(parsed.names[0]).stem().string();
    SaveFile(parsed.names[1], MakeViewPage(MakeScene(LoadLevel(parsed.names[0]), ToUtf8(name))));
    return 0;
}

}  // namespace klvtool
