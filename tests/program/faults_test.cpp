// Faults of the machine during a build: full disks, kills, closed streams. The user's files are never touched, and a
// level is that of a finished stage or makes way for the next build.
#include <gmock/gmock.h>
#include <sys/mount.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <random>
#include <set>
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

// Nothing can be written in the folder, not even by the superuser, to whom permissions mean nothing.
class ReadOnly {
  public:
    explicit ReadOnly(const fs::path& folder) : folder_(fs::canonical(folder)) {
        mounted_ = mount(folder_.c_str(), folder_.c_str(), nullptr, MS_BIND, nullptr) == 0;
        works_ = mounted_ && mount(nullptr, folder_.c_str(), nullptr, MS_REMOUNT | MS_BIND | MS_RDONLY, nullptr) == 0;
        fs::current_path(folder_);  // the mounted one
    }
    ~ReadOnly() {
        if (mounted_) umount2(folder_.c_str(), MNT_DETACH);
        fs::current_path(folder_);
    }
    ReadOnly(const ReadOnly&) = delete;
    ReadOnly& operator=(const ReadOnly&) = delete;
    bool works() const { return works_; }

  private:
    fs::path folder_;
    bool mounted_ = false, works_ = false;
};

// Something is mounted on the file, so that it can be written and not be removed: as in a folder of somebody else.
class Unremovable {
  public:
    explicit Unremovable(const fs::path& file) : file_(fs::canonical(file)) {
        works_ = mount(file_.c_str(), file_.c_str(), nullptr, MS_BIND, nullptr) == 0;
    }
    ~Unremovable() {
        if (works_) umount2(file_.c_str(), MNT_DETACH);
    }
    Unremovable(const Unremovable&) = delete;
    Unremovable& operator=(const Unremovable&) = delete;
    bool works() const { return works_; }

  private:
    fs::path file_;
    bool works_ = false;
};

class Faults : public SmallMapTest {
  protected:
    // Its lightmap pages alone take 384 KiB.
    Faults() { Write(OneRoom().Light({64, 64, 64}, {200, 100, 50}, 300)); }

    // A level file that can be read is sound: it is that of a finished stage.
    static void ExpectStageOrNothing() {
        if (!fs::exists("level.klv")) return;
        const levelcheck::LevelView level = LoadLevel("level.klv");
        if (!level.broken.empty()) return;
        const std::vector<levelcheck::Fault> faults = levelcheck::Check(level);
        EXPECT_TRUE(levelcheck::IsSound(faults)) << levelcheck::Describe(faults);
    }

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

TEST_F(Faults, ADiskOfAnySizeHoldsAWholeStageOrMakesWayForTheNextBuild) {
    const SmallDisk disk("disk");
    if (!disk.mounted()) GTEST_SKIP() << "mounting is not permitted here";
    const std::vector<uint8_t> whole = Compile().level.bytes;
    for (const char* name : {"level.$$M", "textures.$$w", "palette.raw"}) fs::copy_file(name, fs::path("disk") / name);
    const std::string map = ReadFile("disk/level.$$M"), textures = ReadFile("disk/textures.$$w");
    std::set<int> statuses;
    for (const char* size : {"size=16k", "size=20k", "size=24k", "size=32k", "size=300k", "size=1m"}) {
        ASSERT_EQ(mount("tmpfs", "disk", "tmpfs", MS_REMOUNT, size), 0);
        const int status = RunInShell("cd disk;").status;
        statuses.insert(status);
        EXPECT_EQ(status, fs::exists("disk/level.klv") && ReadBytes("disk/level.klv") == whole ? 0 : 1) << size;
        EXPECT_TRUE(ReadFile("disk/level.$$M") == map && ReadFile("disk/textures.$$w") == textures) << size;
    }
    EXPECT_EQ(statuses, (std::set<int>{0, 1}));
}

TEST_F(Faults, AReadOnlyFolderKeepsItsLevel) {
    Compile();
    const auto before = UserFiles();
    const std::string level = ReadFile("level.klv");
    const ReadOnly folder(".");
    if (!folder.works()) GTEST_SKIP() << "a folder cannot be made read-only here";
    EXPECT_EQ(FailureOf({}), "E078") << "the portal file is the first that it writes";
    for (const char* mode : {"-entsonly", "-texsonly", "-lightsonly"}) {
        EXPECT_EQ(FailureOf({mode}), "Can't open level.klv - Read-only file system") << mode;
    }
    EXPECT_TRUE(ReadFile("level.klv") == level);
    EXPECT_TRUE(UserFiles() == before);
}

// A level without a tree, built over one with a tree: empty tables leave their entries in the header alone.
TEST_F(Faults, ALevelThatCannotBeRemovedLeavesNothingInTheNext) {
    const std::vector<uint8_t> fresh = Compile({"-mesh", "-nobsp"}).level.bytes;
    Compile();
    const Unremovable level("level.klv");
    if (!level.works()) GTEST_SKIP() << "mounting is not permitted here";
    EXPECT_TRUE(Compile({"-mesh", "-nobsp"}).level.bytes == fresh);
}

TEST_F(Faults, ALimitOnTheSizeOfFilesIsAnErrorAndNoSignal) {
    const ProcessResult run = RunInShell("ulimit -f 256;");
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.out, HasSubstr("CRITICAL ERROR ------\nE005 - can't write file level.klv\nPress any key"));
    EXPECT_EQ(LoadLevel("level.klv").surfaces.size(), 16U);
    EXPECT_EQ(Compile().level.Chunk(levelcheck::ChunkPages).size(), 2 * 196608U) << "the next build";
}

// Delays up to the time that a whole build took spread the kills over it on any machine; what must hold does not depend
// on where they fall. The next build begins on what the killed one left.
TEST_F(Faults, BuildsKilledAtAnyMomentMakeWayForTheNext) {
    const auto begun = std::chrono::steady_clock::now();
    const std::vector<uint8_t> whole = Compile().level.bytes;
    const auto duration = std::chrono::steady_clock::now() - begun;
    const auto files = UserFiles();
    std::mt19937 random(5);
    for (int kill = 0; kill < 50; ++kill) {
        Process build(K2kCommand({"level", "-pal", "palette.raw"}));
        std::this_thread::sleep_for(duration * (random() % 1000) / 1000);
        build.Signal(SIGKILL);
        const int status = build.Wait().status;
        ASSERT_TRUE(UserFiles() == files) << kill;
        if (status == 0) {
            EXPECT_TRUE(ReadBytes("level.klv") == whole) << kill;
        } else {
            EXPECT_EQ(status, 128 + SIGKILL);
            ExpectStageOrNothing();
        }
        if (kill % 5 != 4) continue;
        EXPECT_TRUE(Compile().level.bytes == whole) << kill;
    }
}

TEST_F(Faults, ClosedStandardStreamsDoNotReachTheLevel) {
    const std::vector<uint8_t> whole = Compile().level.bytes;
    EXPECT_EQ(RunInShell("", "<&- >&- 2>&-").status, 0);
    EXPECT_TRUE(ReadBytes("level.klv") == whole);
}

}  // namespace
}  // namespace k2k::test
