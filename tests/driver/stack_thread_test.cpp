#include "driver/stack_thread.h"

#include <gtest/gtest.h>

#include "driver/build_log.h"

namespace k2k {
namespace {

// Needs about 4 KiB of stack a level.
int Descend(int levels) {
    volatile char frame[4000];
    frame[0] = static_cast<char>(levels);
    return levels == 0 ? 0 : Descend(levels - 1) + (frame[0] == static_cast<char>(levels) ? 1 : 0);
}

TEST(AThread, HasTheStackThatItIsGiven) {
    int depth = 0;
    StackThread([&] { depth = Descend(10000); }, size_t{64} << 20).Join();
    EXPECT_EQ(depth, 10000);
}

TEST(AThread, GivesItsExceptionToWhoeverWaits) {
    StackThread thread([] { throw FatalStop("E051"); });
    EXPECT_THROW(thread.Join(), FatalStop);
    EXPECT_NO_THROW(thread.Join());
}

TEST(AThread, IsWaitedForWhenItGoesOutOfScope) {
    bool ran = false;
    {
        const StackThread thread([&] { ran = true; });
    }
    EXPECT_TRUE(ran);
}

}  // namespace
}  // namespace k2k
