// The reference pages against the option table. With K2K_UPDATE_DOCS in the environment the pages are rewritten.
#include <gtest/gtest.h>

#include <cstdlib>

#include "driver/option_reference.h"
#include "support/files.h"

namespace k2k {
namespace {

// Compares what stands between two lines of a page.
void ExpectBetween(const std::string& page, const std::string& begin, const std::string& end,
                   const std::string& expected) {
    const std::string path = std::string(K2K_SOURCE_DIR) + "/docs/" + page;
    std::string text = test::ReadFile(path);
    const size_t from = text.find(begin);
    const size_t to = text.find(end);
    ASSERT_NE(from, std::string::npos) << page << " lacks " << begin;
    ASSERT_NE(to, std::string::npos) << page << " lacks " << end;
    const size_t first = from + begin.size();
    if (std::getenv("K2K_UPDATE_DOCS") != nullptr)
        test::WriteFile(path, text.replace(first, to - first, expected));
    else
        EXPECT_EQ(text.substr(first, to - first), expected) << "run scripts/update-option-pages.sh";
}

TEST(OptionPages, TheMarkdownPageTellsWhatTheTableHolds) {
    ExpectBetween("options.md", "<!-- begin: made from the option table -->\n", "<!-- end -->\n", OptionsAsMarkdown());
}

TEST(OptionPages, TheManPageTellsWhatTheTableHolds) {
    ExpectBetween("k2k.1", ".\\\" begin: made from the option table\n", ".\\\" end\n", OptionsAsManPage());
}

}  // namespace
}  // namespace k2k
