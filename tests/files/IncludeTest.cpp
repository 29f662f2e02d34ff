#include <sys/resource.h>

#include "files/KeywordINCLUDE.h"
#include "tests/support/DeckTest.h"

namespace {

using namespace DeckTests;

class IncludeTest : public testing::Test
{
protected:
    TestSupport::CleanEnvironment m_environment;
    LogRecorder m_log;
};

TEST_F(IncludeTest, PathsCountFromTheFolderOfTheTopFile)
{
    const TestDeck deck({{"d/A.DATA", "RUNSPEC\nINCLUDE\n'sub/b.inc' /\n"},
                         {"d/sub/b.inc", "OIL\nINCLUDE\n'sub/c.inc' /\n"},
                         {"d/sub/c.inc", "GAS\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL INCLUDE GAS");
    EXPECT_EQ(deck.Manager().GetKeywordFiles().size(), 3u);
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(IncludeTest, OneFileUnderManyNamesIsOneObject)
{
    TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'./x/../b.inc' /\nINCLUDE\n'link.inc' /\nINCLUDE\n"
                              "'gone.inc' /\nINCLUDE\n'linked/gone.inc' /\n"},
                   {"b.inc", "OIL\n"},
                   {"x/c.inc", "GAS\n"}});
    std::filesystem::create_symlink("b.inc", deck.Dir().Path("link.inc"));
    std::filesystem::create_symlink(".", deck.Dir().Path("linked"));
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL INCLUDE OIL INCLUDE OIL INCLUDE INCLUDE");
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 3u);
}

TEST_F(IncludeTest, NamesThatLeadNowhere)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'missing.inc' /\nINCLUDE\n'folder' /\nINCLUDE\n" +
                                        std::string("'") + std::string(5000, 'x') + "' /\nINCLUDE\n/\nOIL\n"},
                         {"folder/x", ""}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE INCLUDE INCLUDE INCLUDE OIL");
    const std::string folder = deck.Dir().Path("folder");
    EXPECT_TRUE(
        m_log.Contains("The INCLUDE path \"folder\", which resolves to \"" + folder +
                       "\", is not a file.\nEnsure that INCLUDE paths contain valid file names and are properly "
                       "single-quoted."));
    // A name that leads nowhere yet is a file without keywords.
    EXPECT_NE(deck.Keywords().GetIncludedFile(*deck.At("INCLUDE")), nullptr);
    EXPECT_EQ(deck.Keywords().GetIncludedFile(*deck.At("INCLUDE", 2)), nullptr);
    EXPECT_FALSE(deck.Dir().Exists("missing.inc"));
}

TEST_F(IncludeTest, SectionsCrossFileBorders)
{
    const TestDeck deck(
        {{"A.DATA", "RUNSPEC\nOIL\nGRID\nINCLUDE\n'b.inc' /\nMULTX\n1 /\nINCLUDE\n'c.inc' /\nINCLUDE\n'd.inc' /\n"},
         {"b.inc", "PORO\n1 /\nEDIT\n"},
         {"c.inc", "-- nothing\n"},
         {"d.inc", "PORV\n1 /\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC OIL GRID INCLUDE PORO EDIT MULTX INCLUDE INCLUDE PORV");
    EXPECT_EQ(deck.File("b.inc").GetStartSection(), SectionType::GRID);
    EXPECT_EQ(deck.File("b.inc").EndSection(), SectionType::EDIT);
    EXPECT_EQ(deck.File("c.inc").GetStartSection(), SectionType::EDIT);
    EXPECT_EQ(deck.File("d.inc").GetStartSection(), SectionType::EDIT);
    EXPECT_EQ(deck.TopFile().GetStartSection(), SectionType::None);
    EXPECT_EQ(deck.TopFile().SectionAt(deck.TopFile().End(), false), SectionType::EDIT);
    EXPECT_EQ(&deck.File("d.inc").DataFile(), &deck.TopFile());
    // A keyword of RUNSPEC alone is data behind the section that an included file opens.
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(IncludeTest, RingsAreRefusedOnceAndTheWalkEnds)
{
    struct Case
    {
        const char* what;
        TestDeck::Texts files;
        std::string walk;
        std::vector<std::string> rings;
    };
    const std::vector<Case> cases = {
        {"a file that includes itself",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'A.DATA' /\nOIL\n"}},
         "RUNSPEC INCLUDE OIL",
         {"The INCLUDE path \"A.DATA\" closes a ring of files: A.DATA -> A.DATA."}},
        {"a ring of three",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"},
          {"b.inc", "INCLUDE\n'c.inc' /\nOIL\n"},
          {"c.inc", "INCLUDE\n'b.inc' /\nINCLUDE\n'A.DATA' /\nGAS\n"}},
         "RUNSPEC INCLUDE INCLUDE INCLUDE INCLUDE GAS OIL",
         {"The INCLUDE path \"b.inc\" closes a ring of files: c.inc -> b.inc -> c.inc.",
          "The INCLUDE path \"A.DATA\" closes a ring of files: c.inc -> A.DATA -> b.inc -> c.inc."}},
        {"two files that include each other twice",
         {{"A.DATA", "INCLUDE\n'b.inc' /\nINCLUDE\n'b.inc' /\n"},
          {"b.inc", "INCLUDE\n'A.DATA' /\nINCLUDE\n'A.DATA' /\nOIL\n"}},
         "INCLUDE INCLUDE INCLUDE OIL INCLUDE INCLUDE INCLUDE OIL",
         {"The INCLUDE path \"A.DATA\" closes a ring of files: b.inc -> A.DATA -> b.inc.",
          "The INCLUDE path \"A.DATA\" closes a ring of files: b.inc -> A.DATA -> b.inc."}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        m_log.Clear();
        const TestDeck deck(test.files);
        EXPECT_EQ(deck.Walk(), test.walk);
        EXPECT_EQ(deck.Walk(true), test.walk);
        EXPECT_EQ(m_log.Texts(3), test.rings);
        deck.Keywords().GetFiles();
        EXPECT_EQ(m_log.Count(3), static_cast<int>(test.rings.size()));
    }
}

TEST_F(IncludeTest, LinkThatWasRefusedIsAWholeLinkOnceTheRingIsGone)
{
    const TestSupport::TempDir directory;
    directory.Write("A.DATA", "INCLUDE\n'b.inc' /\n");
    directory.Write("b.inc", "INCLUDE\n'A.DATA' /\n");
    KeywordFileManager manager("");
    const std::shared_ptr<KeywordFile> a = manager.GetKeywordFile(directory.File("A.DATA"), true);
    const std::shared_ptr<KeywordFile> b = manager.GetKeywordFile(directory.File("b.inc"), true);
    EXPECT_EQ(KeywordFile::IncludedFileOf(*a->Begin()), b.get());
    EXPECT_EQ(KeywordFile::IncludedFileOf(*b->Begin()), nullptr);

    directory.Write("A.DATA", "OIL\n");
    a->Reload();
    EXPECT_EQ((*a->Begin())->GetName(), "OIL");
    EXPECT_EQ(KeywordFile::IncludedFileOf(*b->Begin()), a.get());
    EXPECT_EQ(&a->DataFile(), b.get());

    directory.Write("A.DATA", "INCLUDE\n'b.inc' /\n");
    a->Reload();
    m_log.Clear();
    EXPECT_EQ(KeywordFile::IncludedFileOf(*a->Begin()), nullptr);
    EXPECT_EQ(m_log.Texts(), (std::vector<std::string>{
                                 "The INCLUDE path \"b.inc\" closes a ring of files: A.DATA -> b.inc -> A.DATA."}));
}

/// The process may hold only few files open until the end of the scope.
class FewOpenFiles
{
public:
    explicit FewOpenFiles(rlim_t limit)
    {
        getrlimit(RLIMIT_NOFILE, &m_before);
        rlimit few = m_before;
        few.rlim_cur = limit;
        setrlimit(RLIMIT_NOFILE, &few);
    }
    ~FewOpenFiles() { setrlimit(RLIMIT_NOFILE, &m_before); }
    FewOpenFiles(const FewOpenFiles&) = delete;
    FewOpenFiles& operator=(const FewOpenFiles&) = delete;

private:
    rlimit m_before{};
};

TEST_F(IncludeTest, ChainOfAThousandFiles)
{
    const FewOpenFiles limit(128);
    TestDeck::Texts files{{"A.DATA", "RUNSPEC\nINCLUDE\n'f0.inc' /\nOIL\n"}};
    for (int i = 0; i < 1000; ++i) {
        files.push_back({"f" + std::to_string(i) + ".inc",
                         i < 999 ? "INCLUDE\n'f" + std::to_string(i + 1) + ".inc' /\nGAS\n" : std::string("WATER\n")});
    }
    const TestDeck deck(files);
    int count = 0;
    for (KeywordIterator position = deck.Keywords().Begin(); *position != nullptr; ++position) {
        ++count;
    }
    EXPECT_EQ(count, 3 + 999 * 2 + 1);
    EXPECT_EQ(deck.Keywords().SectionOf(deck.At("WATER")), SectionType::RUNSPEC);
    EXPECT_EQ(deck.At("GAS", 1)->GetLine(), 3);
    EXPECT_EQ(deck.At("GAS", 999)->GetLine(), 3);
    EXPECT_EQ(deck.Keywords().GetFiles().size(), 1001u);
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(IncludeTest, AliasesOfPATHSReachEveryFile)
{
    Environment::Instance().SetPATHSSupport(true);
    const TestDeck deck({{"A.DATA", "RUNSPEC\nPATHS\n'HERE' 'sub' /\n/\nINCLUDE\n'$HERE/b.inc' /\n"},
                         {"sub/b.inc", "PATHS\n'DEEP' '$here/deep' /\n/\nINCLUDE\n'$DEEP/c.inc' /\n"},
                         {"sub/deep/c.inc", "OIL\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC PATHS INCLUDE PATHS INCLUDE OIL");
}

TEST_F(IncludeTest, GeneratedFileMakesItsINCLUDEGenerated)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "-- Generated\nOIL\n"}});
    EXPECT_TRUE((*deck.At("INCLUDE"))->IsGenerated());
    EXPECT_FALSE((*deck.At("INCLUDE"))->IsInGeneratedFile());
    EXPECT_TRUE((*deck.At("OIL"))->IsInGeneratedFile());
    EXPECT_FALSE(deck.File("b.inc").HasUserKeywords());
}

struct EventCounter
{
    void Count(KeywordFileEventArgs& args) { kinds.push_back(args.GetKind()); }
    std::vector<int> kinds;
};

TEST_F(IncludeTest, ChangeOfASharedFileIsPassedUpOnce)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "OIL\n"}});
    deck.Walk();
    EventCounter counter;
    deck.TopFile().fileChanged.Add(&counter, &EventCounter::Count);
    deck.File("b.inc").Reload();
    EXPECT_EQ(counter.kinds, std::vector<int>{KeywordFileEventArgs::Overwrite});
    deck.TopFile().fileChanged.Remove(&counter, &EventCounter::Count);
}

TEST_F(IncludeTest, OtherDataAreToldWhereThatIsWanted)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\n"}, {"b.inc", "OIL\n"}, {"c.inc", "GAS\n"}});
    deck.Walk();
    auto& include = static_cast<Keyword&>(const_cast<IKeyword&>(**deck.At("INCLUDE")));
    EventCounter counter;
    deck.TopFile().fileChanged.Add(&counter, &EventCounter::Count);
    EXPECT_TRUE(include.SetDataText("'c.inc' /", false));
    EXPECT_EQ(counter.kinds, std::vector<int>{});
    EXPECT_TRUE(include.SetDataText("'b.inc' /", true));
    EXPECT_EQ(counter.kinds, std::vector<int>{KeywordFileEventArgs::KeywordUpdated});
    deck.TopFile().fileChanged.Remove(&counter, &EventCounter::Count);
}

struct Asker
{
    void Hear(KeywordFileEventArgs& args)
    {
        if (args.GetKind() == KeywordFileEventArgs::Overwrite) found = TestDeck::Extents(file);
    }
    const KeywordFile& file;
    std::string found = {};
};

TEST_F(IncludeTest, ChangedFileOnDiskIsSeenAfterAReload)
{
    const TestDeck deck({{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nEND\n"}, {"b.inc", "OIL\n"}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL END");
    deck.Dir().Write("b.inc", "OIL\nGRID\nPORO\n1 /\n");
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL END");
    // Whoever hears of it finds the new list already.
    Asker asker{deck.File("b.inc")};
    deck.File("b.inc").fileChanged.Add(&asker, &Asker::Hear);
    deck.Manager().RefreshDeck("Test");
    EXPECT_EQ(asker.found, "OIL@0+4 GRID@4+5 PORO@9+9");
    deck.File("b.inc").fileChanged.Remove(&asker, &Asker::Hear);
    EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL GRID PORO END");
    EXPECT_EQ(deck.Keywords().SectionOf(deck.At("PORO")), SectionType::GRID);
}

TEST_F(IncludeTest, FilesThatNothingHoldsGo)
{
    const TestSupport::TempDir directory;
    directory.Write("A.DATA", "INCLUDE\n'b.inc' /\n");
    directory.Write("b.inc", "INCLUDE\n'c.inc' /\n");
    directory.Write("c.inc", "OIL\n");
    KeywordFileManager manager("");
    std::shared_ptr<KeywordFile> top = manager.GetKeywordFile(directory.File("A.DATA"), true);
    top->Begin();
    KeywordFile::IncludedFileOf(*top->Begin())->Begin();
    EXPECT_EQ(manager.Files().size(), 3u);
    manager.ClearUnreferencedFiles();
    EXPECT_EQ(manager.Files().size(), 3u);
    top.reset();
    manager.ClearUnreferencedFiles();
    EXPECT_TRUE(manager.Files().empty());
    EXPECT_FALSE(manager.FindKeywordFile(directory.File("b.inc")));
}

} // namespace
