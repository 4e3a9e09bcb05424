#include "surface/plane_merger.h"

#include <algorithm>
#include <limits>
#include <unordered_map>

#include "driver/build_options.h"
#include "levelfile/texture_data.h"
#include "solid/csg.h"
#include "solid/vectors.h"
#include "surface/texel_size.h"

namespace k2k {

namespace {

// Sides that join differ by 0.001 at most; the rest covers rounding.
constexpr double SideMargin = 0.002;

double Range(const std::vector<Vec3>& points, const Vec3& axis) {
    double low = std::numeric_limits<double>::max();
    double high = std::numeric_limits<double>::lowest();
    for (const Vec3& point : points) {
        const double at = Dot(point, axis);
        low = std::min(low, at);
        high = std::max(high, at);
    }
    return high - low;
}

bool FitsLightmapPiece(const CBlockFace& face) {
    TexelSize texels;
    if (!SurfaceTexelSize(face, texels)) return true;
    const double limit = (texels.size + 0.5) * Options().zoomlevel;
    const Texinfo& texinfo = Textures().GetTexinfo(face.texinfo);
    return !(Range(face.points, texinfo.vecS) > limit) && !(Range(face.points, texinfo.vecT) > limit);
}

template <typename Visit>
void ForEachSideMiddle(const CBlockFace& face, Visit visit) {
    for (size_t i = 0; i < face.points.size(); ++i) {
        const Vec3d a = Widen(face.points[i]);
        const Vec3d b = Widen(face.points[(i + 1) % face.points.size()]);
        visit(Vec3d{(a[0] + b[0]) * 0.5, (a[1] + b[1]) * 0.5, (a[2] + b[2]) * 0.5});
    }
}

}  // namespace

std::unique_ptr<CBlockFace> TryMergeAcross(const CBlockFace& a, const CBlockFace& b) {
    std::unique_ptr<CBlockFace> merged = TryMerge(a, b);
    if (merged != nullptr && !FitsLightmapPiece(*merged)) merged.reset();
    return merged;
}

PlaneMerger::PlaneMerger(std::vector<CBlockFace*> entries) : entries_(std::move(entries)), formOf_(entries_.size()) {
    EnterFirstForms();
}

void PlaneMerger::EnterFirstForms() {
    std::unordered_map<const CBlockFace*, int32_t> formOfFace;
    for (size_t place = 0; place < entries_.size(); ++place) {
        const auto [known, isNew] = formOfFace.try_emplace(entries_[place], static_cast<int32_t>(forms_.size()));
        if (isNew) AddForm({entries_[place], nullptr, {}});
        formOf_[place] = known->second;
        forms_[static_cast<size_t>(known->second)].places.push_back(static_cast<int32_t>(place));
    }
}

int32_t PlaneMerger::AddForm(Form form) {
    const auto number = static_cast<int32_t>(forms_.size());
    ForEachSideMiddle(*form.face, [&](const Vec3d& middle) { sides_.Add(0, middle, number); });
    forms_.push_back(std::move(form));
    return number;
}

int32_t PlaneMerger::Run() {
    int32_t merges = 0;
    for (size_t place = 0; place < entries_.size(); ++place) {
        int32_t form = formOf_[place];
        auto from = static_cast<int32_t>(place);
        while (std::optional<Partner> partner = NextPartner(form, from)) {
            form = Join(form, partner->at.form, std::move(partner->merged));
            from = partner->at.place;
            ++merges;
        }
    }
    return merges;
}

// Other forms with a side near one of the form's, each at its first place behind the given one, in order of place.
std::vector<PlaneMerger::Candidate> PlaneMerger::Candidates(int32_t form, int32_t place) const {
    std::vector<Candidate> candidates;
    ForEachSideMiddle(*forms_[static_cast<size_t>(form)].face, [&](const Vec3d& middle) {
        sides_.ForEachNear(0, middle, SideMargin, [&](int32_t other) {
            const Form& candidate = forms_[static_cast<size_t>(other)];
            if (other == form || candidate.face == nullptr) return;
            const auto behind = std::upper_bound(candidate.places.begin(), candidate.places.end(), place);
            if (behind != candidate.places.end()) candidates.push_back({*behind, other});
        });
    });
    std::sort(candidates.begin(), candidates.end());
    candidates.erase(std::unique(candidates.begin(), candidates.end()), candidates.end());
    return candidates;
}

// The first place behind the given one whose face can be joined. A form that refuses does so at each of its places.
std::optional<PlaneMerger::Partner> PlaneMerger::NextPartner(int32_t form, int32_t place) const {
    const CBlockFace& face = *forms_[static_cast<size_t>(form)].face;
    for (const Candidate& candidate : Candidates(form, place)) {
        auto merged = TryMergeAcross(face, *forms_[static_cast<size_t>(candidate.form)].face);
        if (merged != nullptr) return Partner{candidate, std::move(merged)};
    }
    return std::nullopt;
}

int32_t PlaneMerger::Join(int32_t a, int32_t b, std::unique_ptr<CBlockFace> merged) {
    Form form{merged.get(), std::move(merged), {}};
    const std::vector<int32_t>& placesA = forms_[static_cast<size_t>(a)].places;
    const std::vector<int32_t>& placesB = forms_[static_cast<size_t>(b)].places;
    std::merge(placesA.begin(), placesA.end(), placesB.begin(), placesB.end(), std::back_inserter(form.places));
    forms_[static_cast<size_t>(a)] = {};
    forms_[static_cast<size_t>(b)] = {};
    for (const int32_t place : form.places) formOf_[static_cast<size_t>(place)] = static_cast<int32_t>(forms_.size());
    return AddForm(std::move(form));
}

std::vector<std::unique_ptr<CBlockFace>> PlaneMerger::TakeMergedFaces() {
    for (size_t place = 0; place < entries_.size(); ++place) {
        entries_[place]->surfaceOut = forms_[static_cast<size_t>(formOf_[place])].owned.get();
    }
    std::vector<std::unique_ptr<CBlockFace>> merged;
    for (Form& form : forms_) {
        if (form.owned != nullptr) merged.push_back(std::move(form.owned));
    }
    return merged;
}

}  // namespace k2k
