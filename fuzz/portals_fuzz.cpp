// A portal file, for a level that has the number of regions that it names.
#include <algorithm>
#include <cstdio>

#include "driver/build_options.h"
#include "fuzzing.h"
#include "levelfile/file_klv.h"
#include "levelfile/portal_data.h"
#include "vis/visibility_stage.h"

namespace k2k::fuzz {
namespace {

struct Head {
    int regions = 0, portals = 0;
};

Head ReadHead(std::string_view file) {
    Head head;
    std::sscanf(std::string(file.substr(0, 200)).c_str(), "%*79s %i %i", &head.regions, &head.portals);
    return head;
}

void SaveLevel(int regions) {
    Portals().regions.resize(static_cast<size_t>(std::clamp(regions, 0, 300)) + 1);
    CFileKLV level(Paths().LevelPath);
    level.Open(false);
    level.Save();
}

void SeeThrough(std::string_view file) {
    PutFile("level.$$p", file);
    const Head head = ReadHead(file);
    RunStep([&] {
        TakeOptions("-zoomlevel 2");
        SaveLevel(head.regions);
        ClearDataSets();
        // The whole flow takes exponential time in a graph that no level has.
        constexpr int MostForFlow = 12;
        Options().fast = head.portals > MostForFlow;
        VisibilityStage();
    });
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 8192, k2k::fuzz::SeeThrough);
}
