// Which dialect a file is read in.
#include "map_text.h"
#include "mapread/file_map71.h"

namespace k2k::test {

namespace {

class Dialect : public MapTest {
  protected:
    int32_t VersionOf(const std::string& text) {
        SetMap(text);
        return OpenMapFile(Paths().MapPath)->GetVersion();
    }
};

TEST_F(Dialect, IsOldestWithoutAVersionLine) {
    EXPECT_EQ(VersionOf("{\n}\n"), 50);
}

TEST_F(Dialect, IsOldestForAnEmptyFileWhichHasNoEntities) {
    EXPECT_EQ(VersionOf(""), 50);
    Read("");
    EXPECT_TRUE(Entities().empty());
}

TEST_F(Dialect, IsTheVersionNumberWithoutItsLastDigit) {
    EXPECT_EQ(VersionOf("version 500\n"), 50);
    EXPECT_EQ(VersionOf("version 510\n"), 51);
    EXPECT_EQ(VersionOf("version 519\n"), 51);
    EXPECT_EQ(VersionOf("version 710\n"), 71);
    EXPECT_EQ(VersionOf("version 711\n"), 71);
}

TEST_F(Dialect, OfAnotherNumberIsRefused) {
    for (const char* version : {"600", "520", "720", "0", "x"}) {
        SetMap("version " + std::string(version) + "\n");
        const std::string path = Paths().MapPath;
        ExpectFatal([&] { OpenMapFile(path); }, ("\nUnrecognized map file format " + path + " !").substr(0, 128));
    }
}

TEST_F(Dialect, NumberMustStandOnTheVersionLine) {
    ExpectFatalRead("version\n500\n", " \nInvalid line 1");
}

TEST_F(Dialect, MappingIsPlainAt510) {
    Read("version 510\n" + Level(Box51(0, 64, "WALL 8 16 0 2 4")));
    ASSERT_EQ(Blocks().size(), 1U);
    const Texinfo& texinfo = TexinfoOf(Blocks()[0]->faces[0]);
    EXPECT_EQ(texinfo.shiftS, 8);
    EXPECT_EQ(texinfo.vecS, (Vec3{0.5, 0, 0}));
}

TEST_F(Dialect, MappingIsExplicitAt511) {
    Read("version 511\n" + Level(Box51(0, 64, "WALL ( 1 2 3 4 ) ( 5 6 7 8 )")));
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(TexinfoOf(Blocks()[0]->faces[0]).vecS, (Vec3{1, 2, 3}));
}

TEST_F(Dialect, MappingIsExplicitAt710Too) {
    Read("version 710\n" + Level(Box51(0, 64, "WALL ( 1 2 3 4 ) ( 5 6 7 8 )")));
    ASSERT_EQ(Blocks().size(), 1U);
    EXPECT_EQ(TexinfoOf(Blocks()[0]->faces[0]).vecS, (Vec3{1, 2, 3}));
}

TEST_F(Dialect, OldestHasNoExplicitMapping) {
    SetMap("version 501\n" + Level(Box50(0, 64)));
    const std::string message = "\nInvalid syntax in " + Paths().MapPath + ", line 7";
    ExpectFatal([] { ReadMap(false); }, message);
}

TEST_F(Dialect, FileMustBeThere) {
    Paths().MapPath = folder_.File("missing.$$M");
    ExpectFatal([] { ReadMap(false); }, "Can't open " + Paths().MapPath + " - No such file or directory");
}

TEST_F(Dialect, FileMustNotBeAFolder) {
    Paths().MapPath = folder_.path().string();
    ExpectFatal([] { ReadMap(false); }, "Can't open " + Paths().MapPath + " - Is a directory");
}

TEST_F(Dialect, OpenSaysNoWithoutAFlagOrAName) {
    SetMap("");
    EXPECT_FALSE(CFileMap50(Paths().MapPath).Open(false));
    EXPECT_FALSE(CFileMap50("").Open(true));
    CFileMap50 renamed;
    renamed.SetName(Paths().MapPath);
    EXPECT_TRUE(renamed.Open(true));
    EXPECT_TRUE(renamed.Close());
}

TEST_F(Dialect, OpenEmptiesTheEntityTable) {
    NewEntity();
    VersionOf("");
    EXPECT_TRUE(Entities().empty());
}

}  // namespace

}  // namespace k2k::test
