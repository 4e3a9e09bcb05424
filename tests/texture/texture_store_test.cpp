#include "texture/texture_store.h"

#include <gmock/gmock.h>

#include <map>
#include <random>

#include "levelfile/file_klv.h"
#include "support/build_state.h"
#include "support/files.h"
#include "texture/wad.h"
#include "texture/wad_bytes.h"

namespace k2k {
namespace {

using namespace test;
using testing::ElementsAre;

std::string_view Text(const TextureName& name) {
    const std::string_view field(name.data(), name.size());
    return field.substr(0, field.find('\0'));
}

class TextureStore : public BuildState {
  protected:
    TextureStore() { ResetDataSetsForTest(); }
    ~TextureStore() override { ResetDataSetsForTest(); }

    std::string WadPath() const { return folder_.File("textures.$$w"); }
    std::string MapPath() const { return folder_.File("level.$$M"); }
    void Load(const Wad& wad) {
        WriteFile(WadPath(), wad.Bytes());
        LoadTextures(WadPath(), MapPath());
    }
    CWadFile Open(const std::vector<uint8_t>& bytes) {
        WriteFile(WadPath(), bytes);
        CWadFile wad;
        wad.OpenWad(WadPath(), WadPath());
        return wad;
    }
    std::string InvalidText() const { return ("Invalid\tor missing texture file\t" + WadPath()).substr(0, 127); }

    static int32_t I32At(size_t offset) {
        int32_t value = 0;
        EXPECT_LE(offset + 4, Textures().blob.size());
        std::memcpy(&value, Textures().blob.data() + offset, 4);
        return value;
    }

    TempDir folder_;
};

// ---- Names

TEST_F(TextureStore, NamesAreMadeUpperCase) {
    EXPECT_EQ(Text(NormaliseLumpName("aStone_z1~")), "ASTONE_Z1~");
    EXPECT_EQ(Text(NormaliseLumpName("")), "");
}

TEST_F(TextureStore, UmlautsOfTheAnsiCodePageAreMadeUpperCase) {
    EXPECT_EQ(Text(NormaliseLumpName("\xE4\xF6\xFC\xDF\xE9")), "\xC4\xD6\xDC\xDF\xE9");
}

TEST_F(TextureStore, NamesEndAtAZeroOrAfter16Characters) {
    EXPECT_EQ(Text(NormaliseLumpName(std::string_view("ab\0cd", 5))), "AB");
    EXPECT_EQ(NormaliseLumpName(std::string_view("ab\0cd", 5))[3], '\0');
    EXPECT_EQ(Text(NormaliseLumpName("abcdefghijklmnopq")), "ABCDEFGHIJKLMNOP");
}

// ---- Opening

TEST_F(TextureStore, WithoutAWadKeyThereAreNoTextures) {
    ExpectFatal([&] { LoadTextures("", MapPath()); }, "Texture file\tmissing!");
}

TEST_F(TextureStore, AFileThatIsMissingIsNamedAsItWasFirstTried) {
    ExpectFatal([] { LoadTextures("no\\such.wad", "/map/level.$$M"); },
                "Can't open no\\such.$$w - No such file or directory");
}

TEST_F(TextureStore, AFileThatIsNoWadIsFatal) {
    for (const std::string_view bytes : {"", "WAD2", "WAF2\0\0\0\0\0\0\0\0"}) {
        ExpectFatal([&] { Open({bytes.begin(), bytes.end()}); }, InvalidText());
    }
}

TEST_F(TextureStore, AWadWithoutLumpsIsGood) {
    EXPECT_EQ(Open(Wad().Bytes()).FindLumpSize("A"), 0);
}

TEST_F(TextureStore, TheExtensionIsReplaced) {
    WriteFile(WadPath(), Wad().Add("A", 68, Image("A", 1, 2)).Bytes());
    LoadTextures(folder_.File("textures.wad"), MapPath());
    EXPECT_EQ(Textures().BlobTextureCount(), 1U);
    LoadTextures(folder_.File("textures"), MapPath());
    EXPECT_EQ(Textures().BlobTextureCount(), 1U);
}

// ---- Hostile files

TEST_F(TextureStore, ADirectoryOutsideTheFileIsFatal) {
    const Wad wad = Wad().Add("A", 68, Image("A", 1, 1));
    for (const auto& [count, offset] : {std::pair{2, 44}, {1, 45}, {1, -1}, {-1, 44}, {INT32_MAX, 0}, {1, INT32_MAX}}) {
        const std::vector<uint8_t> bytes = wad.Bytes(count, offset);
        ExpectFatal([&] { Open(bytes); }, InvalidText());
    }
}

TEST_F(TextureStore, ATextureOutsideTheFileIsFatal) {
    for (const auto& [position, size] : {std::pair{12, 33}, {45, 0}, {-1, 4}, {12, -1}, {INT32_MAX, INT32_MAX}}) {
        const std::vector<uint8_t> bytes = Wad().AddEntry("A", 68, position, size).Bytes();
        ExpectFatal([&] { Open(bytes); }, InvalidText());
    }
}

TEST_F(TextureStore, LumpsThatNobodyReadsMayLieAnywhere) {
    Wad wad;
    wad.Add("A", 68, Image("A", 1, 1)).AddEntry("A", 68, -5, -5).AddEntry("B", 67, INT32_MAX, INT32_MAX);
    EXPECT_EQ(Open(wad.Bytes()).FindLumpSize("A"), 32);
}

TEST_F(TextureStore, MoreImageBytesThanOffsetsCanReachAreFatal) {
    // Lumps may overlap: 2200 of them, each a whole file of one MiB.
    Wad wad;
    wad.Add("BIG", 68, std::vector<uint8_t>(1 << 20));
    for (int i = 0; i < 2200; ++i) wad.AddEntry(std::to_string(i), 68, 12, 1 << 20);
    ExpectFatal([&] { Load(wad); }, "Insufficient\tmemory space for textures!");
}

// ---- Lumps

// A WAD with a lump of every type, named by the type's number.
std::vector<uint8_t> WadOfAllTypes(char version) {
    Wad wad(version);
    for (int type = -128; type < 128; ++type) {
        wad.Add(std::to_string(type), static_cast<char>(type), Image("x", 1, 1));
    }
    return wad.Bytes();
}

TEST_F(TextureStore, BelowVersion7ThreeTypesAreTextures) {
    for (const char version : {'2', '5', '6'}) {
        const CWadFile wad = Open(WadOfAllTypes(version));
        for (int type = -128; type < 128; ++type) {
            const bool isTexture = type == 68 || type == 84 || type == 92;
            EXPECT_EQ(wad.FindLumpSize(std::to_string(type)), isTexture ? 32 : 0) << type;
        }
    }
}

TEST_F(TextureStore, FromVersion7OnTypes0To13AreTextures) {
    for (const char version : {'7', '9'}) {
        const CWadFile wad = Open(WadOfAllTypes(version));
        for (int type = -128; type < 128; ++type) {
            EXPECT_EQ(wad.FindLumpSize(std::to_string(type)), type >= 0 && type <= 13 ? 32 : 0) << type;
        }
    }
}

TEST_F(TextureStore, LumpsAreFoundWithoutRegardToCase) {
    CWadFile wad = Open(Wad().Add("sTone", 68, Image("x", 1, 1)).Bytes());
    EXPECT_EQ(wad.FindLumpSize("StONE"), 32);
    EXPECT_EQ(wad.FindLumpSize("STON"), 0);
}

TEST_F(TextureStore, ANameOf16CharactersIsFoundByAll16) {
    CWadFile wad = Open(Wad().Add("ABCDEFGHIJKLMNOP", 68, Image("x", 1, 1)).Bytes());
    EXPECT_EQ(wad.FindLumpSize("ABCDEFGHIJKLMNOP"), 32);
    EXPECT_EQ(wad.FindLumpSize("ABCDEFGHIJKLMNO"), 0);
}

TEST_F(TextureStore, OfSeveralLumpsTheFirstTextureCounts) {
    CWadFile wad = Open(Wad()
                            .Add("A", 67, Image("A", 1, 1, 1))
                            .Add("A", 68, Image("A", 1, 1, 2))
                            .Add("A", 68, Image("A", 1, 1, 3))
                            .Bytes());
    EXPECT_EQ(wad.FindLumpSize("A"), 26);
}

TEST_F(TextureStore, LumpsAreFoundAsByALinearSearch) {
    std::mt19937 random(6);
    Wad file;
    std::vector<std::tuple<std::string, int, int>> plain;
    for (int i = 0; i < 300; ++i) {
        const std::string name(1 + random() % 3, static_cast<char>('A' + random() % 6));
        const int type = random() % 2 == 0 ? 68 : 67, size = static_cast<int>(random() % 12);
        file.AddEntry(name, static_cast<char>(type), 0, size);
        plain.emplace_back(name, type, size);
    }
    const CWadFile wad = Open(file.Bytes());
    for (size_t length = 1; length <= 4; ++length) {
        for (char letter = 'A'; letter <= 'G'; ++letter) {
            const std::string wanted(length, letter);
            const auto found = std::find_if(plain.begin(), plain.end(), [&](const auto& lump) {
                return std::get<0>(lump) == wanted && std::get<1>(lump) == 68;
            });
            EXPECT_EQ(wad.FindLumpSize(wanted), found == plain.end() ? 0 : std::get<2>(*found)) << wanted;
        }
    }
}

TEST_F(TextureStore, ALumpThatIsMissingWarnsUnderItsGivenName) {
    Options().quiet = true;
    CWadFile wad = Open(Wad().Bytes());
    EXPECT_EQ(wad.FindLumpSize("stone"), 0);
    EXPECT_EQ(TakeLoggedText(), "");
    uint8_t destination = 7;
    EXPECT_EQ(wad.ReadLump("stone", &destination), 0);
    EXPECT_EQ(TakeLoggedText(), " \nWARNING\tW050: texture stone not found\n");
}

// ---- The blob

TEST_F(TextureStore, TheBlobStandsByteByByte) {
    const std::vector<uint8_t> a = Image("A", 64, 32, 5), b = Image("B", 1, 1, 6);
    Textures().FindTextureName("B");
    Textures().FindTextureName("GONE");
    Load(Wad().Add("a", 68, a).Add("B", 68, b).Add("C", 68, {}));
    std::vector<uint8_t> expected(20);
    const int32_t head[] = {4, 20, -1, 20 + 30, -1};
    std::memcpy(expected.data(), head, sizeof(head));
    expected.insert(expected.end(), b.begin(), b.end());
    expected.insert(expected.end(), a.begin(), a.end());
    EXPECT_EQ(Textures().blob, expected);
    // The name without a lump warns; the empty lump does not.
    EXPECT_EQ(TakeLoggedText(), " \nWARNING\tW050: texture GONE not found\n");
    EXPECT_EQ(Textures().ImageSize(2), (std::array<uint32_t, 2>{64, 32}));
    EXPECT_EQ(Textures().ImageSize(3), (std::array<uint32_t, 2>{1, 1}));
}

TEST_F(TextureStore, TheMapsNamesComeFirstAndThenAllOthersInDirectoryOrder) {
    Textures().FindTextureName("C");
    Load(Wad().Add("b", 68, Image("B", 1, 1)).Add("C", 68, Image("C", 1, 1)).Add("A", 68, Image("A", 1, 1)));
    std::vector<std::string> names;
    for (const TextureName& name : Textures().names) names.emplace_back(Text(name));
    EXPECT_THAT(names, ElementsAre("C", "B", "A"));
}

TEST_F(TextureStore, ALumpThatIsNoTextureAddsANameButNoImage) {
    Load(Wad('5').Add("PALETTE", 67, Image("x", 1, 1)));
    EXPECT_EQ(Textures().BlobTextureCount(), 1U);
    EXPECT_EQ(I32At(4), -1);
    EXPECT_EQ(Textures().blob.size(), 8U);
    EXPECT_EQ(TakeLoggedText(), " \nWARNING\tW050: texture PALETTE not found\n");
}

TEST_F(TextureStore, AWadOf4097NamesIsFatal) {
    Wad wad;
    for (int i = 0; i < 4096; ++i) wad.AddEntry(std::to_string(i), 67, 0, 0);
    Load(wad);
    EXPECT_EQ(Textures().BlobTextureCount(), 4096U);
    ResetDataSetsForTest();
    ExpectFatal([&] { Load(wad.AddEntry("ONE MORE", 67, 0, 0)); }, "E019: Texture size overrun");
}

TEST_F(TextureStore, LoadingAgainReplacesTheBlob) {
    Load(Wad().Add("A", 68, Image("A", 1, 1)));
    const std::vector<uint8_t> first = Textures().blob;
    LoadTextures(WadPath(), MapPath());
    EXPECT_EQ(Textures().blob, first);
}

}  // namespace
}  // namespace k2k
