#include "light/sample_repair.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>

#include "driver/build_options.h"
#include "light/near_equal.h"
#include "light/rays.h"

namespace k2k {
namespace {

struct SearchCell {
    int32_t x = 0, y = 0;
};

// In rows; of neighbours at one distance the first comes first.
constexpr std::array<SearchCell, 8> Neighbours{{{-1, -1}, {0, -1}, {1, -1}, {-1, 0}, {1, 0}, {-1, 1}, {0, 1}, {1, 1}}};

// The samples as a grid that searches run over. What a search has visited is marked by its number, so that a new search
// starts without clearing the grid.
class SampleGrid {
  public:
    SampleGrid(std::vector<LightSample>& samples, int32_t width, int32_t height, const Vec3& centre)
        : samples_(samples), width_(width), height_(height), centre_(centre) {
        visitedBy_.resize(samples.size());
        for (const LightSample& sample : samples) {
            validCount_ += sample.valid;
            distances_.push_back(ToCentre(sample));
        }
    }

    // The valid sample that a search from this one reaches first.
    std::optional<size_t> FindValid(size_t from) {
        if (validCount_ == 0) return std::nullopt;
        search_++;
        queue_.assign(1, {static_cast<int32_t>(from) % width_, static_cast<int32_t>(from) / width_});
        for (size_t front = 0; front < queue_.size(); front++) {
            if (const auto found = VisitNeighbours(queue_[front])) return found;
        }
        return std::nullopt;
    }

    void Replace(size_t at, const LightSample& sample) {
        validCount_ -= samples_[at].valid;
        samples_[at] = sample;
        samples_[at].valid = 1;
        validCount_++;
        distances_[at] = ToCentre(sample);
    }

  private:
    enum class State : uint8_t { Open, Closed, Valid };
    struct Ranked {
        SearchCell cell;
        double distance = 0;
    };

    double ToCentre(const LightSample& sample) const { return std::sqrt(LengthSquared(Sub(sample.position, centre_))); }

    bool IsOutside(SearchCell cell) const { return cell.x < 0 || cell.y < 0 || cell.x >= width_ || cell.y >= height_; }

    size_t IndexOf(SearchCell cell) const {
        return static_cast<size_t>(cell.y) * static_cast<size_t>(width_) + static_cast<size_t>(cell.x);
    }

    State StateOf(SearchCell cell) const {
        if (IsOutside(cell)) return State::Closed;
        const size_t index = IndexOf(cell);
        if (samples_[index].valid != 0) return State::Valid;
        return visitedBy_[index] == search_ ? State::Closed : State::Open;
    }

    // Outside the grid, the distance of the cell at its border.
    double DistanceOf(SearchCell cell) const {
        return distances_[IndexOf({std::clamp(cell.x, 0, width_ - 1), std::clamp(cell.y, 0, height_ - 1)})];
    }

    // The eight neighbours, nearest to the centre first; equal ones keep their order.
    std::array<SearchCell, 8> RankNeighbours(SearchCell cell) const {
        std::array<Ranked, 8> ranked;
        size_t count = 0;
        for (const SearchCell& step : Neighbours) {
            const SearchCell next{cell.x + step.x, cell.y + step.y};
            const double distance = DistanceOf(next);
            size_t place = count++;
            for (; place > 0 && distance < ranked[place - 1].distance; place--) ranked[place] = ranked[place - 1];
            ranked[place] = {next, distance};
        }
        std::array<SearchCell, 8> cells;
        std::transform(ranked.begin(), ranked.end(), cells.begin(), [](const Ranked& r) { return r.cell; });
        return cells;
    }

    std::optional<size_t> VisitNeighbours(SearchCell cell) {
        for (const SearchCell& next : RankNeighbours(cell)) {
            const State state = StateOf(next);
            if (state == State::Valid) return IndexOf(next);
            if (state != State::Open) continue;
            visitedBy_[IndexOf(next)] = search_;
            queue_.push_back(next);
        }
        return std::nullopt;
    }

    std::vector<LightSample>& samples_;
    const int32_t width_, height_;
    const Vec3 centre_;
    std::vector<double> distances_;    // of each sample to the centre
    std::vector<uint32_t> visitedBy_;  // number of the last search that visited the cell
    std::vector<SearchCell> queue_;
    uint32_t search_ = 0;
    size_t validCount_ = 0;
};

}  // namespace

void RepairSamples(std::vector<LightSample>& samples, int32_t width, int32_t height, const Vec3& centre) {
    if (Options().preview) {
        for (LightSample& sample : samples) sample.valid = 1;
        return;
    }
    std::optional<SampleGrid> grid;
    Vec3 lastBad = NoPosition;
    LightSample replacement;
    for (size_t i = 0; i < samples.size(); i++) {
        if (samples[i].valid != 0) continue;
        if (!grid) grid.emplace(samples, width, height, centre);
        if (NearlyEqual(lastBad, samples[i].position, SpotSize)) {
            grid->Replace(i, replacement);
            continue;
        }
        lastBad = samples[i].position;
        replacement = samples[i];
        const std::optional<size_t> found = grid->FindValid(i);
        if (!found || !IsShadowed(samples[*found].position, samples[i].position)) continue;
        grid->Replace(i, samples[*found]);
        replacement = samples[i];
    }
}

}  // namespace k2k
