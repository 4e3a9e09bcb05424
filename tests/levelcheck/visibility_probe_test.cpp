// Segments through open space: where nothing stands between two points, their regions see each other.
#include "levelcheck/visibility_probe.h"

#include <gtest/gtest.h>

#include "program/compile.h"

namespace k2k::test {
namespace {

using levelcheck::ProbeResult;
using levelcheck::ProbeVisibility;

class VisibilityProbe : public ::testing::TestWithParam<const char*> {
  protected:
    InTempDir folder_;
};

TEST_P(VisibilityProbe, FindsNoMiss) {
    constexpr uint64_t Wanted = 100000;
    TakeExample("71", GetParam());
    const ProbeResult result = ProbeVisibility(CompileLevel(GetParam()).level, Wanted, 1);
    EXPECT_EQ(result.clear, Wanted);
    EXPECT_EQ(result.misses, 0U) << result.firstMiss;
}

INSTANTIATE_TEST_SUITE_P(In, VisibilityProbe, ::testing::Values("house", "grid200"),
                         [](const auto& test) { return test.param; });

TEST(VisibilityProbeOfDamage, FindsRowsThatSeeTooLittle) {
    const InTempDir folder;
    TakeExample("71", "house");
    levelcheck::LevelView level = CompileLevel("house").level;
    const levelcheck::ChunkPlace rows = level.chunks[levelcheck::ChunkVis];
    for (uint32_t at = rows.offset; at < rows.offset + rows.size; ++at) {
        if (level.bytes[at] == 0)
            ++at;  // the length of a run of zeros stays as it is
        else
            level.bytes[at] = 1;
    }
    EXPECT_GT(ProbeVisibility(level, 1000, 1).misses, 0U);
}

}  // namespace
}  // namespace k2k::test
