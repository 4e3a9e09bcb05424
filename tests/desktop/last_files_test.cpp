#include "desktop/last_files.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSettings>

#include "support/files.h"

namespace k2k {
namespace {

using ::testing::HasSubstr;

class LastFiles : public ::testing::Test {
  protected:
    LastFiles() {
        QSettings::setPath(QSettings::IniFormat, QSettings::UserScope, QString::fromStdString(folder_.path().string()));
        std::filesystem::create_directory(folder_.path() / "k2k");
    }

    std::string Path() const { return folder_.File("k2k/k2k-desktop.ini"); }

    test::TempDir folder_;
};

TEST_F(LastFiles, AreEmptyAtFirst) {
    EXPECT_EQ(LoadLastFiles().map, "");
    EXPECT_EQ(LoadLastFiles().palette, "");
}

TEST_F(LastFiles, AreKept) {
    SaveLastFiles({"/my maps/h\u00E4us;, \"=%1.$$M", "/p.pcx"});
    EXPECT_EQ(LoadLastFiles().map, "/my maps/h\u00E4us;, \"=%1.$$M");
    EXPECT_EQ(LoadLastFiles().palette, "/p.pcx");
    SaveLastFiles({"a", "b"});
    EXPECT_EQ(LoadLastFiles().map, "a");
}

TEST_F(LastFiles, AreKeptInFullLength) {
    const QString lengthy(3000, 'x');
    SaveLastFiles({lengthy, "b"});
    EXPECT_EQ(LoadLastFiles().map, lengthy);
}

TEST_F(LastFiles, LeaveOtherSectionsAndKeys) {
    test::WriteFile(Path(), "[Other]\nmap=mine\n\n[files]\nzoom=3\n");
    SaveLastFiles({"a", "b"});
    const std::string text = test::ReadFile(Path());
    EXPECT_THAT(text, HasSubstr("[Other]\nmap=mine\n"));
    EXPECT_THAT(text, HasSubstr("zoom=3\n"));
    EXPECT_EQ(LoadLastFiles().map, "a");
}

TEST_F(LastFiles, AreEmptyInADamagedFile) {
    test::WriteFile(Path(), std::string("[files\nma\0p==\\x\n[[]]\n\xFF\xFE=", 24));
    EXPECT_EQ(LoadLastFiles().map, "");
    SaveLastFiles({"a", "b"});
    LoadLastFiles();
}

TEST_F(LastFiles, AreLostWithoutAWordWhereNothingCanBeWritten) {
    std::filesystem::create_directory(Path());
    SaveLastFiles({"a", "b"});
    EXPECT_TRUE(std::filesystem::is_directory(Path()));
}

}  // namespace
}  // namespace k2k
