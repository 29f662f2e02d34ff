#include <cstddef>

#include <pthread.h>

#include "tests/support/DeckTest.h"
#include <deckmanager/DeckPositions.h>
#include <deckmanager/Exporter.h>
#include <deckmanager/SetCommentAbove.h>

// Chains of files and scopes in scopes that are deep, on a stack that isn't.

namespace {

using namespace DeckTests;

#ifdef __SANITIZE_ADDRESS__
constexpr std::size_t stackSize = 1024 * 1024;
#else
constexpr std::size_t stackSize = 128 * 1024;
#endif

/// Runs something where a call for each of a thousand levels would end the process.
void OnASmallStack(std::function<void()> action)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, stackSize), 0);
    pthread_t thread{};
    const auto run = [](void* task) -> void* {
        (*static_cast<std::function<void()>*>(task))();
        return nullptr;
    };
    ASSERT_EQ(pthread_create(&thread, &attributes, run, &action), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
}

class DeepDeckTest : public testing::Test
{
protected:
    DeepDeckTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    static IDeckKeywordsEditor& EditorOf(const TestDeck& deck) { return *deck.Manager().GetEditor(&deck.Deck()); }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TestDeck::Texts Chain(int length, const std::string& tag, const std::string& inner)
{
    TestDeck::Texts files{{"T.DATA", "RUNSPEC" + tag + "\nINCLUDE" + tag + "\n'f0.inc' /\nGRID" + tag + "\n"}};
    for (int i = 0; i < length; ++i) {
        files.emplace_back(
            "f" + std::to_string(i) + ".inc",
            i + 1 < length ? "INCLUDE" + tag + "\n'f" + std::to_string(i + 1) + ".inc' /\nGAS" + tag + "\n" : inner);
    }
    return files;
}

TEST_F(DeepDeckTest, AThousandFiles)
{
    OnASmallStack([] {
        const std::string tag = "   " + Environment::Instance().GetKeywordGeneratedTag();
        const TestDeck deck(Chain(1000, tag, "-- mine\nOIL\n"));
        IDeckKeywordsEditor& editor = EditorOf(deck);
        EXPECT_EQ(deck.Keywords().GetFiles().size(), 1001u);
        const std::string walk = deck.Walk(true);
        EXPECT_EQ(deck.WalkBack().size(), walk.size());
        EXPECT_EQ(deck.Keywords().SectionOf(deck.At("OIL")), Keywords::SectionType::RUNSPEC);
        EXPECT_EQ(deck.Keywords().GetIncludingKeyword((*deck.At("OIL"))->GetFile()), *deck.At("INCLUDE", 1000));
        EXPECT_EQ((*DeckPositionOf(*deck.At("OIL"), deck.Deck()))->GetName(), "OIL");
        EXPECT_EQ(deck.Keywords().GetComment(deck.At("OIL"), false), "-- mine\n");
        deck.Manager().RefreshDeck("Test");
        EXPECT_EQ(deck.Walk(true), walk);

        // The innermost change goes up through all of them.
        ASSERT_TRUE(SetCommentAbove(editor, deck.Keywords().GetFileIterator(deck.At("OIL")), "-- other"));
        ASSERT_TRUE(editor.MoveKeyword(deck.At("GAS"), deck.At("OIL")));
        editor.Discard();
        EXPECT_EQ(deck.Walk(true), walk);
        EXPECT_EQ(deck.File("f999.inc").GetStartSection(), Keywords::SectionType::RUNSPEC);
        EXPECT_EQ(deck.File("f0.inc").EndSection(), Keywords::SectionType::None);
        EXPECT_EQ(&deck.File("f999.inc").DataFile(), &deck.TopFile());
        EXPECT_FALSE(editor.MoveKeyword(deck.At("INCLUDE"), deck.At("OIL")));
        ASSERT_TRUE(editor.Suppress(deck.At("OIL")));
        editor.Commit();
        EXPECT_EQ(deck.Dir().Read("f999.inc"), "-- mine\n--@@@OIL\n");

        EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), deck.Dir().Path("flat.DATA")));
        EXPECT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("out"), Keywords::SimulatorType::Any, false));
        EXPECT_EQ(deck.Dir().Read("out/f999.inc"), "-- mine\n--@@@OIL\n");

        const TestDeck target(Chain(1000, tag, "GAS" + tag + "\n"));
        std::set<KeywordIterator> replaced;
        EXPECT_TRUE(EditorOf(target).MergeUserKeywords(deck.Deck(), replaced, {}, {}));
        EditorOf(target).MergeComments(deck.Deck(), {}, {});
        EXPECT_NE(target.Walk(true).find("OIL"), std::string::npos);
        EditorOf(target).SortKeywords();
        deck.Manager().RemoveDeck(&deck.Deck());
        EXPECT_TRUE(deck.Manager().GetKeywordFiles().empty());
    });
    EXPECT_EQ(m_log.Count(3), 0);
}

TEST_F(DeepDeckTest, TenThousandScopes)
{
    OnASmallStack([] {
        constexpr int depth = 10000;
        std::string text = "SCHEDULE\n";
        for (int i = 0; i < depth; ++i)
            text += "ACTIONX\nA 1 /\nP > 1 /\n/\n";
        text += "TSTEP\n1 /\n";
        for (int i = 0; i < depth; ++i)
            text += "ENDACTIO\n";
        const TestDeck deck(TestDeck::Texts{{"T.DATA", text + "TSTEP\n2 /\n"}});
        const IDeckKeywords& keywords = deck.Keywords();
        const KeywordIterator outermost = deck.At("ACTIONX");
        const KeywordIterator innermost = deck.At("ACTIONX", depth);
        EXPECT_EQ(keywords.GetScopeEnd(outermost, false), deck.At("ENDACTIO", depth));
        EXPECT_EQ(keywords.GetScopeEnd(innermost, false), deck.At("ENDACTIO"));
        EXPECT_EQ(ScopeEnd(outermost, deck.Deck(), false), deck.At("TSTEP", 2));
        EXPECT_EQ(FileScopeEnd(keywords.GetFileIterator(outermost), false),
                  keywords.GetFileIterator(deck.At("ENDACTIO", depth)));
        EXPECT_EQ(FileScopeBehind(keywords.GetFileIterator(outermost), false),
                  keywords.GetFileIterator(deck.At("TSTEP", 2)));
        KeywordIterator head;
        KeywordIterator end;
        keywords.GetEnclosingScope(deck.At("TSTEP"), head, end);
        EXPECT_EQ(head, innermost);
        EXPECT_EQ(end, deck.At("ENDACTIO"));
    });
    EXPECT_TRUE(m_log.Empty());
}

} // namespace
