// The level's light data: a byte arena that surfaces point into by offset.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace k2k {

constexpr size_t LightStoreStartSize = 8388608;  // bytes

class CLightStore {
  public:
    // Drops everything and starts with the initial capacity.
    void Open();
    void Close();
    // The offset of size uninitialised bytes, a multiple of 4. Spans given before are void when the store had to grow.
    size_t Alloc(size_t size);
    std::span<uint8_t> At(size_t offset, size_t size) { return {bytes_.get() + offset, size}; }
    size_t length() const { return cursor_; }
    size_t capacity() const { return capacity_; }

  private:
    void Grow();

    std::unique_ptr<uint8_t[]> bytes_;
    size_t cursor_ = 0;
    size_t capacity_ = 0;
};

}  // namespace k2k
