// WAD files of tests, put together lump by lump.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace k2k::test {

// An image lump: a name, the size, and some texels.
inline std::vector<uint8_t> Image(std::string_view name, uint32_t width, uint32_t height, size_t texels = 8) {
    std::vector<uint8_t> lump(24 + texels, 0xEE);
    std::fill_n(lump.begin(), 16, uint8_t{0});
    std::memcpy(lump.data(), name.data(), name.size());
    std::memcpy(lump.data() + 16, &width, 4);
    std::memcpy(lump.data() + 20, &height, 4);
    return lump;
}

class Wad {
  public:
    explicit Wad(char version = '2') : version_(version) {}

    // A lump behind the ones before it.
    Wad& Add(std::string_view name, char type, const std::vector<uint8_t>& lump) {
        const size_t position = 12 + lumps_.size();
        lumps_.insert(lumps_.end(), lump.begin(), lump.end());
        return AddEntry(name, type, static_cast<int32_t>(position), static_cast<int32_t>(lump.size()));
    }
    // A directory entry alone.
    Wad& AddEntry(std::string_view name, char type, int32_t position, int32_t size) {
        std::vector<uint8_t> entry(32);
        std::memcpy(entry.data(), &position, 4);
        std::memcpy(entry.data() + 4, &size, 4);
        entry[12] = static_cast<uint8_t>(type);
        std::memcpy(entry.data() + 16, name.data(), name.size());
        directory_.insert(directory_.end(), entry.begin(), entry.end());
        return *this;
    }
    std::vector<uint8_t> Bytes() const {
        return Bytes(static_cast<int32_t>(directory_.size() / 32), static_cast<int32_t>(12 + lumps_.size()));
    }
    // With any numbers in the header.
    std::vector<uint8_t> Bytes(int32_t lumpCount, int32_t directoryOffset) const {
        std::vector<uint8_t> file{'W', 'A', 'D', static_cast<uint8_t>(version_), 0, 0, 0, 0, 0, 0, 0, 0};
        std::memcpy(file.data() + 4, &lumpCount, 4);
        std::memcpy(file.data() + 8, &directoryOffset, 4);
        file.insert(file.end(), lumps_.begin(), lumps_.end());
        file.insert(file.end(), directory_.begin(), directory_.end());
        return file;
    }

  private:
    char version_;
    std::vector<uint8_t> lumps_, directory_;
};

}  // namespace k2k::test
