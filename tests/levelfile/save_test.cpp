// Saves that do not come to their end: what they leave is the old level or no level at all.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include <csignal>
#include <optional>

#include "levelfile/bytes.h"
#include "levelfile/file_klv.h"
#include "levelfile/geometry_data.h"
#include "levelfile/level_state.h"
#include "levelfile/texture_data.h"

namespace k2k {
namespace {

using namespace test;

// Stops in front of a write, and keeps what is on disk at that moment.
class InterruptedFile : public CFileKLV {
  public:
    InterruptedFile(const std::string& path, int writes) : CFileKLV(path), writesLeft_(writes) {}
    bool WriteAt(uint32_t offset, uint32_t size, const void* buffer) override {
        if (writesLeft_-- > 0) return CFileKLV::WriteAt(offset, size, buffer);
        onDisk = ReadBytes(name());
        throw FatalStop("interrupted");
    }
    std::vector<uint8_t> onDisk;

  private:
    int writesLeft_;
};

// No file of the process may grow beyond a size.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
        getrlimit(RLIMIT_FSIZE, &before_);
        const rlimit limit{bytes, before_.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() {
        setrlimit(RLIMIT_FSIZE, &before_);
        std::signal(SIGXFSZ, handler_);
    }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    rlimit before_{};
    void (*handler_)(int);
};

class Saves : public LevelState {
  protected:
    // A level on disk, and another one in work.
    Saves() {
        Textures().paletteLump = {1, 2, 3};
        old_ = Saved();
        FillLevel();
    }
    static void FillLevel() {
        Textures().paletteLump = {1, 2, 3};
        Textures().blob.assign(50000, 7);
        Geometry().vertices.resize(100);
    }

    // What is on disk when the save of the level in work over a file ends before a number of writes; nothing when it
    // comes to its end.
    std::optional<std::vector<uint8_t>> LeftOf(const std::vector<uint8_t>& before, int writes) const {
        WriteFile(LevelPath(), before);
        if (before.empty()) std::filesystem::remove(LevelPath());
        InterruptedFile file(LevelPath(), writes);
        EXPECT_TRUE(file.Open(false));
        try {
            EXPECT_TRUE(file.Save());
            return std::nullopt;
        } catch (const FatalStop&) {
            return file.onDisk;
        }
    }

    void ExpectNoLevel(const std::vector<uint8_t>& bytes, int writes) const {
        const std::string path = folder_.File("left.klv");
        WriteFile(path, bytes);
        CFileKLV file(path);
        if (file.Open(false)) ExpectFatal([&] { file.Load(); }, " \nInvalid KLV file format");
        EXPECT_FALSE(HasFailure()) << "left after writes: " << writes;
        FillLevel();
    }

    std::vector<uint8_t> old_;
};

TEST_F(Saves, LeaveTheOldLevelOrNoneWhereverTheyAreInterrupted) {
    int keptOld = 0, leftNone = 0;
    for (int writes = 0; const auto left = LeftOf(old_, writes); ++writes) {
        if (std::equal(old_.begin(), old_.end(), left->begin())) {
            ++keptOld;
        } else {
            ExpectNoLevel(*left, writes);
            ++leftNone;
        }
    }
    EXPECT_GT(keptOld, 0);
    EXPECT_GT(leftNone, 5) << "some writes of chunks";
    const std::vector<uint8_t> inPlace = ReadBytes(LevelPath());
    EXPECT_EQ(inPlace, Saved()) << "as in a fresh file";
}

TEST_F(Saves, OfFreshFilesLeaveNoLevelWhereverTheyAreInterrupted) {
    int leftNone = 0;
    for (int writes = 0; const auto left = LeftOf({}, writes); ++writes) {
        ExpectNoLevel(*left, writes);
        ++leftNone;
    }
    EXPECT_GT(leftNone, 5);
}

TEST_F(Saves, WithoutRoomLeaveTheOldLevel) {
    const FileSizeLimit limit(4000);
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    ExpectFatal([&] { file.Save(); }, "E005 - can't write file " + LevelPath());
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(ReadBytes(LevelPath()), old_);
}

TEST_F(Saves, OfMoreThanAFormatCanHoldLeaveTheOldLevel) {
    Options().mesh = true;
    CMesh& mesh = Geometry().meshes.emplace_back();
    AddMeshSurface(mesh, 0);
    Geometry().surfaces.resize(1);
    Geometry().surfaces[0].texInfoId = 99;
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false));
    EXPECT_NE(FatalText([&] { file.Save(); }), "");
    EXPECT_TRUE(file.Close());
    EXPECT_EQ(ReadBytes(LevelPath()), old_);
}

TEST_F(Saves, PutMeshesAsideThatNoLevelHas) {
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Meshes, {0, 0, 0, 0}).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false) && file.Load() && file.Save());
    EXPECT_EQ(file.GetChunkSize(Chunk::Meshes), 0U) << "no sun says that there are meshes";
    EXPECT_EQ(file.GetChunkOffset(Chunk::Meshes), 0U);
    EXPECT_FALSE(Options().mesh);
}

TEST_F(Saves, KeepTheMeshesOfALevelThatHasThem) {
    Bytes sun;
    sun.U32(1).U32(8).U32(5).Zeros(24).F32(7.01F).Zeros(28);
    WriteFile(LevelPath(), LevelFile('7').Add(Chunk::Entities, sun.get()).Add(Chunk::Meshes, {0, 0, 0, 0}).get());
    CFileKLV file(LevelPath());
    ASSERT_TRUE(file.Open(false) && file.Load());
    EXPECT_TRUE(Options().mesh);
    ASSERT_TRUE(file.Save());
    EXPECT_EQ(file.GetChunkSize(Chunk::Meshes), 4U);
}

TEST_F(Saves, KnowNoMeshesInALevelWithoutThatChunk) {
    Bytes sun;
    sun.U32(1).U32(8).U32(5).Zeros(24).F32(7.01F).Zeros(28);
    Load(LevelFile('7').Add(Chunk::Entities, sun.get()).get());
    EXPECT_FALSE(Options().mesh);
}

}  // namespace
}  // namespace k2k
