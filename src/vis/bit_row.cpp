// Rows of one bit a region, kept in words of 64 bits.
#include "vis/bit_row.h"

#include <algorithm>
#include <cstdlib>

#include "driver/out_of_memory.h"

namespace k2k {

void RowTable::Reset(size_t rowCount, size_t rowWords) {
    const size_t count = std::max<size_t>(rowCount * rowWords, 1);
    words_.reset(static_cast<Word*>(std::calloc(count, sizeof(Word))));
    if (!words_) throw OutOfMemory(count * sizeof(Word));
    rowWords_ = rowWords;
}

void RowTable::Free::operator()(Word* words) const {
    std::free(words);
}

}  // namespace k2k
