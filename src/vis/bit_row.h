// Rows of one bit a region, kept in words of 64 bits.
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace k2k {

using Word = uint64_t;
constexpr int32_t WordBits = 64;

// Region r is bit r mod 8 of byte r / 8; with little endian words that is bit r mod 64 of word r / 64.
inline size_t RowWords(int32_t regionCount) {
    return (static_cast<size_t>(regionCount) + WordBits - 1) / WordBits;
}
inline size_t RowBytes(int32_t regionCount) {
    return RowWords(regionCount) * sizeof(Word);
}

inline bool TestBit(const Word* row, int32_t region) {
    return ((row[static_cast<uint32_t>(region) / WordBits] >> (static_cast<uint32_t>(region) % WordBits)) & 1U) != 0;
}
inline void ClearBit(Word* row, int32_t region) {
    row[static_cast<uint32_t>(region) / WordBits] &= ~(Word{1} << (static_cast<uint32_t>(region) % WordBits));
}
inline void SetBit(Word* row, int32_t region) {
    row[static_cast<uint32_t>(region) / WordBits] |= Word{1} << (static_cast<uint32_t>(region) % WordBits);
}

// Whether a and b share a bit that known does not have.
inline bool ShareNewBit(const Word* a, const Word* b, const Word* known, size_t words) {
    Word fresh = 0;
    for (size_t i = 0; i < words; ++i) fresh |= a[i] & b[i] & ~known[i];
    return fresh != 0;
}
inline bool ShareBit(const Word* a, const Word* b, size_t words) {
    Word shared = 0;
    for (size_t i = 0; i < words; ++i) shared |= a[i] & b[i];
    return shared != 0;
}
inline int32_t CountBits(const Word* row, size_t words) {
    int32_t count = 0;
    for (size_t i = 0; i < words; ++i) count += std::popcount(row[i]);
    return count;
}
inline void AndRows(const Word* a, const Word* b, Word* out, size_t words) {
    for (size_t i = 0; i < words; ++i) out[i] = a[i] & b[i];
}
inline void OrRow(Word* into, const Word* row, size_t words) {
    for (size_t i = 0; i < words; ++i) into[i] |= row[i];
}

// Many rows of one length in one block, all bits clear at first. Pages that are never written to cost no memory.
class RowTable {
  public:
    void Reset(size_t rowCount, size_t rowWords);
    Word* row(size_t number) { return words_.get() + number * rowWords_; }

  private:
    struct Free {
        void operator()(Word* words) const;
    };
    std::unique_ptr<Word[], Free> words_;
    size_t rowWords_ = 0;
};

}  // namespace k2k
