// The options record of the running build, its defaults, and the rules between options.
#include "driver/build_options.h"

#include <algorithm>
#include <thread>

namespace k2k {

bool OptionsValid = false;

BuildOptions& Options() {
    static BuildOptions options;
    return options;
}

BuildPaths& Paths() {
    static BuildPaths paths;
    return paths;
}

void ResetOptions() {
    BuildOptions& o = Options();
    o.lmambient = 50.0F;
    o.gamma = 1.5F;
    o.zoomlevel = 1.0F;
    o.jitter = 8;
    o.sizeshaded = 236;
    o.sizeflat = o.sizeturb = 0;
    o.litcomp = 0.5F;
    o.litmax = 196;
    o.litscale = 0.5F;
    o.radsubdiv = 64;
    o.radbounce = 16;
    o.hiprec = true;
    o.verbose = o.quiet = o.writelog = o.close = false;
    o.preview = o.entsonly = o.texsonly = o.lightsonly = o.litmapsonly = o.notables = o.noportals = false;
    o.nobsp = o.mesh = o.litv2 = o.nh = o.autozoom = o.keepportal = false;
    o.solidsky = o.nodetail = o.forcedetail = o.invisibletonone = o.mergeacross = o.nofill = o.notjunc = false;
    o.mono = o.nod3dlmaps = o.draw = o.noclip = false;
}

bool ValidateOptions() {
    BuildOptions& o = Options();
    if (o.lightsonly) o.entsonly = false;
    if (o.nobsp) {
        if (o.mesh)
            o.nh = o.noportals = o.nodetail = true;
        else
            o.nobsp = false;
    }
    return !Paths().MapPath.empty() && o.palgiven;
}

void EnableMesh() {
    Options().mesh = true;
    ValidateOptions();
}

int32_t GetWorkerCount() {
    return std::clamp(static_cast<int32_t>(std::thread::hardware_concurrency()), 1, MaxThreads);
}

void ResetAllOptionsForTest() {
    Options() = BuildOptions();
    Paths() = BuildPaths();
    OptionsValid = false;
}

}  // namespace k2k
