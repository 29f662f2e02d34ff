#include <sys/stat.h>
#include <thread>

#include "tests/support/DeckTest.h"
#include "tests/support/UnprivilegedUser.h"
#include <deckmanager/Exporter.h>

/// Exports that can't be done: what is told, and that all files are as they were.

namespace {

using namespace DeckTests;

class FailureTest : public testing::Test
{
protected:
    FailureTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    /// What lies in the directory, with the text of each file.
    static std::string All(const TestDeck& deck)
    {
        std::string all;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(deck.Dir().Path())) {
            const std::string name = std::filesystem::relative(entry.path(), deck.Dir().Path()).string();
            all += name + (entry.is_regular_file() ? "=" + deck.Dir().Read(name) : std::string()) + "\n";
        }
        return all;
    }

    static bool Flatten(const TestDeck& deck, const std::string& name)
    {
        return Exporter::ExportToSingleFile(deck.Keywords(), deck.Keywords().Begin(), deck.Keywords().PhysicalEnd(),
                                            deck.Dir().Path(name), SimulatorType::Any);
    }
    static bool Copy(const TestDeck& deck, const std::string& name)
    {
        return deck.Keywords().ExportToDirectory(deck.Dir().Path(name), SimulatorType::Any, false);
    }
    static bool Clone(const TestDeck& deck, const std::string& suffix)
    {
        return !Exporter::CopyToSameDir(deck.Keywords(), suffix, ExportOptions(), nullptr).empty();
    }

    using Export = bool (*)(const TestDeck&);
    /// What throws is not done.
    static bool IsDone(Export act, const TestDeck& deck)
    {
        bool done = false;
        TestSupport::Thrown<DeckManagerException>([&] { done = act(deck); });
        return done;
    }

    TestSupport::CleanEnvironment m_environment;
    LogRecorder m_log;
};

TestDeck::Texts SmallDeck()
{
    return {{"A.DATA", "RUNSPEC\nINCLUDE\n'sub/x.inc' /\nGRID\nGDFILE\n'C.EGRID' /\n"},
            {"sub/x.inc", "OIL\n"},
            {"C.EGRID", "grid"},
            {"old/A.DATA", "old A"},
            {"old/x.inc", "old x"},
            {"A_X.DATA", "old A_X"}};
}

TEST_F(FailureTest, FilesOfTheDeckAreNoTargets)
{
    TestDeck deck(SmallDeck());
    std::filesystem::create_symlink("../A.DATA", deck.Dir().Path("old/link"));
    std::filesystem::create_hard_link(deck.Dir().Path("sub/x.inc"), deck.Dir().Path("old/hard"));
    std::filesystem::create_directory_symlink("sub", deck.Dir().Path("linked"));
    std::filesystem::create_hard_link(deck.Dir().Path("A.DATA"), deck.Dir().Path("old/x_Y.inc"));
    std::filesystem::create_hard_link(deck.Dir().Path("A.DATA"), deck.Dir().Path("sub/x_Y.inc"));
    const std::string before = All(deck);
    const auto refused = [&](bool done, const std::string& name) {
        EXPECT_FALSE(done) << name;
        EXPECT_TRUE(
            m_log.Contains("The file " + deck.Dir().Path(name) + " cannot be written: it is a file of the deck."))
            << name;
        EXPECT_EQ(All(deck), before) << name;
        m_log.Clear();
    };
    for (const char* name : {"A.DATA", "sub/../A.DATA", "sub/x.inc", "linked/x.inc", "old/link", "old/hard", "C.EGRID"})
        refused(Flatten(deck, name), name == std::string("sub/../A.DATA") ? "A.DATA" : name);
    EXPECT_FALSE(Exporter::ExportToSingleFile(deck.Keywords(), "elsewhere/A.DATA"));
    refused(Copy(deck, "sub"), "sub/x.inc");
    refused(Clone(deck, ""), "A.DATA");
    refused(Clone(deck, "_Y"), "sub/x_Y.inc");
    std::vector<std::string> failed;
    refused(!Exporter::CopyToSameDir(deck.Keywords(), "", failed).empty(), "A.DATA");
    EXPECT_EQ(failed, std::vector<std::string>{deck.Dir().Path("A.DATA")});
    EXPECT_EQ(Exporter::ExportToSingleFileSuffix(deck.Keywords(), ""), "");
    EXPECT_EQ(All(deck), before);
}

TEST_F(FailureTest, DirectoriesAndFilesInTheWay)
{
    TestDeck deck(SmallDeck());
    std::filesystem::create_directory(deck.Dir().Path("d"));
    std::filesystem::create_directories(deck.Dir().Path("f/x.inc"));
    std::filesystem::create_directory(deck.Dir().Path("sub/x_Z.inc"));
    const std::string before = All(deck);
    EXPECT_FALSE(Flatten(deck, "d"));
    EXPECT_TRUE(m_log.Contains("The file " + deck.Dir().Path("d") + " cannot be written: it is a directory."));
    EXPECT_FALSE(Flatten(deck, "A.DATA/new/flat.DATA"));
    EXPECT_TRUE(m_log.Contains("The directory " + deck.Dir().Path("A.DATA/new") + " cannot be made: "));
    EXPECT_FALSE(Copy(deck, "A.DATA/copy"));
    EXPECT_TRUE(
        m_log.Contains("ExporterUtil::Export(): Fails to open output file:" + deck.Dir().Path("A.DATA/copy/A.DATA")));
    EXPECT_FALSE(Copy(deck, "f"));
    EXPECT_TRUE(m_log.Contains("ExporterUtil::Export(): Fails to open output file:" + deck.Dir().Path("f/x.inc")));
    EXPECT_FALSE(Clone(deck, "_Z"));
    EXPECT_TRUE(
        m_log.Contains("The file " + deck.Dir().Path("sub/x_Z.inc") + " cannot be written: it is a directory."));
    EXPECT_EQ(All(deck), before);

    // The form that goes on without a file leaves its INCLUDE out, and the comment below it not.
    std::vector<std::string> failed;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_Z", failed), deck.Dir().Path("A_Z.DATA"));
    EXPECT_EQ(failed, std::vector<std::string>{deck.Dir().Path("sub/x_Z.inc")});
    EXPECT_EQ(deck.Dir().Read("A_Z.DATA"), "RUNSPEC\nGRID\nGDFILE\n'C.EGRID' /\n");
}

TEST_F(FailureTest, TwoNamesThatLeadToOnePlace)
{
    TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'c.inc' /\n"},
                                  {"b.inc", "OIL\n"},
                                  {"c.inc", "GAS\n"},
                                  {"c_X.inc", "old"},
                                  {"copy/c.inc", "old"}});
    std::filesystem::create_symlink("c_X.inc", deck.Dir().Path("b_X.inc"));
    std::filesystem::create_symlink("c.inc", deck.Dir().Path("copy/b.inc"));
    const std::string before = All(deck);
    ExportOptions plan;
    plan.planOnly = true;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_X", plan, nullptr), "");
    EXPECT_FALSE(Clone(deck, "_X"));
    EXPECT_TRUE(m_log.Contains("c_X.inc cannot be written: another file of the export takes its place."));
    EXPECT_EQ(All(deck), before);
    // A copy can give one of them another name.
    EXPECT_TRUE(Copy(deck, "copy"));
    EXPECT_EQ(deck.Dir().Read("copy/A.DATA"), "RUNSPEC\nINCLUDE\n'b.inc' /\nINCLUDE\n'c_1.inc' /\n");
    EXPECT_EQ(deck.Dir().Read("copy/b.inc") + deck.Dir().Read("copy/c_1.inc"), "OIL\nGAS\n");
}

TEST_F(FailureTest, PermissionsAreTold)
{
    TestDeck deck(SmallDeck());
    deck.Dir().Write("locked/A.DATA", "old");
    deck.Dir().Write("readonly.DATA", "old");
    std::filesystem::permissions(deck.Dir().Path("readonly.DATA"), std::filesystem::perms::owner_read);
    const std::string before = All(deck);
    {
        const TestSupport::UnprivilegedUser user(deck.Dir());
        std::filesystem::permissions(deck.Dir().Path("locked"), static_cast<std::filesystem::perms>(0500));
        EXPECT_FALSE(Flatten(deck, "locked/new.DATA"));
        EXPECT_TRUE(m_log.Contains(deck.Dir().Path("locked/new.DATA") + " cannot be written: Permission denied"));
        EXPECT_FALSE(Flatten(deck, "readonly.DATA"));
        EXPECT_TRUE(m_log.Contains(deck.Dir().Path("readonly.DATA") + " cannot be written: no permission"));
        EXPECT_FALSE(Copy(deck, "locked"));
        EXPECT_FALSE(Copy(deck, "locked/deeper"));
        std::filesystem::permissions(deck.Dir().Path("sub/x.inc"), std::filesystem::perms::none);
        EXPECT_THROW(Copy(deck, "copy"), DeckManagerException);
        EXPECT_THROW(Flatten(deck, "flat.DATA"), DeckManagerException);
        EXPECT_THROW(Clone(deck, "_Q"), DeckManagerException);
        std::filesystem::permissions(deck.Dir().Path("sub/x.inc"), std::filesystem::perms::owner_all);
        std::filesystem::permissions(deck.Dir().Path("locked"), std::filesystem::perms::owner_all);
    }
    EXPECT_EQ(All(deck), before);
}

TEST_F(FailureTest, AFullDiskLeavesWhatWasThere)
{
    TestDeck::Texts files = SmallDeck();
    std::string numbers = "-- numbers\nSOLUTION\nPRESSURE\n";
    for (int i = 0; i < 40000; ++i)
        numbers += " 1 2 3 4\n";
    files[1].second = numbers;
    TestDeck deck(files);
    const std::string before = All(deck);
    FailingFileSystem disk;
    for (const std::int64_t space : {0, 20, 100, 66000, 200000}) {
        const auto full = [&](bool done) {
            EXPECT_FALSE(done) << space;
            EXPECT_TRUE(m_log.Contains("No space left on device")) << space;
            m_log.Clear();
            disk.Pass();
            EXPECT_EQ(All(deck), before) << space;
            disk.LimitSpace(space);
        };
        disk.LimitSpace(space);
        full(Flatten(deck, "old/A.DATA"));
        full(Copy(deck, "old"));
        full(Copy(deck, "new/copy"));
        full(Clone(deck, "_X"));
        disk.Pass();
    }
}

TEST_F(FailureTest, AnyCallThatFailsLeavesWhatWasThere)
{
    const std::set<Call> calls{Call::Open,      Call::Close, Call::Write,  Call::CopyRange,
                               Call::StartSync, Call::Sync,  Call::Rename, Call::MakeDirectory};
    const Export exports[] = {[](const TestDeck& deck) { return Flatten(deck, "old/A.DATA"); },
                              [](const TestDeck& deck) { return Copy(deck, "old"); },
                              [](const TestDeck& deck) { return Copy(deck, "new/copy"); },
                              [](const TestDeck& deck) { return Clone(deck, "_X"); }};
    for (const Export act : exports) {
        int failures = 0;
        for (int n = 1;; ++n) {
            const TestDeck deck(SmallDeck());
            EXPECT_EQ(deck.Walk(), "RUNSPEC INCLUDE OIL GRID GDFILE");
            const std::string before = All(deck);
            FailingFileSystem disk;
            disk.FailAt(n, calls, EIO);
            const bool done = IsDone(act, deck);
            const bool failed = disk.HasFailed();
            disk.Pass();
            // A call may fail without loss: nobody needs what a file was like that is replaced.
            if (!done) {
                EXPECT_EQ(All(deck), before) << n;
            }
            failures += done ? 0 : 1;
            if (!failed) break;
        }
        EXPECT_GT(failures, 4);
    }
}

/// Nobody must take a copy for the deck that lacks what could not be read.
TEST_F(FailureTest, WhatCannotBeReadIsNotLeftOut)
{
    const Export exports[] = {[](const TestDeck& deck) { return Flatten(deck, "new.DATA"); },
                              [](const TestDeck& deck) { return Copy(deck, "new"); },
                              [](const TestDeck& deck) { return Clone(deck, "_X"); }};
    for (const Export act : exports) {
        const TestDeck whole(SmallDeck());
        EXPECT_TRUE(act(whole));
        for (const Call call : {Call::Open, Call::Read}) {
            // What fails once may be read a second time.
            for (const bool forever : {false, true}) {
                int refused = 0;
                for (int n = 1, failed = 1; failed != 0; ++n) {
                    SCOPED_TRACE(n);
                    const TestDeck deck(SmallDeck());
                    const std::string before = All(deck);
                    FailingFileSystem disk;
                    disk.FailAt(n, {call}, EIO, forever);
                    const bool done = IsDone(act, deck);
                    failed = disk.HasFailed() ? 1 : 0;
                    disk.Pass();
                    EXPECT_EQ(All(deck), done ? All(whole) : before);
                    refused += done ? 0 : 1;
                }
                EXPECT_TRUE(refused > 2 || !forever);
            }
        }
    }
}

TEST_F(FailureTest, LinksAndModesOfTargetsStay)
{
    TestDeck deck(SmallDeck());
    deck.Dir().Write("real/flat.DATA", "old");
    std::filesystem::permissions(deck.Dir().Path("real/flat.DATA"), static_cast<std::filesystem::perms>(0640));
    std::filesystem::create_symlink("real/flat.DATA", deck.Dir().Path("link.DATA"));
    EXPECT_TRUE(Flatten(deck, "link.DATA"));
    EXPECT_TRUE(std::filesystem::is_symlink(deck.Dir().Path("link.DATA")));
    EXPECT_EQ(deck.Dir().Read("real/flat.DATA").substr(0, 12), "RUNSPEC\nOIL\n");
    EXPECT_EQ(std::filesystem::status(deck.Dir().Path("real/flat.DATA")).permissions(),
              static_cast<std::filesystem::perms>(0640));
    // What is no file can't be put beside and renamed.
    ASSERT_EQ(::mkfifo(deck.Dir().Path("pipe").c_str(), 0600), 0);
    std::string read;
    std::thread reader([&] { read = deck.Dir().Read("pipe"); });
    EXPECT_TRUE(Flatten(deck, "pipe"));
    reader.join();
    EXPECT_EQ(read, deck.Dir().Read("real/flat.DATA"));
    EXPECT_TRUE(std::filesystem::is_fifo(deck.Dir().Path("pipe")));
}

} // namespace
