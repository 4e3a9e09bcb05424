// The boxes that blocks are expanded by, and the state that block building keeps between blocks.
#include "driver/build_options.h"
#include "solid/block_state.h"

namespace k2k {

namespace {

// A box of a width, a height, and an offset that moves it down.
HullBox BoxOf(const std::array<float, 3>& size) {
    const double width = size[0];
    const double height = size[1];
    const double offset = size[2];
    const auto side = static_cast<float>(width / 2);
    return {{-side, -side, static_cast<float>(-(height / 2 + offset))},
            {side, side, static_cast<float>(height / 2 - offset)}};
}

}  // namespace

BlockState& Blocks() {
    static BlockState state;
    return state;
}

std::array<HullBox, 3>& HullBoxes() {
    return Blocks().hullBoxes;
}

void ComputeHullBoxes() {
    BuildOptions& options = Options();
    if (options.nh) options.narrow = {};
    const std::array<HullBox, 3> kinds{HullBox{}, BoxOf(options.narrow), BoxOf(options.fat)};
    for (size_t row = 0; row < kinds.size(); ++row) {
        const int32_t kind = options.sethulls[row];
        if (kind >= 0 && kind < 3) HullBoxes()[row] = kinds[static_cast<size_t>(kind)];
    }
}

HullBox HullBoxOf(int32_t hull) {
    return hull >= 0 && hull < 3 ? HullBoxes()[static_cast<size_t>(hull)] : HullBox{};
}

void ResetBlocksForTest() {
    Blocks() = BlockState();
}

}  // namespace k2k
