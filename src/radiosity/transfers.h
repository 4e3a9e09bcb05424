// Which patches see which others, and how much of its light each one sends there.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "radiosity/light_patch.h"
#include "radiosity/patch_tree.h"
#include "radiosity/shadow_rays.h"

namespace k2k {

// What reaches `to` of the light that `from` sends, if nothing is in the way; 0 for too little, too far, or away from
// one of the two.
float TransferAmount(const PatchSite& from, const PatchSite& to);

// The links between all patches, as lists of the patches that they come from: a bounce gathers along them, and so adds
// in the order of the senders on any number of threads.
class CTransfers {
  public:
    // Both must live as long as links are made.
    CTransfers(const LightPatches& patches, const ShadowRays& rays);

    // A work item: finds the links that lead to a patch.
    void MakeTransfers(int32_t patchIndex);
    // When all links are found: turns amounts into shares of each sender's light.
    void ShareOut();
    // Sorted by the sender.
    std::span<const Transfer> To(int32_t patchIndex) const { return incoming_[static_cast<size_t>(patchIndex)]; }
    // Of all patches, when they are shared out.
    int64_t count() const { return count_; }
    void FreeTransfers();

  private:
    const ShadowRays& rays_;
    CPatchTree tree_;
    std::vector<uint32_t> siteOf_;  // of each patch
    std::vector<std::vector<Transfer>> incoming_;
    int64_t count_ = 0;
};

}  // namespace k2k
