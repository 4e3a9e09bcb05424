#include "bsp/build_files.h"

#include <cstdio>
#include <string>

#include "driver/build_options.h"
#include "driver/token_scanner.h"
#include "levelfile/file_klv.h"
#include "mapread/entity.h"

namespace k2k {
namespace {

std::string WithExtension(std::string path, std::string_view extension) {
    StripExtension(path);
    return path.append(extension);
}

}  // namespace

void FormInterimPaths() {
    BuildPaths& paths = Paths();
    paths.PortalPath = WithExtension(paths.LevelPath, ".$$p");
    paths.VisPath = WithExtension(paths.LevelPath, ".$$v");
    paths.EntPath = WithExtension(paths.LevelPath, ".$$e");
}

void RemoveBuildFiles() {
    const BuildPaths& paths = Paths();
    for (const std::string* path : {&paths.LevelPath, &paths.PortalPath, &paths.VisPath, &paths.EntPath}) {
        std::remove(path->c_str());
    }
}

void StartOver() {
    ClearEntities();
    ClearDataSets();
    RemoveBuildFiles();
}

}  // namespace k2k
