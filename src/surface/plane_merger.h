// Joins the faces of one plane that leaves list, over the borders of regions.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "solid/block_face.h"
#include "surface/near_point_index.h"

namespace k2k {

// The face that covers both, if there is one and a single lightmap piece can still cover it; else null.
std::unique_ptr<CBlockFace> TryMergeAcross(const CBlockFace& a, const CBlockFace& b);

// Each entry in turn is joined with every later one that it can be joined with, in order; whatever has been joined
// stands for all its entries. Only faces that share a side can be joined, so partners are looked up by the middles of
// their sides.
class PlaneMerger {
  public:
    // Entries in the order of listing; a face that several leaves list stands there several times.
    explicit PlaneMerger(std::vector<CBlockFace*> entries);

    // Returns the number of merges.
    int32_t Run();

    // Sets surfaceOut of every entry: the face that replaced it, or null. Hands over the faces that are in force.
    std::vector<std::unique_ptr<CBlockFace>> TakeMergedFaces();

  private:
    struct Form {
        const CBlockFace* face;             // null once it was joined with another
        std::unique_ptr<CBlockFace> owned;  // set when it came out of a merge
        std::vector<int32_t> places;        // entries that it stands for, rising
    };
    struct Candidate {
        int32_t place;  // the first behind the place in work
        int32_t form;
        bool operator<(const Candidate& other) const { return place < other.place; }
        bool operator==(const Candidate& other) const { return place == other.place; }
    };
    struct Partner {
        Candidate at;
        std::unique_ptr<CBlockFace> merged;
    };

    int32_t AddForm(Form form);
    void EnterFirstForms();
    std::vector<Candidate> Candidates(int32_t form, int32_t place) const;
    std::optional<Partner> NextPartner(int32_t form, int32_t place) const;
    int32_t Join(int32_t a, int32_t b, std::unique_ptr<CBlockFace> merged);

    std::vector<CBlockFace*> entries_;
    std::vector<int32_t> formOf_;  // by entry
    std::vector<Form> forms_;
    NearPointIndex sides_;
};

}  // namespace k2k
