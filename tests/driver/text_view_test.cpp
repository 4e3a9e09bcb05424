#include "driver/text_view.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace k2k {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::string Repeat(const std::string& text, int times) {
    std::string all;
    for (int i = 0; i < times; ++i) all += text;
    return all;
}

class AView : public ::testing::Test {
  protected:
    void AddNumbered(int first, int last) {
        for (int i = first; i <= last; ++i) view_.Add(std::to_string(i) + "\n");
    }

    TextView view_;
};

TEST_F(AView, IsEmptyAtFirst) {
    view_.Add("");
    EXPECT_THAT(view_.Lines(), IsEmpty());
}

TEST_F(AView, EndsALineAtItsLineFeed) {
    view_.Add("one\ntwo\n");
    view_.Add("three");
    EXPECT_THAT(view_.Lines(), ElementsAre("one", "two", "three"));
}

TEST_F(AView, LetsALineGrow) {
    view_.Add("Building ...");
    view_.Add(" ok");
    EXPECT_THAT(view_.Lines(), ElementsAre("Building ... ok"));
    view_.Add("!\nnext");
    EXPECT_THAT(view_.Lines(), ElementsAre("Building ... ok!", "next"));
}

TEST_F(AView, ShowsALineFeedWithNothingInFrontAsAnEmptyLine) {
    view_.Add("a\n\nb");
    view_.Add("\nc");
    EXPECT_THAT(view_.Lines(), ElementsAre("a", "", "b", "", "c"));
}

TEST_F(AView, EndsAGrowingLineWithABlankAndALineFeed) {
    view_.Add("a");
    view_.Add(" \nb");
    EXPECT_THAT(view_.Lines(), ElementsAre("a ", "b"));
}

TEST_F(AView, ShowsATabAsOneBlank) {
    view_.Add("a\tb");
    EXPECT_THAT(view_.Lines(), ElementsAre("a b"));
}

TEST_F(AView, Keeps79CharactersOnALine) {
    view_.Add(std::string(79, 'x'));
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, 'x')));
}

TEST_F(AView, WrapsAtThe80thCharacter) {
    view_.Add(std::string(80, 'x'));
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, 'x'), "x"));
    view_.Add("y");
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, 'x'), "xy"));
}

TEST_F(AView, WrapsALongTextAgainAndAgain) {
    view_.Add(std::string(200, 'x'));
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, 'x'), std::string(79, 'x'), std::string(42, 'x')));
}

TEST_F(AView, WrapsALineThatGrew) {
    view_.Add(std::string(70, 'x'));
    view_.Add(std::string(12, 'y'));
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(70, 'x') + std::string(9, 'y'), "yyy"));
}

TEST_F(AView, WrapsPiecesOfOneCharacter) {
    for (int i = 0; i < 81; ++i) view_.Add(".");
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, '.'), ".."));
}

TEST_F(AView, BeginsAFreshLineAfterAWrapAndALineFeed) {
    view_.Add(std::string(80, 'x') + "\n");
    view_.Add("y");
    EXPECT_THAT(view_.Lines(), ElementsAre(std::string(79, 'x'), "x", "y"));
}

TEST_F(AView, CountsCharactersAndCutsNone) {
    view_.Add(Repeat("\u00B4", 80));
    EXPECT_THAT(view_.Lines(), ElementsAre(Repeat("\u00B4", 79), "\u00B4"));
    view_.Add(Repeat("\u20AC", 79));
    EXPECT_THAT(view_.Lines(), ElementsAre(Repeat("\u00B4", 79), "\u00B4" + Repeat("\u20AC", 78), "\u20AC"));
}

TEST_F(AView, Holds128Lines) {
    AddNumbered(0, 127);
    EXPECT_EQ(view_.Lines().size(), 128U);
    EXPECT_EQ(view_.Lines().front(), "0");
}

TEST_F(AView, LosesEveryOtherOneOfItsOldest32LinesAtThe129th) {
    AddNumbered(0, 128);
    std::vector<std::string> left;
    for (int i = 1; i < 32; i += 2) left.push_back(std::to_string(i));
    for (int i = 32; i <= 128; ++i) left.push_back(std::to_string(i));
    EXPECT_EQ(view_.Lines(), left);
}

TEST_F(AView, NeverPasses129LinesInOneText) {
    view_.Add(std::string(500, '\n'));
    EXPECT_LT(view_.Lines().size(), 129U);
}

TEST_F(AView, GrowsOnAfterLinesWereDropped) {
    AddNumbered(0, 127);
    view_.Add("last");
    view_.Add(" line");
    EXPECT_EQ(view_.Lines().back(), "last line");
    EXPECT_EQ(view_.Lines().size(), 113U);
}

}  // namespace
}  // namespace k2k
