// Memory for one thread's deep recursion: taken and given back in stack order, never moved.
#pragma once

#include <algorithm>
#include <cstddef>
#include <memory>
#include <type_traits>
#include <vector>

namespace k2k {

class ScratchStack {
  public:
    // A state of the stack, to go back to.
    struct Mark {
        size_t chunk = 0, used = 0;
    };
    Mark Top() const { return top_; }
    void Release(Mark mark) { top_ = mark; }

    // Room for count items, not initialised.
    template <typename T>
    T* Take(size_t count) {
        static_assert(std::is_trivially_copyable_v<T> && alignof(T) <= Alignment);
        return static_cast<T*>(TakeBytes((count * sizeof(T) + Alignment - 1) / Alignment * Alignment));
    }

  private:
    static constexpr size_t Alignment = alignof(std::max_align_t);
    static constexpr size_t ChunkSize = size_t{256} * 1024;

    struct Chunk {
        std::unique_ptr<std::byte[]> bytes;
        size_t size = 0;
    };

    void* TakeBytes(size_t size) {
        while (top_.chunk < chunks_.size() && chunks_[top_.chunk].size - top_.used < size) top_ = {top_.chunk + 1, 0};
        if (top_.chunk == chunks_.size()) {
            const size_t chunkSize = std::max(size, ChunkSize);
            chunks_.push_back({std::unique_ptr<std::byte[]>(new std::byte[chunkSize]), chunkSize});
        }
        void* room = chunks_[top_.chunk].bytes.get() + top_.used;
        top_.used += size;
        return room;
    }

    std::vector<Chunk> chunks_;
    Mark top_;
};

}  // namespace k2k
