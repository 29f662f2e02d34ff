#include <map>
#include <optional>

#include "tests/support/DeckTest.h"
#include <tarn/service/FileName.h>

// Files of a deck change names on a disk that doesn't let them.

namespace {

using namespace DeckTests;
using Tarn::Fjel::Core::Service::FileName;

const TestDeck::Texts before{
    {"TOP.DATA", "RUNSPEC\nINCLUDE\n'A.INC' / one\nINCLUDE\n'sub/B.INC' /\nGRID\nGDFILE\n'CASE' /\n"},
    {"A.INC", "OIL\nINCLUDE\n'sub/C.INC' /\n"},
    {"sub/B.INC", "WATER\n"},
    {"sub/C.INC", "GAS\n"},
    {"CASE.EGRID", "grid"}};
/// Two exchange their names, one gets a new one, and so does a grid.
const std::map<FileName, FileName> names{{FileName("C.INC"), FileName("B.INC")},
                                         {FileName("B.INC"), FileName("C.INC")},
                                         {FileName("A.INC"), FileName("D.INC")},
                                         {FileName("CASE.EGRID"), FileName("NEW.EGRID")}};
const TestDeck::Texts after{
    {"TOP.DATA", "RUNSPEC\nINCLUDE\n'D.INC' / one\nINCLUDE\n'sub/C.INC' /\nGRID\nGDFILE\n'NEW' /\n"},
    {"D.INC", "OIL\nINCLUDE\n'sub/B.INC' /\n"},
    {"sub/C.INC", "WATER\n"},
    {"sub/B.INC", "GAS\n"},
    {"NEW.EGRID", "grid"}};

std::string Joined(const TestDeck::Texts& texts)
{
    std::map<std::string, std::string> sorted(texts.begin(), texts.end());
    std::string text;
    for (const auto& [name, content] : sorted)
        text += name + "\n" + content;
    return text;
}

std::string OnDisk(const TestDeck& deck)
{
    std::map<std::string, std::string> files;
    std::string listing = deck.Dir().Listing() + " ";
    for (std::size_t at = 0; at < listing.size();) {
        const std::size_t end = listing.find(' ', at);
        const std::string name = listing.substr(at, end - at);
        if (!name.empty() && name.back() != '/') files[name] = deck.Dir().Read(name);
        at = end + 1;
    }
    std::string text;
    for (const auto& [name, content] : files)
        text += name + "\n" + content;
    return text;
}

TEST(RenameFailureTest, FilesAreRenamedWhollyOrNotAtAll)
{
    const TestSupport::CleanEnvironment environment;
    LineEnds::SetPolicy(LineEnds::Policy::Keep);
    int refusals = 0;
    for (int n = 1;; ++n) {
        SCOPED_TRACE("operation " + std::to_string(n));
        const TestDeck deck(before);
        const std::string walk = deck.Walk(true);
        IDeckKeywordsEditor& editor = *deck.Manager().GetEditor(&deck.Deck());
        bool threw = false;
        std::optional<Call> failed;
        {
            FailingFileSystem disk;
            disk.FailAt(n, FailingFileSystem::Changes(), EIO);
            try {
                EXPECT_TRUE(editor.ApplyFileRenames(names, false));
            } catch (const DeckManagerException&) {
                threw = true;
            }
            if (disk.HasFailed()) failed = disk.FirstFailed();
        }
        refusals += threw ? 1 : 0;
        // What was made to see whether something can be made stays where it can't be taken away.
        if (failed != Call::Unlink) {
            EXPECT_EQ(OnDisk(deck), Joined(threw ? before : after));
        }
        EXPECT_EQ(deck.Walk(true), walk);
        EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        if (threw && failed == Call::Rename) {
            EXPECT_TRUE(editor.ApplyFileRenames(names, false));
            EXPECT_EQ(OnDisk(deck), Joined(after));
            EXPECT_EQ(deck.Walk(true), deck.WalkOfDisk());
        }
        if (!failed) break;
    }
    EXPECT_GT(refusals, 20);
}

} // namespace
