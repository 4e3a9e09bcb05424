#include "bsp/build_files.h"

#include <array>
#include <cstdio>
#include <string>

#include "driver/build_log.h"
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

std::array<const std::string*, 4> BuildFiles() {
    const BuildPaths& paths = Paths();
    return {&paths.LevelPath, &paths.PortalPath, &paths.VisPath, &paths.EntPath};
}

}  // namespace

void FormInterimPaths() {
    BuildPaths& paths = Paths();
    paths.PortalPath = WithExtension(paths.LevelPath, ".$$p");
    paths.VisPath = WithExtension(paths.LevelPath, ".$$v");
    paths.EntPath = WithExtension(paths.LevelPath, ".$$e");
}

void KeepMapFromBuildFiles() {
    const std::string& map = Paths().MapPath;
    for (const std::string* path : BuildFiles()) {
        if (*path == map) FatalError("\nUnrecognized map file format %s !", map.c_str());
    }
}

void RemoveBuildFiles() {
    for (const std::string* path : BuildFiles()) std::remove(path->c_str());
}

void StartOver() {
    ClearEntities();
    ClearDataSets();
    RemoveBuildFiles();
}

}  // namespace k2k
