#include "radiosity/bounce_light.h"

#include <algorithm>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "radiosity/worker_pool.h"

namespace k2k {
namespace {

void EmitDirectLight(CLightPatch& patch) {
    for (size_t c = 0; c < 3; c++) {
        patch.emit[c] =
            static_cast<float>(static_cast<double>(patch.samplelight[c]) * patch.reflectivity[c] * patch.area);
    }
}

}  // namespace

void BounceLight(LightPatches& patches, const CTransfers& transfers) {
    for (CLightPatch& patch : patches.patches) EmitDirectLight(patch);
    const int32_t iterations = Options().radbounce;
    for (int32_t i = 0; i < iterations; i++) {
        BuildLog(" \nIteration %i of %i ...", i + 1, iterations);
        RunOnThreads(patches.count(), false, [&](int32_t patch) { ShootLight(patches, transfers, patch); });
        BuildLog(" transfered: %f ", static_cast<double>(CollectLight(patches)));
        BuildLog("... ok");
    }
}

void ShootLight(LightPatches& patches, const CTransfers& transfers, int32_t patchIndex) {
    Vec3 send{};
    for (const Transfer& link : transfers.To(patchIndex)) {
        const Vec3& emit = patches.patches[link.patch].emit;
        for (size_t c = 0; c < 3; c++) {
            send[c] = static_cast<float>(send[c] + static_cast<double>(emit[c]) * link.factor);
        }
    }
    patches[patchIndex].send = send;
}

float CollectLight(LightPatches& patches) {
    float total = 0;
    for (CLightPatch& patch : patches.patches) {
        if (patch.sky) {
            patch.emit = {};
        } else {
            for (size_t c = 0; c < 3; c++) {
                patch.totallight[c] =
                    static_cast<float>(patch.totallight[c] + static_cast<double>(patch.send[c]) / patch.area);
                patch.emit[c] = patch.send[c] * patch.reflectivity[c];
            }
            const double shot = static_cast<double>(patch.emit[0]) + patch.emit[1] + patch.emit[2];
            total = static_cast<float>(total + shot);
        }
        patch.send = {};
    }
    return total;
}

void CheckPatches(const LightPatches& patches) {
    const auto isNegative = [](float component) { return component < 0; };
    for (const CLightPatch& patch : patches.patches) {
        if (std::any_of(patch.totallight.begin(), patch.totallight.end(), isNegative)) {
            FatalError("Negative patch totallight\n");
        }
    }
}

}  // namespace k2k
