#include "radiosity/transfers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <new>

#include "driver/build_log.h"
#include "solid/vectors.h"

namespace k2k {
namespace {

constexpr double NearestSquared = 0.0001;
constexpr double FarthestSquared = 9000000;  // 3,000 units
constexpr double SmallestTransfer = 0.0001;

// Differences of 32-bit origins and directions are off by less than this in distances along a normal, up to the
// farthest transfer.
constexpr double PlaneMargin = 0.01;
constexpr double SquareMargin = 1.0001;

// The shadows of the obstacles that lately hid something from a patch, the latest first.
class RecentShadows {
  public:
    RecentShadows(const ShadowRays& rays, const Vec3& end) : rays_(rays), end_(end), isOpen_(rays.IsOpen(end)) {
        for (size_t i = 0; i < entries_.size(); i++) order_[i] = &entries_[i];
    }

    bool Contain(const Vec3& point) {
        return FindFirst([&](const Entry& entry) { return entry.shadow.Contains(point); });
    }
    bool ContainBox(const SiteBounds& box) {
        return FindFirst([&](const Entry& entry) { return entry.shadow.ContainsBox(box.mins, box.maxs); });
    }

    // Takes the shadow of an obstacle in, at the cost of the one that has been of no use for longest.
    void Remember(Blocker blocker) {
        if (!isOpen_) return;
        if (FindFirst([&](const Entry& entry) { return entry.blocker == blocker; })) return;
        Entry& spare = *order_.back();
        spare.shadow.count = 0;
        if (!rays_.CastShadow(blocker, end_, spare.shadow)) return;
        spare.blocker = blocker;
        used_ = std::min(used_ + 1, MaxShadows);
        MoveToFront(MaxShadows);
    }

  private:
    static constexpr size_t MaxShadows = 4;
    struct Entry {
        Blocker blocker = NoBlocker;
        ShadowVolume shadow;
    };

    // Whether one of the entries in use is what is looked for; it comes to the front.
    template <typename IsIt>
    bool FindFirst(IsIt isIt) {
        for (size_t i = 0; i < used_; i++) {
            if (!isIt(*order_[i])) continue;
            MoveToFront(i);
            return true;
        }
        return false;
    }
    void MoveToFront(size_t i) {
        std::rotate(order_.begin(), order_.begin() + static_cast<ptrdiff_t>(i),
                    order_.begin() + static_cast<ptrdiff_t>(i) + 1);
    }

    const ShadowRays& rays_;
    const Vec3 end_;
    const bool isOpen_;
    std::array<Entry, MaxShadows + 1> entries_;  // one is spare
    std::array<Entry*, MaxShadows + 1> order_{};
    size_t used_ = 0;
};

// Finds all patches that send light to one.
class SenderSearch {
  public:
    SenderSearch(const CPatchTree& tree, const ShadowRays& rays, uint32_t site)
        : tree_(tree),
          rays_(rays),
          self_(site),
          to_(tree.sites()[site]),
          height_(Dot(to_.origin, to_.normal)),
          margin_(PlaneMargin * tree.longestNormal()),
          shadows_(rays, to_.origin) {
        strongest_ = to_.area * tree.longestNormal() / SmallestTransfer * SquareMargin;
        const double nearestCosine = std::sqrt(LengthSquared(to_.normal));
        reachSquared_ = std::min(FarthestSquared, strongest_ * nearestCosine) * SquareMargin;
    }

    // Sorted by the sender.
    std::vector<Transfer> FindAll() {
        const auto& nodes = tree_.nodes();
        for (uint32_t i = 0; i < nodes.size();) {
            const PatchNode& node = nodes[i];
            if (IsOutOfSight(node.bounds)) {
                i = node.end;
                continue;
            }
            if (node.IsLeaf(i)) SearchGroup(tree_.groups()[node.firstGroup]);
            i++;
        }
        std::sort(found_.begin(), found_.end(), [](const Transfer& a, const Transfer& b) { return a.patch < b.patch; });
        return std::move(found_);
    }

  private:
    // An amount is area * cosine * cosine / distance^2, and a cosine is height / distance: with the largest height of a
    // box over this patch's plane and its distance, no patch in the box sends more than that. Also asks the shadows.
    bool IsOutOfSight(const SiteBounds& bounds) {
        boxHeight_ = bounds.Highest(to_.normal) - height_ + margin_;
        if (boxHeight_ < 0) return true;
        boxSquared_ = bounds.DistanceSquared(to_.origin);
        if (boxSquared_ > reachSquared_) return true;
        const double most = strongest_ * boxHeight_;
        if (most * most < boxSquared_ * boxSquared_ * boxSquared_) return true;
        return shadows_.ContainBox(bounds);
    }

    // Of the box that was looked at last.
    void SearchGroup(const PatchGroup& group) {
        if (group.flat) {
            const double groupHeight = Dot(to_.origin, group.normal) - group.lowest + margin_;
            if (groupHeight < 0) return;
            if (strongest_ * boxHeight_ * groupHeight < boxSquared_ * boxSquared_) return;
        }
        for (uint32_t site = group.first; site < group.first + group.count; site++) {
            if (site != self_) TrySender(site);
        }
    }

    void TrySender(uint32_t site) {
        const PatchSite& from = tree_.sites()[site];
        const Vec3 delta = Sub(to_.origin, from.origin);
        if (Dot(delta, to_.normal) > margin_ || Dot(delta, from.normal) < -margin_) return;
        const float amount = TransferAmount(from, to_);
        if (!(amount > 0) || shadows_.Contain(from.origin) || IsBlocked(from.origin)) return;
        found_.push_back({tree_.patchAt()[site], amount});
    }

    bool IsBlocked(const Vec3& start) {
        Blocker blocker = NoBlocker;
        if (!rays_.IsBlocked(start, to_.origin, blocker)) return false;
        if (blocker != NoBlocker) shadows_.Remember(blocker);
        return true;
    }

    const CPatchTree& tree_;
    const ShadowRays& rays_;
    const uint32_t self_;
    const PatchSite& to_;
    const double height_;   // of the patch along its normal
    const double margin_;   // of distances along normals
    double strongest_ = 0;  // area with cosines of 1, in smallest transfers
    double reachSquared_ = 0;
    double boxHeight_ = 0, boxSquared_ = 0;
    RecentShadows shadows_;
    std::vector<Transfer> found_;
};

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
    : rays_(rays), tree_(patches), siteOf_(patches.patches.size()), incoming_(patches.patches.size()) {
    const auto& patchAt = tree_.patchAt();
    for (uint32_t site = 0; site < patchAt.size(); site++) siteOf_[patchAt[site]] = site;
}

void CTransfers::MakeTransfers(int32_t patchIndex) {
    const auto patch = static_cast<size_t>(patchIndex);
    try {
        const std::vector<Transfer> found = SenderSearch(tree_, rays_, siteOf_[patch]).FindAll();
        incoming_[patch].assign(found.begin(), found.end());
    } catch (const std::bad_alloc&) {
        FatalError("Memory allocation failure");
    }
}

void CTransfers::ShareOut() {
    // Summed in the order of the receivers, in 32 bits, as each sender's own list would be.
    const size_t patchCount = incoming_.size();
    std::vector<float> totals(patchCount);
    std::vector<int32_t> numtransfers(patchCount);
    for (const auto& list : incoming_) {
        for (const Transfer& link : list) {
            totals[link.patch] += link.factor;
            numtransfers[link.patch]++;
        }
    }
    count_ = 0;
    for (const int32_t number : numtransfers) {
        if (number < 0 || static_cast<size_t>(number) > patchCount) FatalError("Weird numtransfers");
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
