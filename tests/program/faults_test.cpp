// Faults of the machine during a build: full disks, kills, closed streams. The user's files are never touched, and a
// level is that of a finished stage or makes way for the next build.
#include <gmock/gmock.h>
#include <sys/mount.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <thread>

#include "levelcheck/check.h"
#include "program/compile.h"

namespace k2k::test {
namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

// A file system of a few pages in memory.
class SmallDisk {
  public:
    explicit SmallDisk(const fs::path& folder) : folder_(folder) {
        fs::create_directory(folder_);
        mounted_ = mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=128k") == 0;
    }
    ~SmallDisk() {
        if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
    }
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;
    bool mounted() const { return mounted_; }

  private:
    fs::path folder_;
    bool mounted_ = false;
};

class Faults : public SmallMapTest {
  protected:
    // Its lightmap pages alone take 384 KiB.
    Faults() { Write(OneRoom().Light({64, 64, 64}, {200, 100, 50}, 300)); }

    // A run of the compiler as a shell's command sees fit.
    static ProcessResult RunInShell(const std::string& before, const std::string& behind = "") {
        const std::string program = K2kCommand({})[0];
        return RunProcess({"/bin/sh", "-c", before + " exec '" + program + "' level -pal palette.raw " + behind});
    }
};

TEST_F(Faults, AFullDiskLeavesTheLevelOfTheStageBefore) {
    const SmallDisk disk("disk");
    if (!disk.mounted()) GTEST_SKIP() << "mounting is not permitted here";
    for (const char* name : {"level.$$M", "textures.$$w", "palette.raw"}) fs::copy_file(name, fs::path("disk") / name);
    const std::string map = ReadFile("disk/level.$$M");
    const ProcessResult run = RunInShell("cd disk;");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("CRITICAL ERROR ------\nE005 - can't write file level.klv\nPress any key"));
    EXPECT_TRUE(ReadFile("disk/level.$$M") == map);
    const levelcheck::LevelView level = LoadLevel("disk/level.klv");
    EXPECT_EQ(level.surfaces.size(), 16U);
    EXPECT_FALSE(level.Chunk(levelcheck::ChunkVis).empty()) << "visibility had come to its end";
    EXPECT_TRUE(level.Chunk(levelcheck::ChunkPages).empty());
}

TEST_F(Faults, ALimitOnTheSizeOfFilesIsAnErrorAndNoSignal) {
    const ProcessResult run = RunInShell("ulimit -f 256;");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("CRITICAL ERROR ------\nE005 - can't write file level.klv\nPress any key"));
    EXPECT_EQ(LoadLevel("level.klv").surfaces.size(), 16U);
    EXPECT_EQ(Compile().level.Chunk(levelcheck::ChunkPages).size(), 2 * 196608U) << "the next build";
}

TEST_F(Faults, AKilledBuildMakesWayForTheNext) {
    const std::vector<uint8_t> whole = Compile().level.bytes;
    for (const int milliseconds : {5, 20, 35, 50, 80}) {
        Process build(K2kCommand({"level", "-pal", "palette.raw"}));
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        build.Signal(SIGKILL);
        build.Wait();
        EXPECT_TRUE(Compile().level.bytes == whole) << "killed after ms: " << milliseconds;
    }
}

TEST_F(Faults, ClosedStandardStreamsDoNotReachTheLevel) {
    const std::vector<uint8_t> whole = Compile().level.bytes;
    EXPECT_EQ(RunInShell("", "<&- >&- 2>&-").status, 0);
    EXPECT_TRUE(ReadBytes("level.klv") == whole);
}

}  // namespace
}  // namespace k2k::test
