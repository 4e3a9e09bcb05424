#include "driver/stage.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "driver/build_log.h"
#include "driver/build_options.h"
#include "driver/out_of_memory.h"
#include "noted_stages.h"
#include "support/build_state.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define SANITIZED
#endif
#endif

namespace k2k {
namespace {

using test::ran;

class AStage : public test::BuildState {
  protected:
    AStage() { ran.clear(); }

    // Runs the stage of a word; its message, when it posts one.
    std::optional<PostedMessage> Run(uint32_t word) {
        word_ = word;
        status_ = StageThread(word_, stages_, queue_);
        return queue_.WaitUntil(std::chrono::steady_clock::now());
    }

    StageEntries stages_ = test::NotedStages;
    MessageQueue queue_;
    uint32_t word_ = 0;
    int status_ = 0;
};

TEST_F(AStage, RunsAndHandsBackItsWord) {
    const auto posted = Run(1);
    ASSERT_TRUE(posted);
    EXPECT_EQ(posted->message, Message::StageFinished);
    EXPECT_EQ(posted->word, 1U + 16 + 32);
    EXPECT_EQ(word_, posted->word);
    EXPECT_EQ(status_, 1);
    EXPECT_EQ(ran, "g");
}

TEST_F(AStage, IsChosenByTheNumberInItsWord) {
    for (uint32_t number = 1; number <= 4; ++number) Run(number);
    EXPECT_EQ(ran, "gvlc");
}

TEST_F(AStage, LightsWithRadiosityWhenAsked) {
    Options().litv2 = true;
    Run(3);
    EXPECT_EQ(ran, "r");
}

TEST_F(AStage, FinishesWhateverItReturns) {
    stages_.visibility = [] { return -1; };
    EXPECT_EQ(Run(2)->word, 2U + 16 + 32);
}

TEST_F(AStage, RunsOnceAtATime) {
    EXPECT_FALSE(Run(1 + 16));
    EXPECT_EQ(status_, 0);
    EXPECT_EQ(word_, 17U);
    EXPECT_EQ(ran, "");
}

TEST_F(AStage, OutsideOfOneToFourIsNone) {
    EXPECT_FALSE(Run(0));
    EXPECT_FALSE(Run(5));
    EXPECT_EQ(status_, 0);
}

TEST_F(AStage, ClearsBits4To15WhenItStarts) {
    EXPECT_EQ(Run(0xF0001 | 128 | 0x8000)->word, 0xF0001U + 16 + 32);
}

TEST_F(AStage, FailsWithAFatalError) {
    stages_.geometry = []() -> int { FatalError("E051"); };
    const auto posted = Run(1);
    ASSERT_TRUE(posted);
    EXPECT_EQ(posted->message, Message::StageFinished);
    EXPECT_EQ(posted->word, 1U + 128 + 32);
}

TEST_F(AStage, ThatEndsTheProgramPostsNothingOfItself) {
    stages_.colours = []() -> int { throw ProgramExit(-1); };
    const auto posted = Run(4);
    ASSERT_TRUE(posted);
    EXPECT_EQ(posted->message, Message::WorkerEnded);
    EXPECT_EQ(posted->word, 4U + 16);
}

TEST_F(AStage, FailsWithoutMemory) {
    stages_.geometry = []() -> int { throw OutOfMemory(1234); };
    EXPECT_EQ(Run(1)->word, 1U + 128 + 32);
    EXPECT_EQ(test::Logged(),
              "\n------ CRITICAL ERROR ------\n\nOut of memory while allocating 1234 bytes !\n\nPress any key... \n");
}

TEST_F(AStage, FailsWithWhateverTheLibraryThrows) {
    stages_.geometry = []() -> int { throw std::length_error("vector too long"); };
    EXPECT_EQ(Run(1)->word, 1U + 128 + 32);
    EXPECT_EQ(test::Logged(), "\n------ CRITICAL ERROR ------\nvector too long\nPress any key... \n");
}

TEST(TheAllocator, TellsTheSizeThatItCouldNotGive) {
#ifdef SANITIZED
    GTEST_SKIP() << "the sanitizers have an allocator of their own";
#else
    volatile size_t size = size_t{1} << 62;
    try {
        ::operator delete(::operator new(size));
        ADD_FAILURE() << "that much memory?";
    } catch (const OutOfMemory& failure) {
        EXPECT_EQ(failure.size(), size_t{1} << 62);
    }
#endif
}

}  // namespace
}  // namespace k2k
