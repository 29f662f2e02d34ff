#include <fstream>

#include "tests/merge/Merging.h"

// The worked example of the guide.

namespace {

using namespace MergeTests;

/// The decks of a chapter, as it shows them.
std::vector<std::string> DecksOf(const std::string& chapter)
{
    std::ifstream file(DECK_SOURCE_DIR "/docs/guide.md");
    std::ostringstream text;
    text << file.rdbuf();
    const std::string guide = text.str();
    const std::string fence = "```deck\n";
    std::vector<std::string> decks;
    std::size_t at = guide.find("\n## " + chapter + "\n");
    const std::size_t end = guide.find("\n## ", at + 1);
    while ((at = guide.find(fence, at)) < end) {
        at += fence.size();
        decks.push_back(guide.substr(at, guide.find("```", at) - at));
    }
    return decks;
}

TEST(GuideTest, TheRegeneratedDeckIsTheOneShown)
{
    const TestSupport::CleanEnvironment environment;
    const std::vector<std::string> shown = DecksOf("Regenerating a deck");
    ASSERT_EQ(shown.size(), 3u);
    TwoDecks decks({{"T.DATA", shown[0]}}, {{"T.DATA", shown[1]}});
    EXPECT_TRUE(decks.MergeUserKeywords());
    decks.MergeComments();
    EXPECT_EQ(WithTags(decks.Text("T.DATA")), shown[2]);
    EXPECT_EQ(decks.Replaced(), "TABDIMS");
}

} // namespace
