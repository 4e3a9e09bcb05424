#include "colour/palette_files.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "driver/build_log.h"

namespace k2k {

namespace {

using Bytes = std::span<const uint8_t>;

// What is wrong with a file; nothing is wrong with an empty text.
using Fault = std::string_view;
constexpr Fault NoFault;
constexpr Fault NotOpened = " could not open file";
constexpr Fault NotRead = " E004 - could not read file";
constexpr Fault NotAPalette = " not valid palette file";
constexpr Fault NotAnImage = " not valid image file";
constexpr Fault Not256Colours = " the image is not 256 color";
constexpr Fault NotCreated = " could not create file";
constexpr Fault NotWritten = " E005 - could not write file";

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

Fault ReadWholeFile(const std::string& path, std::vector<uint8_t>& bytes) {
    const File file(std::fopen(path.c_str(), "rb"));
    if (!file) return NotOpened;
    constexpr size_t Step = 65536;
    for (size_t got = Step; got == Step;) {
        bytes.resize(bytes.size() + Step);
        got = std::fread(bytes.data() + bytes.size() - Step, 1, Step, file.get());
        bytes.resize(bytes.size() - Step + got);
    }
    return std::ferror(file.get()) != 0 ? NotRead : NoFault;
}

// Takes the front of a file's bytes off, piece by piece. A piece is empty where the file is too short for it.
class FileFront {
  public:
    explicit FileFront(Bytes bytes) : rest_(bytes) {}
    Bytes Take(uint64_t size) {
        if (size > rest_.size()) rest_ = {};
        const Bytes piece = rest_.first(std::min<uint64_t>(size, rest_.size()));
        rest_ = rest_.subspan(piece.size());
        return piece;
    }

  private:
    Bytes rest_;
};

bool HasTag(Bytes bytes, size_t offset, std::string_view tag) {
    return std::equal(tag.begin(), tag.end(), bytes.begin() + static_cast<std::ptrdiff_t>(offset));
}

uint32_t LittleEndian32(Bytes b) {
    return b[0] | b[1] << 8 | b[2] << 16 | static_cast<uint32_t>(b[3]) << 24;
}
uint32_t BigEndian32(Bytes b) {
    return static_cast<uint32_t>(b[0]) << 24 | b[1] << 16 | b[2] << 8 | b[3];
}

Fault ParseRaw(Bytes file, PaletteColours& out) {
    if (file.size() != out.size()) return NotAPalette;
    std::copy(file.begin(), file.end(), out.begin());
    return NoFault;
}

// ZSoft PCX, version 5: the palette of a 256-colour image stands at the end of the file.
Fault ParsePcx(Bytes file, PaletteColours& out) {
    constexpr size_t HeaderSize = 128;
    constexpr uint8_t Manufacturer = 10;
    if (file.size() < HeaderSize) return NotRead;
    if (file[0] != Manufacturer) return NotAnImage;
    if (file[3] != 8) return Not256Colours;
    if (file.size() < out.size()) return NotRead;
    const Bytes palette = file.last(out.size());
    std::copy(palette.begin(), palette.end(), out.begin());
    return NoFault;
}

// Windows bitmap: a colour table of blue, green, red and a spare byte follows the headers.
Fault ParseBmp(Bytes file, PaletteColours& out) {
    constexpr size_t FileHeaderSize = 14;
    constexpr size_t ReadHeaderSize = 16;  // of the information header, as far as its bit count
    constexpr size_t BitCountOffset = 14;
    constexpr size_t EntrySize = 4;

    FileFront front(file);
    const Bytes fileHeader = front.Take(FileHeaderSize);
    if (fileHeader.empty()) return NotRead;
    if (!HasTag(fileHeader, 0, "BM")) return NotAnImage;
    const Bytes header = front.Take(ReadHeaderSize);
    if (header.empty()) return NotRead;
    const uint32_t headerSize = LittleEndian32(header);
    if (headerSize < ReadHeaderSize) return NotAnImage;
    if ((header[BitCountOffset] | header[BitCountOffset + 1] << 8) != 8) return Not256Colours;
    front.Take(headerSize - ReadHeaderSize);
    const Bytes table = front.Take(out.size() / 3 * EntrySize);
    if (table.empty()) return NotRead;
    for (size_t i = 0; i < out.size() / 3; ++i)
        for (size_t channel = 0; channel < 3; ++channel) out[i * 3 + channel] = table[i * EntrySize + 2 - channel];
    return NoFault;
}

// Interchange file format, form "PBM ": chunks of a tag, a big-endian length and the data, each padded to an even
// length.
Fault ParseLbm(Bytes file, PaletteColours& out) {
    constexpr size_t FormHeaderSize = 12;
    constexpr size_t ChunkHeaderSize = 8;

    FileFront front(file);
    const Bytes form = front.Take(FormHeaderSize);
    if (form.empty()) return NotRead;
    if (!HasTag(form, 0, "FORM") || !HasTag(form, 8, "PBM ")) return NotAnImage;
    for (;;) {
        const Bytes chunk = front.Take(ChunkHeaderSize);
        if (chunk.empty()) return NotRead;
        if (HasTag(chunk, 0, "CMAP")) break;
        const uint64_t length = BigEndian32(chunk.subspan(4));
        front.Take(length + length % 2);
    }
    const Bytes palette = front.Take(out.size());
    if (palette.empty()) return NotRead;
    std::copy(palette.begin(), palette.end(), out.begin());
    return NoFault;
}

bool Succeeds(Fault fault, const std::string& path) {
    if (fault.empty()) return true;
    RecordError(fault, path);
    return false;
}

bool ReadPalette(const std::string& path, Fault (*parse)(Bytes, PaletteColours&), PaletteColours& out) {
    std::vector<uint8_t> bytes;
    Fault fault = ReadWholeFile(path, bytes);
    if (fault.empty()) fault = parse(bytes, out);
    return Succeeds(fault, path);
}

Fault WriteBytes(const std::string& path, Bytes bytes) {
    const File file(std::fopen(path.c_str(), "wb"));
    if (!file) return NotCreated;
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file.get()) == bytes.size();
    return written && std::fflush(file.get()) == 0 ? NoFault : NotWritten;
}

}  // namespace

bool ReadRawPalette(const std::string& path, PaletteColours& out) {
    if (path.empty()) FatalError("No palette specified !");
    return ReadPalette(path, ParseRaw, out);
}

bool ReadPcxPalette(const std::string& path, PaletteColours& out) {
    return ReadPalette(path, ParsePcx, out);
}
bool ReadBmpPalette(const std::string& path, PaletteColours& out) {
    return ReadPalette(path, ParseBmp, out);
}
bool ReadLbmPalette(const std::string& path, PaletteColours& out) {
    return ReadPalette(path, ParseLbm, out);
}

bool WriteRawPalette(const std::string& path, const PaletteColours& palette) {
    return Succeeds(WriteBytes(path, palette), path);
}

}  // namespace k2k
