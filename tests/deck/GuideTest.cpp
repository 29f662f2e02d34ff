#include <gtest/gtest.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>

#include "tests/support/TestDeck.h"
#include <deckmanager/DataTextEditor.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/LineEnds.h>
#include <deckmanager/SetCommentAbove.h>

// The edit session of the guide, as it stands there.

namespace {

using namespace Tarn::Fjel::Core::DeckManager;

// clang-format off
// [guide]
void MoreTables(const std::string& topFile)
{
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create();
    IDeck* deck = manager->ImportDeck("Field", topFile, false, true, false);
    if (deck == nullptr) return;
    const IDeckKeywords& keywords = *deck->GetDeckKeywords();
    IDeckKeywordsEditor& editor = *manager->GetEditor(deck);
    for (KeywordIterator place = keywords.Begin(); place != keywords.End(); ++place) {
        if (place->GetName() != "TABDIMS") continue;
        const DataTextEditor items = DataTextEditor::ForKeyword(keywords, **place);
        const auto result = items.Set(*keywords.GetDataText(*place), {0}, DataTextEditor::Value::Integer(3));
        if (result.IsDone()) editor.SetDataText(place, result.text);
        SetCommentAbove(editor, place, "-- three regions");
    }
    try {
        editor.Commit();
    } catch (const DeckManagerException&) {
        editor.Discard(); // no file has changed, and its text says why
    }
}
// [/guide]
// clang-format on

std::string ReadAll(const std::string& path)
{
    std::ifstream file(path);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

TEST(GuideTest, TheEditSessionDoesWhatItSays)
{
    const std::string source = ReadAll(DECK_SOURCE_DIR "/tests/deck/GuideTest.cpp");
    const std::size_t begin = source.find("// [guide]\n") + 11;
    const std::string shown = source.substr(begin, source.find("// [/guide]", begin) - begin);
    EXPECT_NE(ReadAll(DECK_SOURCE_DIR "/docs/guide.md").find("```cpp\n" + shown + "```"), std::string::npos);

    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    const TestSupport::TestDeck deck(
        TestSupport::TestDeck::Texts{{"TOP.DATA", "RUNSPEC\n\n-- old\nTABDIMS\n 1  2 / x\nOIL\n"}});
    MoreTables(deck.Dir().Path("TOP.DATA"));
    EXPECT_EQ(deck.Dir().Read("TOP.DATA"), "RUNSPEC\n\n-- three regions\nTABDIMS\n 3  2 / x\nOIL\n");
}

} // namespace
