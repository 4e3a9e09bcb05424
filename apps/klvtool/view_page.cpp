#include "klvtool/view_page.h"

#include <span>
#include <stdexcept>

#include "klvtool/gltf.h"

namespace klvtool {
namespace {

constexpr std::string_view LevelMark = "@LEVEL@";

std::string Base64(std::span<const uint8_t> bytes) {
    constexpr std::string_view Signs = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        uint32_t group = 0;
        for (size_t k = 0; k < 3; k++) group = group << 8 | (i + k < bytes.size() ? bytes[i + k] : 0U);
        for (size_t k = 0; k < 4; k++) text += i + k > bytes.size() ? '=' : Signs[group >> (18 - 6 * k) & 63];
    }
    return text;
}

}  // namespace

std::string MakeViewPage(const Scene& scene) {
    std::string page(ViewerPage());
    const size_t mark = page.find(LevelMark);
    if (mark == std::string::npos) throw std::logic_error("the viewer has no place for a level");
    return page.replace(mark, LevelMark.size(), Base64(MakeGlb(scene)));
}

}  // namespace klvtool
