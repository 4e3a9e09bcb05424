// Ordinary mistakes with the files of a build: each ends in its message and status, and no file of the user is lost.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <filesystem>

#include "program/compile.h"
#include "program/level_bytes.h"

namespace k2k::test {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;

class Mistakes : public SmallMapTest {
  protected:
    Mistakes() { Write(OneRoom()); }

    // Stage 1 fails with this message, and leaves all files as they were.
    static void ExpectFailure(const std::string& message) {
        const auto before = UserFiles();
        EXPECT_EQ(FailureOf({}), message);
        EXPECT_TRUE(UserFiles() == before);
    }

    // The palette cannot be used: the level is finished all the same.
    static void ExpectPaletteError(const std::string& palette, const std::string& message) {
        const auto before = UserFiles();
        const ProcessResult run = RunK2k({"level", "-pal", palette});
        EXPECT_EQ(run.status, 0);
        EXPECT_THAT(run.out, EndsWith("\n\nFatal error ->  " + message + " :  " + palette + "\n"));
        EXPECT_TRUE(UserFiles() == before);
        const levelcheck::LevelView level = LoadLevel("level.klv");
        EXPECT_EQ(level.surfaces.size(), 16U);
        EXPECT_TRUE(level.Chunk(levelcheck::ChunkPalette).empty());
    }

    static void CutShort(const std::string& name, size_t size) { WriteFile(name, ReadFile(name).substr(0, size)); }
    static void SetByte(const std::string& name, size_t at, char byte) {
        std::string bytes = ReadFile(name);
        bytes.at(at) = byte;
        WriteFile(name, bytes);
    }
};

TEST_F(Mistakes, AMapThatIsMissing) {
    fs::remove("level.$$M");
    ExpectFailure("Can't open level.$$M - No such file or directory");
    EXPECT_FALSE(fs::exists("level.$$M"));
}

TEST_F(Mistakes, AMapThatIsAFolder) {
    fs::remove("level.$$M");
    fs::create_directory("level.$$M");
    ExpectFailure("Can't open level.$$M - Is a directory");
}

TEST_F(Mistakes, AMapThatIsEmpty) {
    WriteFile("level.$$M", "");
    ExpectFailure("Texture file\tmissing!");
}

TEST_F(Mistakes, AMapThatIsCutShortInABlock) {
    const std::string text = ReadFile("level.$$M");
    CutShort("level.$$M", text.find("faces"));
    ExpectFailure("Face tag missing, block 0\n");
    WriteFile("level.$$M", text.substr(0, text.find("{ 00000000 ndef }")));
    ExpectFailure(" \nE715");
}

TEST_F(Mistakes, AMapThatIsCutShortBetweenBlocks) {
    const std::string text = ReadFile("level.$$M");
    CutShort("level.$$M", text.find("{\nvertices", text.find("{\nvertices") + 1));
    ExpectFailure(" \nE715");
}

TEST_F(Mistakes, AMapThatIsCutShortInAnEntity) {
    const std::string text = ReadFile("level.$$M");
    const size_t start = text.find("\n1 128 128 40");
    const auto line =
        static_cast<int>(std::count(text.begin(), text.begin() + static_cast<std::ptrdiff_t>(start), '\n'));
    CutShort("level.$$M", start + std::string_view("\n1 128 1").size());
    ExpectFailure(" \nInvalid line " + std::to_string(line + 2));
    WriteFile("level.$$M", text.substr(0, text.find("player")));
    ExpectFailure(" \nE715");
}

TEST_F(Mistakes, AMapOfThreePointsAFaceThatIsCutShort) {
    const std::string head = "{\n0 textures.$$w\npalette.raw\n{\n{ 00000000 }\n";
    const std::string points = "( 1 0 0 ) ( 0 0 0 ) ( 0 1 0 ) ";
    const std::pair<std::string, std::string> ends[] = {{points.substr(0, 10), "Block 0 invalid syntax\n"},
                                                        {points.substr(0, 17), " \nInvalid line 6"},
                                                        {points, " \nInvalid line 6"},
                                                        {points + "WALL 0 0 0 1", " \nInvalid line 6"},
                                                        {points + "WALL 0 0 0 1 1 : 0 0 50 0\n", " \nE715"}};
    for (const auto& [end, message] : ends) {
        WriteFile("level.$$M", head + end);
        ExpectFailure(message);
    }
}

TEST_F(Mistakes, AMapOfAnotherKind) {
    fs::copy_file("textures.$$w", "level.$$M", fs::copy_options::overwrite_existing);
    ExpectFailure(" \nE714");
}

TEST_F(Mistakes, AMapOfAnotherVersion) {
    WriteFile("level.$$M", "version 640\n{\n}\n");
    ExpectFailure("\nUnrecognized map file format level.$$M !");
}

TEST_F(Mistakes, AMapWithoutAnyVisibleBlock) {
    SmallMap map;
    map.Add({{0, 0, 0}, {64, 64, 64}, "WALL", BlockFlags::Invisible}).Start({0, 0, 100});
    Write(map);
    ExpectFailure("E003 - no visible blocks in map");
}

TEST_F(Mistakes, ATextureFileThatIsMissing) {
    fs::remove("textures.$$w");
    ExpectFailure("Can't open textures.$$w - No such file or directory");
}

TEST_F(Mistakes, ATextureFileThatIsAFolder) {
    fs::remove("textures.$$w");
    fs::create_directory("textures.$$w");
    ExpectFailure("Invalid\tor missing texture file\ttextures.$$w");
}

TEST_F(Mistakes, ATextureFileThatIsEmpty) {
    WriteFile("textures.$$w", "");
    ExpectFailure("Invalid\tor missing texture file\ttextures.$$w");
}

TEST_F(Mistakes, ATextureFileOfAnotherKind) {
    fs::copy_file("palette.raw", "textures.$$w", fs::copy_options::overwrite_existing);
    ExpectFailure("Invalid\tor missing texture file\ttextures.$$w");
}

TEST_F(Mistakes, ATextureFileThatIsCutShort) {
    const std::string whole = ReadFile("textures.$$w");
    for (const size_t size : {size_t{3}, size_t{10}, size_t{100}, whole.size() - 32, whole.size() - 1}) {
        CutShort("textures.$$w", size);
        ExpectFailure("Invalid\tor missing texture file\ttextures.$$w");
        WriteFile("textures.$$w", whole);
    }
}

TEST_F(Mistakes, ATextureThatTheFileDoesNotHave) {
    const auto [text, level] = Compile(OneRoom().Add({{96, 96, 0}, {128, 128, 32}, "NOWHERE"}));
    EXPECT_THAT(text, HasSubstr(" \nWARNING\tW050: texture NOWHERE not found\n"));
    EXPECT_GT(level.surfaces.size(), 16U);
}

TEST_F(Mistakes, APaletteThatIsMissing) {
    for (const char* name : {"none.raw", "none.pcx", "none.bmp", "none.lbm"})
        ExpectPaletteError(name, " could not open file");
}

TEST_F(Mistakes, APaletteThatIsAFolder) {
    for (const char* name : {"folder.raw", "folder.pcx", "folder.bmp", "folder.lbm"}) {
        fs::create_directory(name);
        ExpectPaletteError(name, " E004 - could not read file");
    }
}

TEST_F(Mistakes, APaletteThatIsEmpty) {
    for (const char* name : {"empty.raw", "empty.pcx", "empty.bmp", "empty.lbm"}) WriteFile(name, "");
    ExpectPaletteError("empty.raw", " not valid palette file");
    ExpectPaletteError("empty.pcx", " E004 - could not read file");
    ExpectPaletteError("empty.bmp", " E004 - could not read file");
    ExpectPaletteError("empty.lbm", " E004 - could not read file");
}

TEST_F(Mistakes, APaletteThatIsCutShort) {
    TakeExample("", "room");
    for (const size_t size : {size_t{700}, size_t{100}, size_t{13}}) {
        for (const char* name : {"palette.lmp", "palette.pcx", "palette.bmp", "palette.lbm"}) CutShort(name, size);
        ExpectPaletteError("palette.lmp", " not valid palette file");
        ExpectPaletteError("palette.pcx", " E004 - could not read file");
        ExpectPaletteError("palette.bmp", " E004 - could not read file");
        ExpectPaletteError("palette.lbm", " E004 - could not read file");
    }
}

TEST_F(Mistakes, APaletteOfAnotherKind) {
    for (const char* name : {"map.raw", "map.pcx", "map.bmp", "map.lbm"}) fs::copy_file("level.$$M", name);
    ExpectPaletteError("map.raw", " not valid palette file");
    ExpectPaletteError("map.pcx", " not valid image file");
    ExpectPaletteError("map.bmp", " not valid image file");
    ExpectPaletteError("map.lbm", " not valid image file");
}

TEST_F(Mistakes, APaletteOfAnImageWithMoreColours) {
    constexpr size_t PcxBitsAt = 3, BmpBitsAt = 28;
    TakeExample("", "room");
    SetByte("palette.pcx", PcxBitsAt, 24);
    SetByte("palette.bmp", BmpBitsAt, 24);
    ExpectPaletteError("palette.pcx", " the image is not 256 color");
    ExpectPaletteError("palette.bmp", " the image is not 256 color");
}

TEST_F(Mistakes, ALevelThatCannotBeWritten) {
    fs::create_directories("level.klv/full");
    ExpectFailure("Can't open level.klv - Is a directory");
    EXPECT_TRUE(fs::exists("level.klv/full"));
}

TEST_F(Mistakes, LightsonlyWithoutALevel) {
    EXPECT_EQ(FailureOf({"-lightsonly"}), "Can't open level.klv - No such file or directory");
    EXPECT_FALSE(fs::exists("level.klv"));
}

class LevelsToUpdate : public Mistakes {
  protected:
    // A level that cannot be read is left as it is.
    static void ExpectFailureOf(const std::string& mode, const std::string& message) {
        const std::string before = ReadFile("level.klv");
        EXPECT_EQ(FailureOf({mode}), message);
        EXPECT_TRUE(ReadFile("level.klv") == before) << mode;
    }
};

TEST_F(LevelsToUpdate, AreTooShortForAHeader) {
    WriteFile("level.klv", "KLV7");
    ExpectFailureOf("-entsonly", "\nCouldn\u00B4t read KLV file level.klv\n");
    ExpectFailureOf("-lightsonly", "\nCouldn\u00B4t read KLV file level.klv\n");
    const std::string text = Compile({"-texsonly"}).text;
    EXPECT_THAT(text, HasSubstr("Writing KLV file ... \nTime:")) << "without a word, and without an ok";
    EXPECT_EQ(ReadFile("level.klv"), "KLV7");
}

TEST_F(LevelsToUpdate, AreCutShortOrOfAnotherKind) {
    Compile();
    CutShort("level.klv", ReadFile("level.klv").size() / 2);
    for (const char* mode : {"-entsonly", "-texsonly", "-lightsonly"})
        ExpectFailureOf(mode, " \nInvalid KLV file format");
    WriteFile("level.klv", std::string(300, 'x'));
    for (const char* mode : {"-entsonly", "-texsonly", "-lightsonly"})
        ExpectFailureOf(mode, " \nInvalid KLV file format");
}

TEST_F(Mistakes, ALevelInTheMapsPlace) {
    Compile();
    const std::string level = ReadFile("level.klv");
    for (const char* mode : {"-fast", "-entsonly", "-texsonly", "-lightsonly"}) {
        const ProcessResult run = RunK2k({"level.klv", "-pal", "palette.raw", mode});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.out, HasSubstr("\nUnrecognized map file format level.klv !\n"));
        EXPECT_TRUE(ReadFile("level.klv") == level) << mode;
    }
}

TEST_F(Mistakes, AnInterimFileInTheMapsPlace) {
    for (const char* name : {"level.$$p", "level.$$v", "level.$$e"}) {
        fs::copy_file("level.$$M", name);
        EXPECT_EQ(RunK2k({name, "-pal", "palette.raw"}).status, 1);
        EXPECT_TRUE(ReadFile(name) == ReadFile("level.$$M")) << name;
    }
}

}  // namespace
}  // namespace k2k::test
