// A map: read for its entities alone, with precise planes, and with rounded ones, which may read it twice.
#include "driver/build_options.h"
#include "fuzzing.h"
#include "levelfile/entity_data.h"
#include "mapread/entity.h"
#include "mapread/read_map.h"

namespace k2k::fuzz {
namespace {

void ReadAsLevel(bool entitiesOnly, bool hiprec) {
    RunStep([=] {
        TakeOptions("-verbose");
        Options().hiprec = hiprec;
        ReadMap(entitiesOnly);
        BuildEntityChunk(EntityKeyLists());
    });
}

void ReadEachWay(std::string_view map) {
    PutFile("level.$$M", map);
    ReadAsLevel(true, true);
    ReadAsLevel(false, true);
    ReadAsLevel(false, false);
}

}  // namespace
}  // namespace k2k::fuzz

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    return k2k::fuzz::RunInput(data, size, 16384, k2k::fuzz::ReadEachWay);
}
