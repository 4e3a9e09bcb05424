#include "radiosity/transfers.h"

#include <cmath>
#include <new>

#include "driver/build_log.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double NearestSquared = 0.0001;
constexpr double FarthestSquared = 9000000;  // 3,000 units
constexpr double SmallestTransfer = 0.0001;

}  // namespace

float TransferAmount(const PatchSite& from, const PatchSite& to) {
    const Vec3 delta = Sub(to.origin, from.origin);
    const double d2 = LengthSquared(delta);
    if (!(d2 >= NearestSquared && d2 < FarthestSquared)) return 0;
    const double inv = 1 / d2;
    const double shrink = std::sqrt(inv);
    Vec3 dir;
    for (size_t c = 0; c < 3; c++) dir[c] = static_cast<float>(delta[c] * shrink);
    const double dotTo = Dot(dir, to.normal);
    if (dotTo > 0) return 0;
    const double cosine = -Dot(dir, from.normal) * dotTo;
    if (!(cosine > 0)) return 0;
    const double amount = cosine * to.area * inv;
    return amount < SmallestTransfer ? 0 : static_cast<float>(amount);
}

CTransfers::CTransfers(const LightPatches& patches, const ShadowRays& rays)
    : rays_(rays), incoming_(patches.patches.size()) {
    sites_.reserve(patches.patches.size());
    for (const CLightPatch& patch : patches.patches) sites_.push_back({patch.origin, patch.normal, patch.area});
}

void CTransfers::MakeTransfers(int32_t patchIndex) {
    const auto self = static_cast<uint32_t>(patchIndex);
    const PatchSite& to = sites_[self];
    std::vector<Transfer> found;
    for (uint32_t i = 0; i < sites_.size(); i++) {
        if (i == self) continue;
        const float amount = TransferAmount(sites_[i], to);
        if (!(amount > 0) || rays_.IsBlocked(sites_[i].origin, to.origin)) continue;
        found.push_back({i, amount});
    }
    try {
        incoming_[self].assign(found.begin(), found.end());
    } catch (const std::bad_alloc&) {
        FatalError("Memory allocation failure");
    }
}

void CTransfers::ShareOut() {
    // Summed in the order of the receivers, in 32 bits, as each sender's own list would be.
    std::vector<float> totals(sites_.size());
    std::vector<int32_t> numtransfers(sites_.size());
    for (const auto& list : incoming_) {
        for (const Transfer& link : list) {
            totals[link.patch] += link.factor;
            numtransfers[link.patch]++;
        }
    }
    count_ = 0;
    for (const int32_t number : numtransfers) {
        if (number < 0 || static_cast<size_t>(number) > sites_.size()) FatalError("Weird numtransfers");
        count_ += number;
    }
    for (auto& list : incoming_) {
        for (Transfer& link : list) link.factor /= totals[link.patch];
    }
}

void CTransfers::FreeTransfers() {
    incoming_.clear();
    incoming_.shrink_to_fit();
}

}  // namespace k2k
