// Collects faults by kind.
#pragma once

#include <string>
#include <vector>

#include "levelcheck/check.h"

namespace levelcheck {

class FaultList {
  public:
    void Add(const std::string& kind, const std::string& example) { Note(kind, example, false); }
    void Tolerate(const std::string& kind, const std::string& example) { Note(kind, example, true); }
    // Adds the fault unless the condition holds.
    void Require(bool holds, const std::string& kind, const std::string& example) {
        if (!holds) Add(kind, example);
    }
    std::vector<Fault> Take() { return std::move(faults_); }

  private:
    void Note(const std::string& kind, const std::string& example, bool tolerated) {
        for (Fault& fault : faults_) {
            if (fault.kind != kind) continue;
            fault.count++;
            return;
        }
        faults_.push_back({kind, 1, example, tolerated});
    }

    std::vector<Fault> faults_;
};

void CheckChunks(const LevelView& level, FaultList& faults);
void CheckIndices(const LevelView& level, FaultList& faults);
void CheckSurfaces(const LevelView& level, const CheckOptions& options, FaultList& faults);
void CheckTrees(const LevelView& level, FaultList& faults);
void CheckVisibility(const LevelView& level, FaultList& faults);
void CheckLightmaps(const LevelView& level, const CheckOptions& options, FaultList& faults);
void CheckEntities(const LevelView& level, FaultList& faults);
void CheckTextures(const LevelView& level, FaultList& faults);
void CheckMeshes(const LevelView& level, const CheckOptions& options, FaultList& faults);

}  // namespace levelcheck
