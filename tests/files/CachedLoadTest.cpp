#include "tests/support/DeckTest.h"
#include "tests/support/WatchedManager.h"
#include "tests/text/TextGenerator.h"
#include <tarn/service/FileStatus.h>
#include <tarn/service/FileSystem.h>

namespace {

using namespace DeckTests;
using TestSupport::WatchedManager;

void Describe(const KeywordFile& file, std::string& text, int depth)
{
    text += file.GetFileName().GetFileName() + " " + std::to_string(file.HeaderBegin()) + " " +
            std::to_string(file.HeaderEnd()) + " " + std::to_string(file.TailBegin()) +
            (file.IsFileTagged() ? " generated\n" : "\n");
    for (KeywordFileIterator place = file.Begin(); place != file.End(); ++place) {
        text += place->GetName() + "@" + std::to_string(place->GetPosition()) + "+" + std::to_string(place->GetSize());
        text += place->IsSuppressed() ? " suppressed" : "";
        text += place->IsGenerated() ? " tagged" : "";
        text += " line " + std::to_string(place->GetLine()) + " section " +
                std::to_string(static_cast<int>(file.SectionAt(place, true))) + "\n";
        const KeywordFile* included = KeywordFile::IncludedFileOf(*place);
        if (included != nullptr && depth < 5) Describe(*included, text, depth + 1);
    }
}

/// All that a load tells of a deck.
std::string Describe(KeywordFileManager& manager, const Service::FileName& top)
{
    std::string text;
    Describe(*manager.GetKeywordFile(top, true), text, 0);
    return text;
}

class CachedLoadTest : public testing::Test
{
protected:
    std::string Scan(const std::string& name = "p/TOP.DATA") const
    {
        KeywordFileManager manager("");
        return Describe(manager, m_directory.File(name));
    }
    /// With the cache of the project; what was scanned for that goes to `m_scanned`.
    std::string Load(const std::string& name = "p/TOP.DATA")
    {
        WatchedManager manager(m_directory.Path("p"));
        std::string text = Describe(manager, m_directory.File(name));
        m_scanned = manager.Scanned();
        return text;
    }

    /// Writes a file at a later time than all before, as the clock of a file system may be too coarse to tell.
    void Write(const std::string& name, const std::string& text)
    {
        m_directory.Write(name, text);
        m_seconds += 10;
        Service::FileSystem::ErrorCode error;
        Service::FileSystem::Instance().SetTimeLastModified(m_directory.Path(name), m_seconds * 1'000'000'000, error);
    }

    /// Replaces the text behind the library's back, with the time restored.
    void Forge(const std::string& name, const std::string& text) const
    {
        const std::string path = m_directory.Path(name);
        const Service::FileStatus before = Service::FileStatus::Of(path);
        ASSERT_EQ(before.size, static_cast<std::int64_t>(text.size()));
        m_directory.Write(name, text);
        Service::FileSystem::ErrorCode error;
        ASSERT_TRUE(Service::FileSystem::Instance().SetTimeLastModified(path, before.modifiedNanoseconds, error));
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
    TempDir m_directory;
    std::string m_scanned;
    std::int64_t m_seconds = 1'600'000'000;
};

/// A text with everything that shapes a list.
std::string RandomText(TestText::TextGenerator& random, const std::vector<std::string>& includes)
{
    static const std::vector<std::string> pieces = {
        "RUNSPEC\n",
        "GRID\n",
        "EDIT\n",
        "PROPS\n",
        "SOLUTION\n",
        "SCHEDULE\n",
        "oil\n",
        "WATER  -- comment\n",
        "-- comment\n",
        "\n",
        "--@@@GAS\n",
        "--@@@--@@@METRIC\n",
        "PORO\n 3*0.1\n /\n",
        "poro_x\n 1 /\n",
        "DIMENS -- Generated\n 1 2 3 /\n",
        "METRIC\n\n-- Generated\n",
        "SKIP\nPERMX\n 1 /\nENDSKIP\n",
        "SKIP100\nOIL\nSKIP300\nENDSKIP\nENDSKIP\n",
        "SKIP300\n",
        "ENDSKIP\n",
        "WELSPECS\n 'P' 'G' 1 1 1* OIL /\n/\n",
        "ACTIONX\n 'A' 1 /\n FOPR > 1 /\n/\n",
        "ENDACTIO\n",
        "UNKNOWNWORD\n",
        "  PERMX\n 1 /\n",
        "TITLE\nGRID\n",
        "EQUALS\n PORO 1 /\n/\n",
        "FAULTS\n",
        "TRACERSX\n",
        "WELSPECSX\n/\n",
        "RPTONLYO\n",
        "END\n",
        "OIL\r\n",
        "TUNINGXYZLONG\n",
        "ENDINC\n",
        "DATES\n 1 JAN 2020 /\n/\n",
    };
    std::string text = random.Below(5) == 0 ? "\xEF\xBB\xBF" : "";
    if (random.Below(4) == 0) text += "-- Generated\n";
    for (int count = random.Below(14); count > 0; --count) {
        if (!includes.empty() && random.Below(5) == 0) {
            text += "INCLUDE\n '" + random.OneOf(includes) + "' /\n";
        } else {
            text += random.OneOf(pieces);
        }
    }
    if (random.Below(4) == 0 && text.ends_with('\n')) text.pop_back();
    return text;
}

void ChooseSettings(TestText::TextGenerator& random)
{
    Environment& environment = Environment::Instance();
    environment.SetPATHSSupport(true);
    environment.EnableSKIPENDSKIP(random.Below(2) == 0, static_cast<SimulatorType>(random.Below(2)));
    environment.EnableOrdaleLegacySkipHandling(random.Below(4) == 0);
    environment.EnableKeywordSuppression(random.Below(3) != 0);
    environment.LogWarningForPossibleIndentedKeywords(random.Below(3) == 0);
}

TEST_F(CachedLoadTest, GivesWhatAScanGivesWhateverHasChanged)
{
    TestText::TextGenerator random(20);
    int cachedLoads = 0;
    for (int round = 0; round < 1500; ++round) {
        ChooseSettings(random);
        if (round % 4 == 0) {
            if (random.Below(2) == 0) m_directory.Write("p/deck_cache_xml.lock", "");
            Write("p/TOP.DATA", RandomText(random, {"a.inc", "sub/b.inc"}));
            Write("p/a.inc", RandomText(random, {"sub/b.inc"}));
            Write("p/sub/b.inc", RandomText(random, {}));
        } else if (round % 4 == 3) {
            // Now one file of the deck is another; its own entry doesn't fit, those of the others may.
            const std::string changed = random.OneOf<std::string>({"p/a.inc", "p/sub/b.inc"});
            Write(changed, RandomText(random, {}) + "-- round " + std::to_string(round) + "\n");
        }
        const std::string scan = Scan();
        for (int load = 0; load < 2; ++load) {
            ASSERT_EQ(Load(), scan) << "round " << round << "\n"
                                    << m_directory.Read("p/TOP.DATA") << "\n---- a.inc\n"
                                    << m_directory.Read("p/a.inc") << "\n---- b.inc\n"
                                    << m_directory.Read("p/sub/b.inc");
        }
        cachedLoads += m_scanned.empty() ? 1 : 0;
    }
    // Most second loads need no scan at all.
    EXPECT_GT(cachedLoads, 750);
}

TEST_F(CachedLoadTest, AnUnchangedDeckIsNotScanned)
{
    Write("p/TOP.DATA", "RUNSPEC\nINCLUDE\n 'sub/a.inc' /\nOIL\nGRID\n");
    Write("p/sub/a.inc", "WATER\n");
    const std::string scan = Load();
    EXPECT_EQ(m_scanned, "a.inc TOP.DATA ");
    EXPECT_EQ(Load(), scan);
    EXPECT_EQ(m_scanned, "");
    Write("p/sub/a.inc", "WATER\nGAS\n");
    EXPECT_EQ(Load(), Scan());
    EXPECT_EQ(m_scanned, "a.inc ");

    // Through the manager of decks, and in the real project only when a temporary one is set.
    const std::unique_ptr<IDeckManager> manager = DeckManagerFactory::Create(m_directory.Path("p"));
    manager->FlushCache();
    EXPECT_NE(manager->ImportDeck("Deck", m_directory.Path("p/TOP.DATA"), false, true, false), nullptr);
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(CachedLoadTest, WhatIsBroughtByAnotherFileIsNoListOfThisOne)
{
    // The section of the included file decides what counts behind it, and which file is first what is dropped.
    struct Case
    {
        const char* what;
        std::string top;
        std::string before;
        std::string after;
        std::string scannedAnew;
    };
    const std::vector<Case> cases = {
        {"the section behind an include", "RUNSPEC\nINCLUDE\n 'a.inc' /\nDIMENS\n 1 1 1 /\nOIL\n", "WATER\nGRID\n",
         "WATER\n", "a.inc TOP.DATA "},
        {"a duplicate comes", "INCLUDE\n 'a.inc' /\nGRID\nPORO\n 1 /\n", "RUNSPEC\n", "RUNSPEC\nGRID\nPORO\n 1 /\n",
         "a.inc "},
        {"a duplicate goes", "INCLUDE\n 'a.inc' /\nGRID\nPORO\n 1 /\n", "RUNSPEC\nGRID\nPORO\n 1 /\n", "RUNSPEC\n",
         "a.inc TOP.DATA "},
        {"nothing that matters", "RUNSPEC\nINCLUDE\n 'a.inc' /\nOIL\n", "WATER\n", "GAS\n", "a.inc "},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        Write("p/TOP.DATA", test.top);
        Write("p/a.inc", test.before);
        EXPECT_EQ(Load(), Scan());
        Write("p/a.inc", test.after + "\n");
        const std::string scan = Scan();
        EXPECT_EQ(Load(), scan);
        EXPECT_EQ(m_scanned, test.scannedAnew);
        EXPECT_EQ(Load(), scan);
    }
}

TEST_F(CachedLoadTest, WarningsOfMisplacedKeywordsComeAgainWithTheirPlace)
{
    Write("p/TOP.DATA", "RUNSPEC\nGRID\nRUNSPEC\nOIL\nSCHEDULE\nPERMX\n 1 /\n");
    const std::string path = m_directory.Path("p/TOP.DATA");
    for (int load = 0; load < 2; ++load) {
        m_log.Clear();
        Load();
        // What a scan drops is no part of the list, and told by the scan alone; its section holds all the same.
        const int dropped = load == 0 ? 1 : 0;
        EXPECT_EQ(m_log.CountOf("RUNSPEC should only appear once, ignoring duplicate seen in " + path), dropped);
        ASSERT_EQ(m_log.Count(), 1 + dropped) << load;
        EXPECT_EQ(m_log.Messages().back().text, "Keyword PERMX is not valid for section SCHEDULE");
        EXPECT_EQ(m_log.Messages().back().line, 6);
        EXPECT_EQ(m_log.Messages().back().file, path);
    }
    EXPECT_EQ(m_scanned, "");
}

TEST_F(CachedLoadTest, OtherSettingsAskForAnotherScan)
{
    Write("p/TOP.DATA", "RUNSPEC\nSKIP300\nOIL\nENDSKIP\n--@@@GAS\n  WATER\nMETRIC\n");
    Environment& environment = Environment::Instance();
    const std::vector<std::function<void()>> changes = {
        [&] { environment.EnableSKIPENDSKIP(true, SimulatorType::S100); },
        [&] { environment.EnableSKIPENDSKIP(true, SimulatorType::S300); },
        [&] { environment.EnableOrdaleLegacySkipHandling(true); },
        [&] { environment.EnableKeywordSuppression(false); },
        [&] { environment.LogWarningForPossibleIndentedKeywords(true); },
    };
    Load();
    for (const auto& change : changes) {
        change();
        EXPECT_EQ(Load(), Scan());
        EXPECT_EQ(m_scanned, "TOP.DATA ");
        EXPECT_EQ(Load(), Scan());
        EXPECT_EQ(m_scanned, "");
    }
}

TEST_F(CachedLoadTest, AnEntryThatLeadsAstrayIsNotFollowed)
{
    struct Case
    {
        const char* what;
        std::string text; ///< of the size of "RUNSPEC\nOIL\n--@@@GAS\nPORO\n1 /\n"
        bool isScanned;
    };
    const std::string text = "RUNSPEC\nOIL\n--@@@GAS\nPORO\n1 /\n";
    const std::vector<Case> cases = {
        {"other case, other data", "runspec\noil\n--@@@gas\nporo\n2 /\n", false},
        {"a keyword moved by a byte", "RUNSPEC\n\nOIL\n--@@@GAS\nPORO\n1/\n", true},
        {"no line begins there", "RUNSPEC OIL\n--@@@GAS\nPORO\n1 /\n", true},
        {"another keyword", "RUNSPEC\nGAS\n--@@@GAS\nPORO\n1 /\n", true},
        {"a longer word", "RUNSPEC\nOILX--@@@GAS\nPORO\n1 /\n", true},
        {"a comment", "RUNSPEC\n--L\n--@@@GAS\nPORO\n1 /\n", true},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        Write("p/TOP.DATA", text);
        Load();
        Load();
        EXPECT_EQ(m_scanned, "");
        Forge("p/TOP.DATA", test.text);
        const std::string scan = Scan();
        EXPECT_EQ(Load(), scan);
        EXPECT_EQ(m_scanned, test.isScanned ? "TOP.DATA " : "");
    }
}

TEST_F(CachedLoadTest, ExtentsThatNoScanGivesAreNotTaken)
{
    /// Stores a wrong size or position for a keyword, as a host may.
    struct Case
    {
        const char* what;
        std::size_t number;
        long long position;
        long long size;
    };
    const std::string text = "RUNSPEC\nOIL\n--@@@GAS\nDIMENS\n1 1 1 /\n";
    Write("p/TOP.DATA", text);
    const std::string scan = Load();
    const std::vector<Case> cases = {
        {"half a line", 1, 8, 2},        {"into the next", 1, 8, 8},           {"no text", 1, 8, 0},
        {"below nothing", 1, 8, -4},     {"behind the file", 3, 21, 99},       {"the sum overflows", 3, 21, INT64_MAX},
        {"ahead of the file", 0, -8, 8}, {"half a line at the end", 3, 21, 9},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        {
            KeywordFileManager manager(m_directory.Path("p"));
            const std::shared_ptr<KeywordFile> file = manager.GetKeywordFile(m_directory.File("p/TOP.DATA"), true);
            CacheEntry entry;
            ASSERT_TRUE(manager.GetCacheEntry(*file, entry));
            entry.values[test.number].pos = test.position;
            entry.values[test.number].size = test.size;
            manager.SetCacheEntry(*file, entry);
        }
        EXPECT_EQ(Load(), scan);
        EXPECT_EQ(m_scanned, "TOP.DATA ");
    }
}

TEST_F(CachedLoadTest, ANameThatNoTableKnowsIsPassedOver)
{
    Write("p/TOP.DATA", "RUNSPEC\nNOSUCHKW\nOIL\n");
    Load();
    WatchedManager manager(m_directory.Path("p"));
    const std::shared_ptr<KeywordFile> file = manager.GetKeywordFile(m_directory.File("p/TOP.DATA"), true);
    CacheEntry entry;
    ASSERT_TRUE(manager.GetCacheEntry(*file, entry));
    entry.values.front().size = 8;
    CacheEntry::CacheValue unknown;
    unknown.name = "NOSUCHKW";
    unknown.pos = 8;
    unknown.size = 9;
    entry.values.insert(entry.values.begin() + 1, unknown);
    // As a host may store it, who knows nothing of what shapes a list.
    entry.settings.clear();
    entry.sections.clear();
    manager.SetCacheEntry(*file, entry);
    const std::string stored = manager.Scanned();
    EXPECT_EQ(TestDeck::Extents(*file), "RUNSPEC@0+8 OIL@17+4");
    EXPECT_EQ(manager.Scanned(), stored);
}

TEST_F(CachedLoadTest, AFileThatChangesWhileItIsReadIsNotStored)
{
    Write("p/TOP.DATA", "RUNSPEC\nINCLUDE\n 'a.inc' /\nOIL\n");
    Write("p/a.inc", "WATER\n");
    /// Changes the top file while its scan waits for the included one.
    class ChangingManager : public WatchedManager
    {
    public:
        explicit ChangingManager(const TempDir& directory) : WatchedManager(directory.Path("p")), m_place(directory) {}
        bool SetCacheEntry(const IKeywordFile& file, const CacheEntry& entry) override
        {
            if (file.GetFileName().GetFileName() == "a.inc") m_place.Write("p/TOP.DATA", "RUNSPEC\nGAS\nOIL\n");
            return WatchedManager::SetCacheEntry(file, entry);
        }
        const TempDir& m_place;
    };
    {
        ChangingManager manager(m_directory);
        Describe(manager, m_directory.File("p/TOP.DATA"));
        EXPECT_EQ(manager.Scanned(), "a.inc ");
    }
    EXPECT_EQ(Load(), Scan());
    EXPECT_EQ(m_scanned, "TOP.DATA ");
}

TEST_F(CachedLoadTest, AFileThatCannotBeReadToItsEndIsNotStored)
{
    std::string text = "RUNSPEC\nINCLUDE\n 'a.inc' /\n";
    for (int i = 0; i < 9000; ++i) {
        text += "-- a comment that fills the file\n";
    }
    Write("p/TOP.DATA", text + "OIL\n");
    Write("p/a.inc", text.substr(text.find("--")) + "WATER\n");
    const std::string scan = Scan();
    using FailingFileSystem = TestSupport::FailingFileSystem;
    for (const auto call : {FailingFileSystem::Call::Open, FailingFileSystem::Call::Read}) {
        int shortened = 0;
        for (int n = 1, failed = 1; failed != 0; ++n) {
            SCOPED_TRACE(n);
            std::filesystem::remove_all(m_directory.Path("p/Cache__"));
            {
                FailingFileSystem files;
                files.FailAt(n, {call}, EIO, true);
                shortened += Load() != scan ? 1 : 0;
                failed = files.HasFailed() ? 1 : 0;
            }
            EXPECT_EQ(Load(), scan);
        }
        EXPECT_GE(shortened, 3);
    }
}

/// Each deck has its own sections, and neither loses a keyword to what the other has seen.
TEST_F(CachedLoadTest, TwoDecksInTurnAreTakenFromTheCacheAsTheyWereScanned)
{
    Write("p/A.DATA", "RUNSPEC\nINCLUDE\n 'a.inc' /\nEDIT\n");
    Write("p/a.inc", "GRID\nPORO\n 1 /\n");
    Write("p/B.DATA", "RUNSPEC\nGRID\nINCLUDE\n 'b.inc' /\n");
    Write("p/b.inc", "PORO\n 1 /\nEDIT\n");
    // The first keyword loads a file; the included one waits for whoever comes to it.
    const auto inTurn = [this](KeywordFileManager& manager) {
        const auto a = manager.GetKeywordFile(m_directory.File("p/A.DATA"), true);
        const auto b = manager.GetKeywordFile(m_directory.File("p/B.DATA"), true);
        return a->Begin()->GetName() + b->Begin()->GetName() + Describe(manager, a->GetFileName()) +
               Describe(manager, b->GetFileName());
    };
    KeywordFileManager uncached("");
    const std::string scan = inTurn(uncached);
    EXPECT_THAT(scan, testing::HasSubstr("EDIT@27+5"));
    EXPECT_THAT(scan, testing::HasSubstr("EDIT@10+5"));
    for (const bool fromCache : {false, true}) {
        WatchedManager manager(m_directory.Path("p"));
        EXPECT_EQ(inTurn(manager), scan);
        EXPECT_EQ(manager.Scanned().empty(), fromCache) << manager.Scanned();
    }
    EXPECT_TRUE(m_log.Empty());
}

TEST_F(CachedLoadTest, ALongChainOfFilesIsTakenFromTheCacheToo)
{
    constexpr int count = 1000;
    for (int i = 0; i < count; ++i) {
        const std::string next = "INCLUDE\n 'f" + std::to_string(i + 1) + ".inc' /\n";
        Write("p/f" + std::to_string(i) + ".inc", "OIL\n" + (i + 1 < count ? next : "GRID\n") + "PORO\n 1 /\n");
    }
    for (int load = 0; load < 2; ++load) {
        WatchedManager manager(m_directory.Path("p"));
        const std::shared_ptr<KeywordFile> top = manager.GetKeywordFile(m_directory.File("p/f0.inc"), true);
        EXPECT_EQ(top->EndSection(), Keywords::SectionType::GRID);
        EXPECT_EQ(TestDeck::Extents(*top), "OIL@0+4 INCLUDE@4+20 PORO@24+10");
        EXPECT_EQ(manager.Files().size(), static_cast<std::size_t>(count));
        EXPECT_EQ(manager.Scanned().empty(), load == 1);
    }
}

TEST_F(CachedLoadTest, AMovedProjectIsStillCached)
{
    Write("p/sub/TOP.DATA", "RUNSPEC\nINCLUDE\n 'a.inc' /\nOIL\n");
    Write("p/sub/a.inc", "WATER\n");
    const std::string before = Load("p/sub/TOP.DATA");
    ASSERT_EQ(std::rename(m_directory.Path("p").c_str(), m_directory.Path("q").c_str()), 0);
    WatchedManager manager(m_directory.Path("q"));
    EXPECT_EQ(Describe(manager, m_directory.File("q/sub/TOP.DATA")), before);
    EXPECT_EQ(manager.Scanned(), "");
}

} // namespace
