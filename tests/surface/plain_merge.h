// Merging across leaves by comparing all pairs of a plane, to hold the indexed form against.
#pragma once

#include <memory>
#include <vector>

#include "surface/plane_merger.h"

namespace k2k::test {

class PlainMerge {
  public:
    explicit PlainMerge(const std::vector<CBlockFace*>& entries) {
        for (CBlockFace* entry : entries) pairs_.push_back({entry, nullptr});
    }

    int Run() {
        int merges = 0;
        for (size_t i = 0; i < pairs_.size(); ++i) {
            for (size_t j = i + 1; j < pairs_.size(); ++j) {
                const CBlockFace* a = Current(i);
                const CBlockFace* b = Current(j);
                if (a == b) continue;
                std::shared_ptr<CBlockFace> merged = TryMergeAcross(*a, *b);
                if (merged == nullptr) continue;
                for (size_t k = 0; k < pairs_.size(); ++k) {
                    if (k != i && k != j && (Current(k) == a || Current(k) == b)) pairs_[k].merged = merged;
                }
                pairs_[i].merged = merged;
                pairs_[j].merged = merged;
                ++merges;
            }
        }
        return merges;
    }

    const CBlockFace* Current(size_t i) const {
        return pairs_[i].merged != nullptr ? pairs_[i].merged.get() : pairs_[i].face;
    }

  private:
    struct Pair {
        CBlockFace* face;
        std::shared_ptr<CBlockFace> merged;
    };
    std::vector<Pair> pairs_;
};

}  // namespace k2k::test
