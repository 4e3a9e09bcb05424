#include "light/light_store.h"

#include <algorithm>

namespace k2k {

void CLightStore::Open() {
    bytes_ = std::make_unique_for_overwrite<uint8_t[]>(LightStoreStartSize);
    capacity_ = LightStoreStartSize;
    cursor_ = 0;
}

void CLightStore::Close() {
    *this = CLightStore();
}

size_t CLightStore::Alloc(size_t size) {
    const size_t offset = (cursor_ + 3) & ~size_t{3};
    while (offset + size > capacity_) Grow();
    cursor_ = offset + size;
    return offset;
}

void CLightStore::Grow() {
    const size_t wider = capacity_ == 0 ? LightStoreStartSize : 2 * capacity_;
    auto bytes = std::make_unique_for_overwrite<uint8_t[]>(wider);
    std::copy_n(bytes_.get(), cursor_, bytes.get());
    bytes_ = std::move(bytes);
    capacity_ = wider;
}

}  // namespace k2k
