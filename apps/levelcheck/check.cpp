#include "levelcheck/check.h"

#include <algorithm>

#include "levelcheck/fault_list.h"

namespace levelcheck {

std::vector<Fault> Check(const LevelView& level, const CheckOptions& options) {
    FaultList faults;
    for (const std::string& broken : level.broken) faults.Add(broken, broken);
    if (level.version == 0) return faults.Take();
    CheckChunks(level, faults);
    CheckIndices(level, faults);
    CheckSurfaces(level, options, faults);
    CheckTrees(level, faults);
    CheckVisibility(level, faults);
    CheckLightmaps(level, options, faults);
    CheckEntities(level, faults);
    CheckTextures(level, faults);
    CheckMeshes(level, options, faults);
    return faults.Take();
}

bool IsSound(const std::vector<Fault>& faults) {
    return std::all_of(faults.begin(), faults.end(), [](const Fault& fault) { return fault.tolerated; });
}

std::string Describe(const std::vector<Fault>& faults) {
    std::string text;
    for (const Fault& fault : faults) {
        text += (fault.tolerated ? "note: " : "fault: ") + fault.kind + ", " + std::to_string(fault.count) +
                " times, first: " + fault.first + "\n";
    }
    return text;
}

}  // namespace levelcheck
