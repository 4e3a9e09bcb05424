// Files that vanish between the stages of a build.
#include <gmock/gmock.h>

#include <filesystem>

#include "driver/build_log.h"
#include "driver/run_program.h"
#include "fuzzing.h"
#include "k2k/stages.h"
#include "program/compile.h"
#include "support/recording_display.h"

namespace k2k::test {
namespace {

namespace fs = std::filesystem;
using ::testing::EndsWith;
using ::testing::HasSubstr;

std::string vanishing;

template <int (*StageEntries::*Stage)()>
int RunWithoutFile() {
    fs::remove(vanishing);
    return (AllStages.*Stage)();
}

struct Ended {
    int status;
    std::string text;
};

class VanishingFiles : public SmallMapTest {
  protected:
    VanishingFiles() {
        Write(LitRoom());
        whole_ = Compile().level.bytes;
    }

    // A build in which the file is gone when the stage begins. What it read itself stays as it is.
    template <int (*StageEntries::*Stage)()>
    Ended RunWithout(const std::string& file) {
        vanishing = file;
        StageEntries stages = AllStages;
        stages.*Stage = RunWithoutFile<Stage>;
        auto before = UserFiles();
        before.erase(file);
        RecordingDisplay display;
        fuzz::ResetBuild();
        const int status = RunProgram("level -pal palette.raw -threads 1", stages, display);
        fuzz::ResetBuild();
        EXPECT_TRUE(UserFiles() == before);
        return {status, display.text};
    }

    void ExpectNextBuild() { EXPECT_TRUE(Compile().level.bytes == whole_); }

    // The run fails with this message; the build after it is as any other.
    void ExpectFailure(const Ended& run, const std::string& message) {
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.text, EndsWith("CRITICAL ERROR ------\n" + message + "\nPress any key... \n"));
        ExpectNextBuild();
    }

    std::vector<uint8_t> whole_;
};

TEST_F(VanishingFiles, PortalsBeforeVisibility) {
    const Ended run = RunWithout<&StageEntries::visibility>("level.$$p");
    EXPECT_EQ(LoadLevel("level.klv").surfaces.size(), 16U) << "the level of the first stage stays";
    ExpectFailure(run, " \nCan't read interim file level.$$p\n");
}

TEST_F(VanishingFiles, TheLevelBeforeVisibility) {
    const Ended run = RunWithout<&StageEntries::visibility>("level.klv");
    EXPECT_FALSE(fs::exists("level.klv")) << "what is still in memory is no level";
    ExpectFailure(run, "Can't open level.klv - No such file or directory");
}

TEST_F(VanishingFiles, TheLevelBeforeLighting) {
    const Ended run = RunWithout<&StageEntries::lighting>("level.klv");
    EXPECT_FALSE(fs::exists("level.klv")) << "no palette without a level";
    ExpectFailure(run, "Can't open level.klv - No such file or directory");
}

TEST_F(VanishingFiles, TheLevelBeforeTheColours) {
    const Ended run = RunWithout<&StageEntries::colours>("level.klv");
    EXPECT_FALSE(fs::exists("level.klv"));
    ExpectFailure(run, "Can't open level.klv - No such file or directory");
}

TEST_F(VanishingFiles, TheMapAndTheTexturesAreReadInTheFirstStageAlone) {
    const std::string map = ReadFile("level.$$M");
    EXPECT_EQ(RunWithout<&StageEntries::visibility>("level.$$M").status, 0);
    EXPECT_TRUE(ReadBytes("level.klv") == whole_);
    WriteFile("level.$$M", map);
    EXPECT_EQ(RunWithout<&StageEntries::lighting>("textures.$$w").status, 0);
    EXPECT_TRUE(ReadBytes("level.klv") == whole_);
}

TEST_F(VanishingFiles, ThePaletteBeforeTheColours) {
    const std::string palette = ReadFile("palette.raw");
    const Ended run = RunWithout<&StageEntries::colours>("palette.raw");
    EXPECT_EQ(run.status, 0);
    EXPECT_THAT(run.text, HasSubstr("Fatal error ->   could not open file :  palette.raw\n"));
    EXPECT_TRUE(LoadLevel("level.klv").Chunk(levelcheck::ChunkPalette).empty());
    WriteFile("palette.raw", palette);
    ExpectNextBuild();
}

}  // namespace
}  // namespace k2k::test
