// From the float colours of a block to the bytes of a page.
#pragma once

#include <cstdint>
#include <span>

#include "light/page_tree.h"

namespace k2k {

// Format of a page's texels; only the first is ever asked for, and only it has finishing steps.
enum class LightFormat : int32_t { Bytes3 = 0, Bytes8 = 1, Bytes16 = 2 };

// Bytes a texel. An unknown format is fatal.
uint32_t BytesPerTexel(int32_t format);

// Writes a node's block, border included, into the pixels of its page; true when the surface is to be placed there.
using FinishStep = bool (*)(const LightPage& page, const PageNode& node, std::span<uint8_t> pixels);

// Truncated colours through the gamma table, blue first.
bool FinishPlain(const LightPage& page, const PageNode& node, std::span<uint8_t> pixels);
// Colours above the knee are pressed into what is left up to -litmax; in the block's own component order.
bool FinishCompressed(const LightPage& page, const PageNode& node, std::span<uint8_t> pixels);

// The step of a version and format. None: fatal.
FinishStep FindFinishStep(int32_t version, int32_t format);

// Copies the outermost inner texels of a w x h rectangle into its border. pixels begins at the rectangle's corner.
void FillBorder(uint8_t* pixels, uint32_t pageWidth, int32_t w, int32_t h);

}  // namespace k2k
