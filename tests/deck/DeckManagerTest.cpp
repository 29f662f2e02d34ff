#include "deck/Deck.h"
#include "keywords/ITagMgr.h"
#include "tests/support/DeckTest.h"
#include <deckmanager/DeckInconsistencyInfo.h>
#include <deckmanager/DeckReader.h>

namespace {

using namespace DeckTests;
using TestSupport::CurrentDirectoryGuard;

class DeckManagerTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    TempDir m_directory;
    CurrentDirectoryGuard m_current{m_directory.Path()};
};

TEST_F(DeckManagerTest, Names)
{
    const auto manager = DeckManagerFactory::Create();
    EXPECT_EQ(manager->GenerateDeckName(), "Deck_1");
    IDeck* first = manager->CreateDeck("Deck_1", false);
    IDeck* third = manager->CreateDeck("Deck_3", false);
    EXPECT_EQ(manager->GenerateDeckName(), "Deck_2");
    EXPECT_EQ(manager->CreateDeck("deck_1", false), nullptr);
    EXPECT_EQ(manager->FindDeck("DECK_3"), third);
    EXPECT_FALSE(manager->RenameDeck(first, "Deck_3"));
    EXPECT_TRUE(manager->RenameDeck(first, "DECK_1"));
    EXPECT_TRUE(manager->RenameDeck(first, "  Other  "));
    EXPECT_EQ(first->GetName(), "Other");
    EXPECT_EQ(manager->GetDecks(), (std::list<IDeck*>{first, third}));
    EXPECT_TRUE(manager->RemoveDeck(first));
    EXPECT_FALSE(manager->RemoveDeck(first));
    EXPECT_EQ(manager->GenerateDeckName(), "Deck_1");

    const auto other = DeckManagerFactory::Create();
    EXPECT_FALSE(other->ContainsDeck(third));
    EXPECT_EQ(other->GetEditor(third)->GetDeck(), nullptr);
}

TEST_F(DeckManagerTest, PlacesOfDecks)
{
    m_directory.Write("project/Old/Old.DATA", "RUNSPEC\nOIL\n");
    m_directory.Write("project/Old/left.inc", "GAS\n");
    m_directory.Write("A.DATA", "RUNSPEC\n");
    m_directory.Write("A.B", "RUNSPEC\n");

    const auto manager = DeckManagerFactory::Create(m_directory.Path("project"));
    IDeck* old = manager->OpenExistingDeck("Old", false);
    EXPECT_EQ(old->GetDeckKeywords()->GetDataFile()->GetFileName().GetFullName(),
              m_directory.Path("project/Old/Old.DATA"));
    EXPECT_EQ((*old->GetDeckKeywords()->Begin())->GetName(), "RUNSPEC");
    EXPECT_TRUE(manager->RenameDeck(old, "New"));
    EXPECT_EQ(old->GetDirectory().Name(), m_directory.Path("project/Old"));
    EXPECT_FALSE(manager->RenameDeck(manager->CreateDeck("Third", false), "Old")); // another deck's folder
    manager->RemoveDeck(old);
    EXPECT_TRUE(m_directory.Exists("project/Old/left.inc"));
    manager->CreateDeck("Old", false);
    EXPECT_FALSE(m_directory.Exists("project/Old/left.inc"));
    EXPECT_FALSE(m_directory.Exists("project/Old/Old.DATA"));

    const auto plain = DeckManagerFactory::Create();
    EXPECT_EQ(plain->OpenDeck("x/A.B", false)->GetDeckKeywords()->GetDataFile()->GetFileName().GetFileName(), "A.DATA");
    EXPECT_EQ(plain->GetEditor()->GetDeck(), plain->FindDeck("A"));
    EXPECT_EQ(plain->OpenExistingDeck("A.VFP", false)->GetDeckKeywords()->GetDataFile()->GetFileName().GetFileName(),
              "A.VFP");
    EXPECT_EQ(plain->OpenExistingDeck("A.vfp", false), nullptr); // names know no case
    EXPECT_TRUE(m_directory.Exists("A.DATA"));
    plain->RemoveDeck(plain->FindDeck("A"));
    plain->CreateDeck("A", false);
    EXPECT_FALSE(m_directory.Exists("A.DATA"));

    EXPECT_EQ(Thrown<DeckManagerException>([] { DeckManagerFactory::Create("relative"); }),
              "DeckManager project dir must be a complete path and can not be a file.");
    EXPECT_EQ(Thrown<DeckManagerException>([this] { DeckManagerFactory::Create(m_directory.Path("A.B")); }),
              "DeckManager project dir must be a complete path and can not be a file.");
}

TEST_F(DeckManagerTest, NamesThatLeadToNoFolderOfTheirOwnClearNothing)
{
    m_directory.Write("project/Old/Old.DATA", "RUNSPEC\n");
    m_directory.Write("beside.inc", "OIL\n");
    const auto manager = DeckManagerFactory::Create(m_directory.Path("project"));
    for (const char* name : {"", "  ", "..", ".", "Old/../.."}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(Thrown<DeckManagerException>([&] { manager->CreateDeck(name, false); }),
                  "DeckKeywords::SetDataFile: null newFile");
        EXPECT_TRUE(m_directory.Exists("project/Old/Old.DATA"));
        EXPECT_TRUE(m_directory.Exists("beside.inc"));
    }
    EXPECT_TRUE(manager->GetDecks().empty());
}

TEST_F(DeckManagerTest, ImportedDecks)
{
    m_directory.Write("d/A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'gone.inc' /\n");
    m_directory.Write("d/b.inc", "OIL\n");
    const auto manager = DeckManagerFactory::Create();
    const std::string path = m_directory.Path("d/A.DATA");
    const std::string missing = m_directory.Path("d/none.DATA");

    EXPECT_EQ(manager->ImportDeck("A", missing, false, false, false), nullptr);
    EXPECT_EQ(Thrown<DeckManagerException>([&] { manager->ImportDeck("A", missing, false, false, true); }),
              "The following file(s) does not exist:\n\n" + missing + "\n");
    EXPECT_EQ(Thrown<DeckManagerException>([&] { manager->ImportDeck("A", path, false, false, true); }),
              "The following file(s) does not exist:\n\n" + m_directory.Path("d/gone.inc") + "\n");
    EXPECT_EQ(Thrown<DeckManagerException>([&] { manager->ImportDeck("A", path, true, false, false); }),
              "Deck::ImportDeck: managed import not yet supported");
    EXPECT_EQ(manager->ImportDeck("A", m_directory.Path("d"), false, false, false), nullptr);
    EXPECT_TRUE(manager->GetDecks().empty());
    EXPECT_TRUE(manager->GetKeywordFiles().empty());

    IDeck* deck = manager->ImportDeck("A", path, false, false, false);
    ASSERT_NE(deck, nullptr);
    EXPECT_FALSE(deck->GetDeckKeywords()->GetDataFile()->AsKeywordFile()->IsLoaded());
    EXPECT_EQ(manager->ImportDeck("a", path, false, false, false), nullptr);
    EXPECT_EQ(manager->GetDecks().size(), 1u);

    // The editor's way: a failure leaves the deck on the file that it had.
    IDeckKeywordsEditor* editor = manager->GetEditor(deck);
    EXPECT_THROW(editor->ImportDeck(missing, false, true), DeckManagerException);
    EXPECT_EQ(deck->GetDeckKeywords()->GetDataFile()->GetFileName().GetFullName(), path);
    EXPECT_TRUE(editor->ImportDeck(path, false, false));
    editor->Close();
    EXPECT_FALSE(editor->ImportDeck(path, false, false));
}

TEST_F(DeckManagerTest, DecksShareFilesAndSurviveEachOther)
{
    m_directory.Write("A.DATA", "RUNSPEC\nINCLUDE\n'shared.inc' /\n");
    m_directory.Write("B.DATA", "RUNSPEC\nINCLUDE\n'shared.inc' /\nGAS\n");
    m_directory.Write("shared.inc", "OIL\n");
    const auto manager = DeckManagerFactory::Create();
    IDeck* a = manager->ImportDeck("1", m_directory.Path("A.DATA"), false, false, false);
    IDeck* b = manager->ImportDeck("2", m_directory.Path("B.DATA"), false, false, false);
    EXPECT_EQ(a->GetDeckKeywords()->GetFiles().size(), 2u);
    EXPECT_EQ(b->GetDeckKeywords()->GetFiles().size(), 2u);
    EXPECT_EQ(manager->GetKeywordFiles().size(), 3u);

    m_directory.Write("shared.inc", "OIL\nEND\n");
    EXPECT_EQ(*b->GetDeckKeywords()->LogicalEnd(), nullptr);
    manager->RefreshDeck("1"); // the other deck hears of it
    EXPECT_EQ((*b->GetDeckKeywords()->LogicalEnd())->GetName(), "END");
    manager->RefreshDeck("nobody");

    manager->RemoveDeck(a);
    EXPECT_EQ(manager->GetKeywordFiles().size(), 2u);
    EXPECT_EQ((*b->GetDeckKeywords()->Begin())->GetName(), "RUNSPEC");
    manager->Clear();
    EXPECT_TRUE(manager->GetDecks().empty());
    EXPECT_TRUE(manager->GetKeywordFiles().empty());
}

TEST_F(DeckManagerTest, ImportingTheSameFileAnewTellsTheDecksThatShareIt)
{
    m_directory.Write("A.DATA", "RUNSPEC\nOIL\nEND\nGAS\n");
    const auto manager = DeckManagerFactory::Create();
    const std::string path = m_directory.Path("A.DATA");
    IDeck* a = manager->ImportDeck("1", path, false, false, false);
    IDeck* b = manager->ImportDeck("2", path, false, false, false);
    EXPECT_EQ((*b->GetDeckKeywords()->LogicalEnd())->GetName(), "END");
    m_directory.Write("A.DATA", "RUNSPEC\nWATER\n");
    EXPECT_TRUE(manager->GetEditor(a)->ImportDeck(path, false, false));
    EXPECT_EQ(*b->GetDeckKeywords()->LogicalEnd(), nullptr);
}

TEST_F(DeckManagerTest, TheFilesOfADeckGoWhenAnotherIsReadInItsPlace)
{
    const TestDeck deck(
        {{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "OIL\n"}, {"C.DATA", "RUNSPEC\nGAS\n"}});
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 2u);
    EXPECT_TRUE(deck.Manager().GetEditor(&deck.Deck())->ImportDeck(deck.Dir().Path("C.DATA"), false, false));
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 1u);
    EXPECT_EQ(deck.Manager().GetKeywordFiles().size(), 1u);
}

TEST_F(DeckManagerTest, AFileBelowOneThatWasResetIsRefreshedToo)
{
    const TestDeck deck(
        {{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "INCLUDE\n'c.inc' /\n"}, {"c.inc", "OIL\n"}});
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 3u);
    deck.File("b.inc").Reload();
    deck.Dir().Write("c.inc", "GAS\n");
    deck.Manager().RefreshDeck("Test");
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE GAS");
}

TEST_F(DeckManagerTest, NoDeckDropsWhatIsEditedThroughAnother)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'shared.inc' /\n"},
                         {"B.DATA", "RUNSPEC\nINCLUDE\n'shared.inc' /\n"},
                         {"shared.inc", "OIL\n"}});
    IDeckManager& manager = deck.Manager();
    IDeck* other = manager.ImportDeck("2", deck.Dir().Path("B.DATA"), false, false, false);
    IDeckKeywordsEditor* editor = manager.GetEditor(&deck.Deck());
    deck.Walk();
    other->GetDeckKeywords()->GetFiles();
    const KeywordFile& shared = deck.File("shared.inc");
    const auto edit = [&shared] { static_cast<const Keyword&>(**shared.Begin()).GetTagMgr().SetTag(true); };

    edit();
    EXPECT_EQ(Thrown<DeckManagerException>([&] { manager.RefreshDeck("2"); }),
              "Attempt to refresh a shared deck file that has uncommitted changes made through editing another deck.");
    manager.ImportDeck("3", deck.Dir().Path("B.DATA"), false, false, false);
    EXPECT_TRUE(manager.RemoveDeck(other));
    EXPECT_TRUE(shared.IsModified());
    manager.RefreshDeck("Test"); // its own changes go without question
    EXPECT_FALSE(shared.IsModified());
    edit();
    EXPECT_EQ(manager.GetEditor(manager.FindDeck("3")), editor);
    EXPECT_FALSE(shared.IsModified());
    edit();
    editor->Close();
    EXPECT_FALSE(shared.IsModified());
}

TEST_F(DeckManagerTest, FilesThatMoveUnderTheManager)
{
    m_directory.Write("A.DATA", "RUNSPEC\nOIL\n");
    const auto manager = DeckManagerFactory::Create();
    IDeck* deck = manager->ImportDeck("A", m_directory.Path("A.DATA"), false, false, false);
    EXPECT_EQ(Thrown<DeckManagerException>(
                  [&] { manager->UpdateKeywordFilePath(m_directory.Path("x"), m_directory.Path("y")); }),
              "Attempt to update path for unknown keyword file.");
    EXPECT_EQ(Thrown<DeckManagerException>(
                  [&] { manager->UpdateKeywordFilePath(m_directory.Path("A.DATA"), m_directory.Path("y")); }),
              "KeywordFileManager::KeywordFileMoved: new file not exist");
    deck->GetDeckKeywords()->Begin();
    std::filesystem::rename(m_directory.Path("A.DATA"), m_directory.Path("B.DATA"));
    manager->UpdateKeywordFilePath(m_directory.Path("A.DATA"), m_directory.Path("B.DATA"));
    EXPECT_EQ(*(*deck->GetDeckKeywords()->Begin())->GetText(), "RUNSPEC\n");
    EXPECT_EQ(deck->GetDeckKeywords()->GetDataFile()->GetFileName().GetFileName(), "B.DATA");
}

TEST_F(DeckManagerTest, TheCacheFollowsWhatAHostTells)
{
    m_directory.Write("p/deck_cache_xml.lock", "");
    m_directory.Write("p/D/D.DATA", "RUNSPEC\nOIL\n");
    m_directory.Write("temp/E/E.DATA", "RUNSPEC\nGAS\n");
    m_directory.Write("p/E/x", "");
    const auto manager = DeckManagerFactory::Create(m_directory.Path("p"));
    manager->SetTempProjectDir(m_directory.Path("temp"));
    const auto open = [&](const std::string& name, const std::string& path) {
        IDeck* deck = manager->ImportDeck(name, m_directory.Path(path), false, true, false);
        deck->GetDeckKeywords()->Begin();
        manager->RemoveDeck(deck);
        manager->NotifyDirectoryDeleted(""); // nothing was deleted; what is known is saved
    };
    open("D", "p/D/D.DATA");
    open("E", "temp/E/E.DATA");
    EXPECT_TRUE(m_directory.Exists("p/D/DeckCache.ptd"));
    // A temporary project has no cache of its own.
    EXPECT_TRUE(m_directory.Exists("p/E/DeckCache.ptd"));
    EXPECT_FALSE(m_directory.Exists("temp/E/DeckCache.ptd"));

    const std::string full = m_directory.Read("p/D/DeckCache.ptd");
    manager->FlushCache();
    manager->NotifyDirectoryDeleted("");
    EXPECT_LT(m_directory.Read("p/D/DeckCache.ptd").size(), full.size());

    // What was known of a folder that has gone is not written to one of its name.
    open("D", "p/D/D.DATA");
    std::filesystem::remove_all(m_directory.Path("p/D"));
    m_directory.Write("p/D/new", "");
    manager->NotifyDirectoryDeleted(m_directory.Path("p/D"));
    EXPECT_FALSE(m_directory.Exists("p/D/DeckCache.ptd"));
    // A path that can be no project's leaves the temporary one as it is.
    manager->SetTempProjectDir("relative");
    open("E", "temp/E/E.DATA");
    EXPECT_FALSE(m_directory.Exists("temp/E/DeckCache.ptd"));
}

TEST_F(DeckManagerTest, ReadingADeckDeletesNone)
{
    m_directory.Write("Deck_1.DATA", "RUNSPEC\nOIL\n");
    DeckReader reader;
    EXPECT_EQ(reader.Read(m_directory.Path()), nullptr);
    EXPECT_EQ(reader.Read("nothing.DATA"), nullptr);
    IDeck* deck = reader.Read("Deck_1.DATA");
    ASSERT_NE(deck, nullptr);
    EXPECT_EQ((*deck->GetDeckKeywords()->Begin())->GetName(), "RUNSPEC");
    EXPECT_EQ(m_directory.Listing(), "Deck_1.DATA");

    // The first of these names whose place holds nothing that the deck would clear.
    for (const char* name : {"Deck_1.DATA", "Deck_3.DATA"}) {
        DeckReader other;
        m_directory.Write("Deck_3.DATA", "RUNSPEC\n");
        const IDeck* read = other.Read(name);
        ASSERT_NE(read, nullptr);
        EXPECT_EQ(read->GetName(), "Deck_2") << name;
        EXPECT_EQ(m_directory.Listing(), "Deck_1.DATA Deck_3.DATA");
    }
}

TEST_F(DeckManagerTest, KeywordsThatASimulatorDoesNotKnow)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nCOMPS\n3 /\nSKIP100\nNCOMPS\nENDSKIP\nSCHEDULE\n"}});
    const auto unknown = [&deck](SimulatorType simulator, SectionType section) {
        DeckInconsistencyInfo info;
        const bool ok = deck.Deck().IsValidForSimulator(simulator, &info, section);
        EXPECT_EQ(ok, deck.Deck().IsValidForSimulator(simulator, nullptr, section));
        EXPECT_EQ(ok, info.Keywords().empty());
        std::string names;
        for (const IKeyword* keyword : info.Keywords()) {
            names += keyword->GetName() + " ";
        }
        return names;
    };
    EXPECT_EQ(unknown(SimulatorType::Any, SectionType::None), "");
    EXPECT_EQ(unknown(SimulatorType::S300, SectionType::None), "");
    EXPECT_EQ(unknown(SimulatorType::S100, SectionType::None), "COMPS ");
    EXPECT_EQ(unknown(SimulatorType::S100, SectionType::SCHEDULE), "");
    EXPECT_EQ(unknown(SimulatorType::S100, SectionType::PROPS), "COMPS "); // no such section: the deck
}

} // namespace
