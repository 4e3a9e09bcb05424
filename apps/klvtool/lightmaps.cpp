#include "klvtool/lightmaps.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>

namespace klvtool {
namespace {

constexpr int PageChunk = 16;
constexpr size_t TexelBytes = 3;  // blue, green, red

// The texels that a lightmap covers on its page, ends included.
struct TexelBox {
    double lowX = 1, lowY = 1, highX = 0, highY = 0;

    void Include(const std::array<float, 2>& point) {
        const bool isFirst = lowX > highX;
        lowX = isFirst ? point[0] : std::min(lowX, double{point[0]});
        lowY = isFirst ? point[1] : std::min(lowY, double{point[1]});
        highX = isFirst ? point[0] : std::max(highX, double{point[0]});
        highY = isFirst ? point[1] : std::max(highY, double{point[1]});
    }
};

// Marks the texels of a box and its border of one texel.
void Cover(const TexelBox& box, uint32_t side, std::vector<bool>& covered) {
    const auto place = [&](double v, double border) {
        return static_cast<int64_t>(std::clamp(std::floor(v * side - 0.5 + border), 0.0, side - 1.0));
    };
    for (int64_t y = place(box.lowY, -1); y <= place(box.highY, 2); y++) {
        for (int64_t x = place(box.lowX, -1); x <= place(box.highX, 2); x++)
            covered[static_cast<size_t>(y * side + x)] = true;
    }
}

}  // namespace

Image PageImage(const levelcheck::LevelView& level, size_t page) {
    const size_t texels = size_t{level.pageSize} * level.pageSize;
    const auto data = level.Chunk(PageChunk).subspan(page * texels * TexelBytes, texels * TexelBytes);
    Image image(level.pageSize, level.pageSize);
    for (size_t i = 0; i < texels; i++) {
        image.pixels[i] = {data[i * TexelBytes + 2], data[i * TexelBytes + 1], data[i * TexelBytes]};
    }
    return image;
}

std::vector<PageUse> CountPageUse(const levelcheck::LevelView& level, const std::vector<Face>& faces) {
    std::vector<PageUse> uses(level.pageCount);
    std::vector<std::map<size_t, TexelBox>> boxes(level.pageCount);  // by surface: a mesh level has triangles
    for (const Face& face : faces) {
        if (face.page == 0) continue;
        for (const Corner& corner : face.corners) boxes[face.page][face.surface].Include(corner.lightmap);
    }
    for (size_t page = 0; page < uses.size(); page++) {
        std::vector<bool> covered(size_t{level.pageSize} * level.pageSize);
        for (const auto& [surface, box] : boxes[page]) Cover(box, level.pageSize, covered);
        uses[page].surfaces = boxes[page].size();
        uses[page].fill =
            static_cast<double>(std::count(covered.begin(), covered.end(), true)) / static_cast<double>(covered.size());
    }
    return uses;
}

}  // namespace klvtool
