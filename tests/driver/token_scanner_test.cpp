#include "driver/token_scanner.h"

#include <gtest/gtest.h>

#include "support/build_state.h"

namespace k2k {
namespace {

using test::ExpectFatal;

class Scanning : public test::BuildState {
  protected:
    // The text's last byte is its last character, as in a file.
    void Scan(std::string text) {
        text_ = std::move(text);
        scanner_.Start(text_.data(), text_.size());
    }

    // The tokens of the whole text.
    std::vector<std::string> Tokens(const std::string& text) {
        Scan(text);
        std::vector<std::string> tokens;
        while (scanner_.NextToken(true)) tokens.emplace_back(scanner_.view());
        return tokens;
    }

    std::string text_;
    TokenScanner scanner_;
};

using Words = std::vector<std::string>;

TEST_F(Scanning, SplitsAtEverythingBelow33) {
    EXPECT_EQ(Tokens("a\tb \x01 c\r\nd !e\n"), (Words{"a", "b", "c", "d", "!e"}));
}

TEST_F(Scanning, TakesBytesAbove127AsCharacters) {
    EXPECT_EQ(Tokens("\xFF\x80 b "), (Words{"\xFF\x80", "b"}));
}

TEST_F(Scanning, KeepsBlanksInsideDoubleQuotes) {
    EXPECT_EQ(Tokens("\"a b\" c "), (Words{"a b", "c"}));
}

TEST_F(Scanning, GivesAnEmptyTokenForAnEmptyPairOfQuotes) {
    EXPECT_EQ(Tokens("\"\" c "), (Words{"", "c"}));
}

TEST_F(Scanning, SkipsCommentsUpToTheLineEnd) {
    EXPECT_EQ(Tokens("a // b \"c\n d\n//"), (Words{"a", "d"}));
}

TEST_F(Scanning, BeginsACommentOnlyAtTheStartOfAToken) {
    EXPECT_EQ(Tokens("a//b "), (Words{"a//b"}));
}

TEST_F(Scanning, TakesALoneSlashAsAToken) {
    EXPECT_EQ(Tokens("/ a /b "), (Words{"/", "a", "/b"}));
}

TEST_F(Scanning, EndsAtAZeroByte) {
    EXPECT_EQ(Tokens(std::string("a b\0c ", 6)), (Words{"a", "b"}));
}

TEST_F(Scanning, EndsACommentAtAZeroByte) {
    EXPECT_EQ(Tokens(std::string("a //\0 b\nc ", 10)), (Words{"a"}));
}

TEST_F(Scanning, LosesATokenThatTouchesTheLastByte) {
    EXPECT_EQ(Tokens("{ }"), (Words{"{"}));
    EXPECT_EQ(Tokens("{ \"a\""), (Words{"{"}));
    EXPECT_EQ(Tokens("{ \"a"), (Words{"{"}));
    EXPECT_EQ(Tokens("{ }\n"), (Words{"{", "}"}));
    EXPECT_EQ(Tokens("/"), (Words{}));
}

TEST_F(Scanning, CountsLineFeedsOutsideOfQuotes) {
    Scan("a\n\"b\nc\"\n// d\n e ");
    const int expected[] = {1, 2, 4};
    for (const int line : expected) {
        ASSERT_TRUE(scanner_.NextToken(true));
        EXPECT_EQ(scanner_.line(), line);
    }
}

TEST_F(Scanning, LeavesTheLineFeedBehindATokenForTheNextCall) {
    Scan("a\nb ");
    ASSERT_TRUE(scanner_.NextToken(false));
    EXPECT_EQ(scanner_.line(), 1);
    ExpectFatal([&] { scanner_.NextToken(false); }, " \nInvalid line 1");
}

TEST_F(Scanning, RejectsACommentWhereTheLineMustGoOn) {
    Scan("a // b\nc ");
    ASSERT_TRUE(scanner_.NextToken(true));
    ExpectFatal([&] { scanner_.NextToken(false); }, " \nInvalid line 1");
}

TEST_F(Scanning, RejectsTheEndOfTheTextWhereTheLineMustGoOn) {
    for (const std::string text : {"", " ", "a", "\"a", "\"a\""}) {
        Scan(text);
        ExpectFatal([&] { scanner_.NextToken(false); }, " \nInvalid line 1");
    }
}

TEST_F(Scanning, Accepts127Characters) {
    const std::string longest(127, 'x');
    EXPECT_EQ(Tokens(longest + " "), (Words{longest}));
    EXPECT_EQ(Tokens('"' + longest + "\" "), (Words{longest}));
}

TEST_F(Scanning, Rejects128Characters) {
    const std::string tooLong(128, 'x');
    ExpectFatal([&] { Tokens(tooLong + " "); }, " \nE712");
    ExpectFatal([&] { Tokens('"' + tooLong + "\" "); }, " \nE712");
}

TEST_F(Scanning, RejectsAZeroByteInsideQuotes) {
    ExpectFatal([&] { Tokens(std::string("\"a\0b\" ", 6)); }, " \nE711");
}

TEST_F(Scanning, TakesAWholeLineWithItsBlanks) {
    Scan("  one two\tthree\n");
    ASSERT_TRUE(scanner_.NextToken(false, true));
    EXPECT_EQ(scanner_.view(), "one two");
    ASSERT_TRUE(scanner_.NextToken(false, true));
    EXPECT_EQ(scanner_.view(), "three");
}

TEST_F(Scanning, UnreadTwiceIsTheSameAsOnce) {
    Scan("a b ");
    ASSERT_TRUE(scanner_.NextToken(true));
    scanner_.Unread();
    scanner_.Unread();
    ASSERT_TRUE(scanner_.NextToken(true));
    EXPECT_EQ(scanner_.view(), "a");
    ASSERT_TRUE(scanner_.NextToken(true));
    EXPECT_EQ(scanner_.view(), "b");
}

TEST_F(Scanning, ReadsNumbersOfOneLine) {
    Scan("1 -2.5 x 7 8 \n");
    float vector[3];
    scanner_.ReadFloats(vector, 3);
    EXPECT_EQ(vector[0], 1.0F);
    EXPECT_EQ(vector[1], -2.5F);
    EXPECT_EQ(vector[2], 0.0F);
    std::vector<int32_t> list{6};
    scanner_.ReadInts(list, 2);
    EXPECT_EQ(list, (std::vector<int32_t>{6, 7, 8}));
}

TEST_F(Scanning, RejectsAVectorThatStopsAtTheLineEnd) {
    Scan("\n( 1 2\n3 ) ");
    ASSERT_TRUE(scanner_.NextToken(true));
    float vector[3];
    ExpectFatal([&] { scanner_.ReadFloats(vector, 3); }, " \nInvalid line 2");
}

TEST_F(Scanning, JoinsTokensOfOneLineWithSingleBlanks) {
    Scan("\n\n 1   2\t3 4 ");
    EXPECT_EQ(scanner_.ReadJoined(3), "1 2 3");
    EXPECT_EQ(scanner_.line(), 3);
}

TEST_F(Scanning, RejectsJoinedTokensOnALaterLine) {
    Scan("1 2\n3 ");
    ExpectFatal([&] { scanner_.ReadJoined(3); }, " \nInvalid line 1");
}

TEST_F(Scanning, RejectsJoinedTokensAtTheEndOfTheText) {
    Scan("\n ");
    ExpectFatal([&] { scanner_.ReadJoined(1); }, "Syntax error parsing line 2");
}

TEST_F(Scanning, StartsAgainOnAnotherText) {
    Scan("a\nb\nc ");
    while (scanner_.NextToken(true)) {
    }
    scanner_.Unread();
    EXPECT_EQ(Tokens("d "), (Words{"d"}));
    EXPECT_EQ(scanner_.line(), 1);
}

// Tokens cost what they are long, wherever they stand: anything that looks at the rest of the text would take minutes.
TEST_F(Scanning, TakesALargeTextTokenByToken) {
    constexpr int Tokens = 1'000'000;
    std::string text;
    for (int i = 0; i < Tokens; ++i) text += "1.5 ";
    TokenScanner scanner;
    scanner.Start(text.c_str(), text.size());
    float sum = 0;
    while (scanner.NextToken(true)) sum += ToFloat(scanner.view());
    EXPECT_EQ(sum, 1.5F * Tokens);
}

}  // namespace
}  // namespace k2k
