// The state of tests that touch the level in work, and a folder for its file.
#pragma once

#include "levelfile/file_klv.h"
#include "support/build_state.h"
#include "support/files.h"

namespace k2k::test {

class LevelState : public BuildState {
  protected:
    LevelState() { ResetDataSetsForTest(); }
    ~LevelState() override { ResetDataSetsForTest(); }

    std::string LevelPath() const { return folder_.File("level.klv"); }

    // Writes the level in work to a fresh file and gives its bytes.
    std::vector<uint8_t> Saved() {
        std::filesystem::remove(LevelPath());
        CFileKLV file(LevelPath());
        EXPECT_TRUE(file.Open(false));
        EXPECT_TRUE(file.Save());
        EXPECT_TRUE(file.Close());
        return ReadBytes(LevelPath());
    }

    // Puts a file in place and reads it into the level in work.
    void Load(const std::vector<uint8_t>& bytes) {
        WriteFile(LevelPath(), bytes);
        CFileKLV file(LevelPath());
        ASSERT_TRUE(file.Open(false));
        ASSERT_TRUE(file.Load());
    }

    TempDir folder_;
};

}  // namespace k2k::test
