#include "colour/palette_files.h"

#include <gtest/gtest.h>

#include <numeric>

#include "driver/build_log.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k {
namespace {

using Bytes = std::vector<uint8_t>;
using Reader = bool (*)(const std::string&, PaletteColours&);

class PaletteFiles : public test::BuildState {
  protected:
    PaletteFiles() { std::iota(colours_.begin(), colours_.end(), uint8_t{1}); }

    Bytes ColourBytes() const { return {colours_.begin(), colours_.end()}; }

    // What a reader gives for a file's bytes: "" for the palette above, else the message that is recorded.
    std::string Read(Reader reader, const Bytes& bytes) {
        test::WriteFile(path_, bytes);
        return ReadPath(reader);
    }

    std::string ReadPath(Reader reader) {
        PaletteColours out{};
        if (reader(path_, out)) {
            EXPECT_EQ(out, colours_);
            EXPECT_FALSE(HasPendingError());
            return "";
        }
        EXPECT_TRUE(HasPendingError());
        ShowPendingError();
        std::string text = test::Logged();
        ResetLogForTest();
        const std::string front = "\n\nFatal error ->  ";
        const std::string back = " :  " + path_ + "\n";
        EXPECT_TRUE(text.starts_with(front) && text.ends_with(back)) << text;
        return text.substr(front.size(), text.size() - front.size() - back.size());
    }

    Bytes Pcx() const {
        Bytes file(128 + 10, 0);
        file[0] = 10;
        file[3] = 8;
        file.insert(file.end(), colours_.begin(), colours_.end());
        return file;
    }

    Bytes Bmp(uint32_t headerSize = 40) const {
        Bytes file(14 + headerSize, 0);
        file[0] = 'B';
        file[1] = 'M';
        file[14] = static_cast<uint8_t>(headerSize);
        file[28] = 8;
        for (size_t i = 0; i < colours_.size(); i += 3)
            file.insert(file.end(), {colours_[i + 2], colours_[i + 1], colours_[i], 99});
        return file;
    }

    static void Append(Bytes& file, const std::string& text) { file.insert(file.end(), text.begin(), text.end()); }

    // A form with chunks in front of the palette.
    Bytes Lbm(const std::string& chunks = "") const {
        Bytes file;
        Append(file, "FORM" + std::string(4, '\0') + "PBM " + chunks + "CMAP" + std::string("\0\0\3\0", 4));
        file.insert(file.end(), colours_.begin(), colours_.end());
        return file;
    }

    PaletteColours colours_{};
    test::TempDir folder_;
    std::string path_ = folder_.File("palette");
};

TEST_F(PaletteFiles, ARawPaletteIsItsBytes) {
    EXPECT_EQ(Read(ReadRawPalette, ColourBytes()), "");
}

TEST_F(PaletteFiles, ARawPaletteHas768Bytes) {
    EXPECT_EQ(Read(ReadRawPalette, Bytes(767)), " not valid palette file");
    EXPECT_EQ(Read(ReadRawPalette, Bytes(769)), " not valid palette file");
    EXPECT_EQ(Read(ReadRawPalette, {}), " not valid palette file");
}

TEST_F(PaletteFiles, ARawPaletteNeedsAName) {
    test::ExpectFatal(
        [] {
            PaletteColours out;
            ReadRawPalette("", out);
        },
        "No palette specified !");
}

TEST_F(PaletteFiles, AMissingFileCannotBeOpenedInAnyFormat) {
    for (const Reader reader : {ReadRawPalette, ReadPcxPalette, ReadBmpPalette, ReadLbmPalette})
        EXPECT_EQ(ReadPath(reader), " could not open file");
}

TEST_F(PaletteFiles, AFolderCannotBeRead) {
    std::filesystem::create_directory(path_);
    EXPECT_EQ(ReadPath(ReadPcxPalette), " E004 - could not read file");
}

TEST_F(PaletteFiles, APcxHasItsPaletteAtTheEnd) {
    EXPECT_EQ(Read(ReadPcxPalette, Pcx()), "");
}

TEST_F(PaletteFiles, APcxHasAHeader) {
    EXPECT_EQ(Read(ReadPcxPalette, Bytes(127, 10)), " E004 - could not read file");
    EXPECT_EQ(Read(ReadPcxPalette, {}), " E004 - could not read file");
}

TEST_F(PaletteFiles, APcxIsKnownByItsFirstByte) {
    Bytes file = Pcx();
    file[0] = 11;
    EXPECT_EQ(Read(ReadPcxPalette, file), " not valid image file");
}

TEST_F(PaletteFiles, APcxHasEightBitsAPixel) {
    Bytes file = Pcx();
    file[3] = 4;
    EXPECT_EQ(Read(ReadPcxPalette, file), " the image is not 256 color");
}

TEST_F(PaletteFiles, APcxIsAtLeastAsLongAsAPalette) {
    Bytes file = Pcx();
    file.resize(767);
    EXPECT_EQ(Read(ReadPcxPalette, file), " E004 - could not read file");
}

TEST_F(PaletteFiles, ABmpHasBlueGreenRed) {
    EXPECT_EQ(Read(ReadBmpPalette, Bmp()), "");
}

TEST_F(PaletteFiles, ABmpHasItsPaletteBehindItsHeader) {
    EXPECT_EQ(Read(ReadBmpPalette, Bmp(16)), "");
    EXPECT_EQ(Read(ReadBmpPalette, Bmp(108)), "");
}

TEST_F(PaletteFiles, ABmpIsKnownByItsFirstBytes) {
    Bytes file = Bmp();
    file[1] = 'A';
    EXPECT_EQ(Read(ReadBmpPalette, file), " not valid image file");
}

TEST_F(PaletteFiles, ABmpHeaderHasAtLeast16Bytes) {
    Bytes file = Bmp();
    file[14] = 15;
    EXPECT_EQ(Read(ReadBmpPalette, file), " not valid image file");
}

TEST_F(PaletteFiles, ABmpHasEightBitsAPixel) {
    Bytes file = Bmp();
    file[29] = 1;
    EXPECT_EQ(Read(ReadBmpPalette, file), " the image is not 256 color");
}

TEST_F(PaletteFiles, ALbmHasItsPaletteInAChunk) {
    EXPECT_EQ(Read(ReadLbmPalette, Lbm()), "");
}

TEST_F(PaletteFiles, ALbmChunkOfOddLengthIsPadded) {
    const std::string odd("BMHD\0\0\0\3abc\0", 12);
    const std::string even("TINY\0\0\0\2ab", 10);
    EXPECT_EQ(Read(ReadLbmPalette, Lbm(odd + even + odd)), "");
}

TEST_F(PaletteFiles, ALbmIsKnownByItsForm) {
    Bytes file = Lbm();
    file[0] = 'L';
    EXPECT_EQ(Read(ReadLbmPalette, file), " not valid image file");
    file = Lbm();
    file[8] = 'I';
    EXPECT_EQ(Read(ReadLbmPalette, file), " not valid image file");
}

TEST_F(PaletteFiles, ALbmWithoutAPaletteEndsTooEarly) {
    Bytes file = Lbm();
    file.resize(12);
    EXPECT_EQ(Read(ReadLbmPalette, file), " E004 - could not read file");
    const std::string huge("BMHD\xFF\xFF\xFF\xFF", 8);
    EXPECT_EQ(Read(ReadLbmPalette, Lbm(huge)), " E004 - could not read file");
}

TEST_F(PaletteFiles, AFileThatIsCutAnywhereCannotBeRead) {
    const std::pair<Reader, Bytes> whole[] = {{ReadBmpPalette, Bmp()}, {ReadLbmPalette, Lbm()}};
    for (const auto& [reader, bytes] : whole)
        for (const size_t size : {0U, 1U, 11U, 13U, 16U, 29U, 31U, 60U, 700U})
            EXPECT_EQ(Read(reader, {bytes.begin(), bytes.begin() + size}), " E004 - could not read file") << size;
    const Bytes pcx = Pcx();
    EXPECT_EQ(Read(ReadPcxPalette, {pcx.begin(), pcx.begin() + 127}), " E004 - could not read file");
}

TEST_F(PaletteFiles, ARawPaletteIsWritten) {
    EXPECT_TRUE(WriteRawPalette(path_, colours_));
    EXPECT_EQ(test::ReadBytes(path_), ColourBytes());
}

TEST_F(PaletteFiles, AFileThatCannotBeCreatedIsAnError) {
    EXPECT_FALSE(WriteRawPalette(folder_.File("none/palette"), colours_));
    ShowPendingError();
    EXPECT_EQ(test::Logged(), "\n\nFatal error ->   could not create file :  " + folder_.File("none/palette") + "\n");
}

TEST_F(PaletteFiles, AFileThatCannotBeWrittenIsAnError) {
    if (!std::filesystem::exists("/dev/full")) GTEST_SKIP();
    EXPECT_FALSE(WriteRawPalette("/dev/full", colours_));
    ShowPendingError();
    EXPECT_EQ(test::Logged(), "\n\nFatal error ->   E005 - could not write file :  /dev/full\n");
}

}  // namespace
}  // namespace k2k
