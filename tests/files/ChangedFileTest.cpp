#include "tests/support/DeckTest.h"
#include <tarn/keywords/IKeywordListData.h>

// Files that go, shrink or cannot be read to their end while a deck is open.

namespace {

using namespace DeckTests;

class ChangedFileTest : public testing::Test
{
protected:
    /// Asks the keyword for everything that it reads from its file.
    static std::string AskForAll(const TestDeck& deck, const std::string& name)
    {
        const KeywordIterator position = deck.At(name);
        deck.Keywords().GetKeywordData(*position);
        position->GetComment();
        position->GetLine();
        position->IsGenerated();
        const std::shared_ptr<std::string> text = deck.Keywords().GetDataText(*position);
        return (text ? *text : "") + *position->GetText();
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

TEST_F(ChangedFileTest, FileThatGoesBetweenLoadAndReadIsNamed)
{
    const auto remove = [](const std::string& path) { std::filesystem::remove(path); };
    const auto makeDirectory = [](const std::string& path) {
        std::filesystem::remove(path);
        std::filesystem::create_directory(path);
    };
    for (const auto& change : {std::function<void(const std::string&)>(remove), {makeDirectory}}) {
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nDIMENS\n1 2 3 /\nOIL\n"}});
        EXPECT_EQ(deck.Walk(), "RUNSPEC DIMENS OIL");
        const std::string path = deck.Dir().Path("A.DATA");
        change(path);
        EXPECT_EQ(TestSupport::Thrown<DeckManagerException>([&] { AskForAll(deck, "DIMENS"); }),
                  "KeywordFileReader::LineReader: file does not exist: " + path);
        EXPECT_EQ(deck.TopFile().HeaderText() + deck.TopFile().TailText(), "");

        Environment::Instance().SetAllowIncompleteDeck(true);
        EXPECT_EQ(AskForAll(deck, "DIMENS"), "");
        EXPECT_NE(deck.Keywords().GetKeywordData(*deck.At("DIMENS")), nullptr);
        EXPECT_EQ(deck.Walk(), "RUNSPEC DIMENS OIL");
        Environment::Instance().SetAllowIncompleteDeck(false);
        // Read anew, it is a file without keywords.
        deck.TopFile().Reload();
        EXPECT_EQ(deck.Walk(), "");
    }
}

TEST_F(ChangedFileTest, FileThatShrinksGivesWhatIsLeft)
{
    for (const std::string left : {"", "RUNS", "RUNSPEC\nDIMENS", "RUNSPEC\nDIMENS\n1 2"}) {
        const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nDIMENS\n1 2 3 /\nOIL\n"}});
        deck.Walk();
        deck.Dir().Write("A.DATA", left);
        const std::string text = AskForAll(deck, "DIMENS");
        EXPECT_EQ(text.find("3 /"), std::string::npos) << left;
        AskForAll(deck, "RUNSPEC");
    }
}

TEST_F(ChangedFileTest, ReadErrorIsToldAndTheFileRefusesEdits)
{
    std::string text = "RUNSPEC\nOIL\n";
    for (int i = 0; i < 4000; ++i) {
        text += "-- a comment that fills the file\n";
    }
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text + "GAS\n"}});
    FailingFileSystem files;
    int failures = 0;
    for (int n = 1; n < 20; ++n) {
        m_log.Clear();
        files.FailAt(n, {FailingFileSystem::Call::Read}, EIO, true);
        deck.TopFile().Reload();
        const std::string walk = deck.Walk();
        if (deck.TopFile().IsReadOnly()) {
            ++failures;
            EXPECT_TRUE(walk == "" || walk == "RUNSPEC OIL") << walk;
            EXPECT_EQ(m_log.Texts(3), (std::vector<std::string>{"Loading keyword file: Fails to read file:" +
                                                                deck.Dir().Path("A.DATA")}));
        } else {
            EXPECT_EQ(walk, "RUNSPEC OIL GAS");
            EXPECT_TRUE(m_log.Empty());
        }
    }
    EXPECT_GT(failures, 2);
    files.Pass();
    deck.TopFile().Reload();
    EXPECT_EQ(deck.Walk(), "RUNSPEC OIL GAS");
    EXPECT_FALSE(deck.TopFile().IsReadOnly());
}

/// What could be read of data is not the data: who writes it back would lose the rest.
TEST_F(ChangedFileTest, DataThatCannotBeReadAreRefusedAndReadAnotherTime)
{
    std::string values;
    for (int i = 0; i < 30000; ++i) {
        values += i % 10 == 9 ? "0.25\n" : "0.25 ";
    }
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nDIMENS\n30000 1 1 /\nGRID\nPORO\n" + values + "/\n"}});
    const std::string told = "The text of keyword PORO cannot be read from the file " + deck.Dir().Path("A.DATA") + ".";
    using Ask = std::function<std::size_t()>;
    const IKeyword* poro = *deck.At("PORO");
    const Ask questions[] = {[&] {
                                 const auto* data = deck.Keywords().GetKeywordData(poro);
                                 const auto* list = dynamic_cast<const Keywords::IKeywordListData*>(data);
                                 return list != nullptr ? static_cast<std::size_t>(list->GetElementCount()) : 0;
                             },
                             [&] { return deck.Keywords().GetDataText(poro)->size(); },
                             [&] { return deck.Keywords().GetRawText(poro)->size(); }};
    const std::size_t answers[] = {30000, values.size() + 1, values.size() + 7};
    for (int question = 0; question < 3; ++question) {
        for (const auto call : {FailingFileSystem::Call::Open, FailingFileSystem::Call::Read}) {
            int refused = 0;
            for (int n = 1, failed = 1; failed != 0; ++n) {
                SCOPED_TRACE(n);
                deck.TopFile().Reload();
                poro = *deck.At("PORO");
                FailingFileSystem files;
                files.FailAt(n, {call}, EIO);
                try {
                    EXPECT_EQ(questions[question](), answers[question]);
                } catch (const DeckManagerException& failure) {
                    EXPECT_EQ(failure.what(), told);
                    ++refused;
                }
                failed = files.HasFailed() ? 1 : 0;
                files.Pass();
                EXPECT_EQ(questions[question](), answers[question]);
            }
            EXPECT_GE(refused, 1);
        }
    }
}

/// The path of an INCLUDE is read apart from the scan. Where that fails, a file is missing, and nobody must take what
/// is left for the deck; the next who asks may find it.
TEST_F(ChangedFileTest, AnIncludeWhosePathCannotBeReadIsToldAndReadAnotherTime)
{
    for (const auto call : {FailingFileSystem::Call::Open, FailingFileSystem::Call::Read}) {
        int told = 0;
        for (int n = 1, failed = 1; failed != 0; ++n) {
            SCOPED_TRACE(n);
            const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'c.inc' /\nGAS\n"},
                                 {"b.inc", "OIL\n"},
                                 {"c.inc", "WATER\n"}});
            const std::string whole = "RUNSPEC INCLUDE OIL INCLUDE WATER GAS";
            m_log.Clear();
            {
                FailingFileSystem files;
                files.FailAt(n, {call}, EMFILE);
                EXPECT_TRUE(deck.Walk() == whole || !m_log.Texts(3).empty()) << deck.Walk();
                failed = files.HasFailed() ? 1 : 0;
            }
            for (const std::string& text : m_log.Texts(3))
                told += text == "The path of this INCLUDE cannot be read from its file." ? 1 : 0;
            for (const char* name : {"A.DATA", "b.inc", "c.inc"}) {
                try {
                    if (deck.File(name).IsReadOnly()) deck.File(name).Reload();
                } catch (const std::runtime_error&) {
                    // Nobody has come to it yet.
                }
            }
            EXPECT_EQ(deck.Walk(), whole);
        }
        EXPECT_GE(told, 2);
    }
}

TEST_F(ChangedFileTest, FileThatWasGivenUpBringsItsSectionsOnceMore)
{
    const TestDeck deck({{"A.DATA", "INCLUDE\n'b.inc' /\n"}, {"b.inc", "RUNSPEC\nPATHS\n'A' 'b' /\n/\n"}});
    EXPECT_THROW(deck.Walk(), DeckManagerException);
    Environment::Instance().SetPATHSSupport(true);
    m_log.Clear();
    EXPECT_EQ(deck.Walk(), "INCLUDE RUNSPEC PATHS");
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(ChangedFileTest, TextThatIsNoDeck)
{
    std::string noise = "\xFF\xD8\xFF\xE0";
    noise.append("\0\x10JFIF\0", 7);
    unsigned state = 1;
    for (int i = 0; i < 20000; ++i) {
        state = state * 1664525u + 1013904223u;
        noise += static_cast<char>(state >> 24);
    }
    struct Case
    {
        const char* what;
        std::string text;
        std::string walk;
    };
    const std::vector<Case> cases = {
        {"nothing", "", ""},
        {"noise", noise, ""},
        {"zeros", std::string(3 << 20, '\0'), ""},
        {"one long line", "RUNSPEC\n" + std::string(3 << 20, 'x') + "\nOIL\n", "RUNSPEC OIL"},
        {"quotes", "RUNSPEC\nTITLE\n" + std::string(100000, '\'') + "\nOIL\n", "RUNSPEC TITLE OIL"},
        {"cut off behind the name", "SCHEDULE\nWELSPECS", "SCHEDULE WELSPECS"},
        {"cut off in its data", "SCHEDULE\nWELSPECS\n 'P", "SCHEDULE WELSPECS"},
        {"an end without a beginning", "ENDSKIP", "ENDSKIP"},
        {"an include without a name", "INCLUDE", "INCLUDE"},
    };
    Environment::Instance().EnableSKIPENDSKIP(true, Tarn::Fjel::Core::Keywords::SimulatorType::S100);
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", test.text}});
        EXPECT_EQ(deck.Walk(), test.walk);
        for (KeywordFileIterator place = deck.TopFile().Begin(); place != deck.TopFile().End(); ++place) {
            deck.Keywords().GetKeywordData(*place);
            deck.Keywords().GetDataText(*place);
            place->GetComment();
            EXPECT_LE(place->GetPosition() + place->GetSize(), static_cast<long long>(test.text.size()));
        }
    }
}

} // namespace
