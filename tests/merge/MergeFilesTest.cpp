#include "tests/merge/Merging.h"

// Merges of decks of many files. "~" stands for the generated tag.

namespace {

using namespace MergeTests;

struct Fact
{
    const char* what;
    Texts oldFiles;
    Texts newFiles;
    Texts expected; ///< the files that are not as they were
    IncludeNames includeNames = {};
};

class MergeFilesTest : public testing::Test
{
protected:
    static void Check(const std::vector<Fact>& facts)
    {
        for (const Fact& fact : facts) {
            SCOPED_TRACE(fact.what);
            TwoDecks decks(fact.oldFiles, fact.newFiles);
            decks.includeNames = fact.includeNames;
            EXPECT_TRUE(decks.MergeUserKeywords());
            for (const auto& [name, text] : fact.newFiles) {
                std::string expected = text;
                for (const auto& [changed, changedText] : fact.expected) {
                    if (changed == name) expected = changedText;
                }
                EXPECT_EQ(decks.Text(name), expected) << name;
            }
        }
    }

    TestSupport::CleanEnvironment m_environment;
    TestSupport::LogRecorder m_log;
};

const std::string includeA = "INCLUDE~\n'A.INC' /\n";
const std::string includeB = "INCLUDE~\n'B.INC' /\n";
const std::string user = "EQLDIMS\n 5 /\n";

TEST_F(MergeFilesTest, UserKeywordsStayInTheirFile)
{
    Check({
        {"behind its anchor in an included file",
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n" + user + "WATER~\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\nWATER~\n"}},
         {{"A.INC", "TABDIMS~\n1 /\n" + user + "WATER~\n"}}},
        {"the first of an included file",
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", user + "TABDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}},
         {{"A.INC", user + "TABDIMS~\n1 /\n"}}},
        {"behind an INCLUDE in the including file",
         {{"T.DATA", "RUNSPEC\n" + includeA + user + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + user + "OIL~\n"}}},
        {"the same rank in a file of the same name counts first",
         {{"T.DATA", "GRID\n" + includeA + includeB},
          {"A.INC", "PERMX~\n1 /\n"},
          {"B.INC", "PERMX~\n2 /\nMULTZ\n1 /\n"}},
         {{"T.DATA", "GRID\n" + includeA + includeB},
          {"A.INC", "PERMX~\n1 /\nPERMX~\n3 /\n"},
          {"B.INC", "PERMX~\n2 /\n"}},
         {{"B.INC", "PERMX~\n2 /\nMULTZ\n1 /\n"}}},
        {"its file is gone: where its INCLUDE would be",
         {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n" + includeA + "OIL~\n"}, {"A.INC", user + "WELLDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\nOIL~\n"}},
         {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n" + user + "OIL~\n"}}},
        {"behind an ENDINC",
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"},
          {"A.INC", "TABDIMS~\n1 /\nENDINC\n-- dead\nWATER\nGAS~\n-- or\nEQLDIMS\n 2 /\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\nENDINC\n"}},
         {{"A.INC", "TABDIMS~\n1 /\nENDINC\n-- dead\nWATER\nEQLDIMS\n 2 /\n"}}},
        {"behind an ENDINC that the generator no longer makes",
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\nENDINC\nEQLDIMS\n 2 /\n"}},
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}},
         {{"A.INC", "TABDIMS~\n1 /\n-- EQLDIMS\n--  2 /\n"}}},
        {"a file that was generated as a whole is opened",
         {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", user + "TABDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\nINCLUDE\n'A.INC' /\nOIL~\n"}, {"A.INC", "~\nTABDIMS\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\nINCLUDE~\n'A.INC' /\nOIL~\n"}, {"A.INC", user + "TABDIMS~\n1 /\n"}}},
        {"or left alone, where another anchor serves",
         {{"T.DATA", "RUNSPEC\nWATER~\n" + includeA + user}, {"A.INC", "TABDIMS~\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\nWATER~\nINCLUDE\n'A.INC' /\nOIL~\n"}, {"A.INC", "~\nTABDIMS\n1 /\n"}},
         {{"T.DATA", "RUNSPEC\nWATER~\nINCLUDE\n'A.INC' /\n" + user + "OIL~\n"}}},
        {"a scope that ends with a generated file: behind that",
         {{"T.DATA", "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nTSTEP~\n1 /\nWELOPEN\n'A' OPEN /\n/\n"}},
         {{"T.DATA", "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nINCLUDE\n'A.INC' /\nTSTEP~\n2 /\n"},
          {"A.INC", "~\nWTEST\n'A' 1 P /\n/\n"}},
         {{"T.DATA", "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\nINCLUDE\n'A.INC' /\nWELOPEN\n'A' OPEN /\n/\nTSTEP~\n2 /\n"}}},
        {"a missing date at the end of a file, and what follows in the including one",
         {{"T.DATA", "SCHEDULE\n" + includeA + "WTEST\n'B' 1 P /\n/\n" + "END\n"},
          {"A.INC", "DATES~\n1 JAN 2020 /\n/\nDATES~\n1 FEB 2020 /\n/\nWELOPEN\n'A' OPEN /\n/\n"}},
         {{"T.DATA", "SCHEDULE\n" + includeA + "END\n"}, {"A.INC", "DATES~\n1 JAN 2020 /\n/\n"}},
         {{"T.DATA", "SCHEDULE\n" + includeA + "WTEST\n'B' 1 P /\n/\n" + "END\n"},
          {"A.INC", "DATES~\n1 JAN 2020 /\n/\nDATES\n1 FEB 2020 /\n/\nWELOPEN\n'A' OPEN /\n/\n"}}},
        {"the same where that file is generated as a whole",
         {{"T.DATA", "SCHEDULE\n" + includeA + "WTEST\n'B' 1 P /\n/\n" + "END\n"},
          {"A.INC", "DATES~\n1 JAN 2020 /\n/\nDATES~\n1 FEB 2020 /\n/\nWELOPEN\n'A' OPEN /\n/\n"}},
         {{"T.DATA", "SCHEDULE\nINCLUDE\n'A.INC' /\nEND\n"}, {"A.INC", "~\nDATES\n1 JAN 2020 /\n/\n"}},
         {{"T.DATA", "SCHEDULE\nINCLUDE\n'A.INC' /\nDATES\n1 FEB 2020 /\n/\nWELOPEN\n'A' OPEN /\n/\nWTEST\n'B' 1 P "
                     "/\n/\nEND\n"}}},
        {"the scope's head ends a file",
         {{"T.DATA", "SCHEDULE\n" + includeA + includeB},
          {"A.INC", "DATES~\n1 JAN 2020 /\n/\n"},
          {"B.INC", "WELOPEN\n'A' OPEN /\n/\n"}},
         {{"T.DATA", "SCHEDULE\n" + includeA}, {"A.INC", "DATES~\n1 JAN 2020 /\n/\nDATES~\n1 FEB 2020 /\n/\n"}},
         {{"A.INC", "DATES~\n1 JAN 2020 /\n/\nWELOPEN\n'A' OPEN /\n/\nDATES~\n1 FEB 2020 /\n/\n"}}},
    });
    EXPECT_TRUE(m_log.Empty()) << m_log.Texts().front();
}

TEST_F(MergeFilesTest, IncludesAreMatchedByNameAndMap)
{
    const Texts oldFiles = {{"T.DATA", "GRID\nINCLUDE~\n'A_1.INC' /\n" + includeB + "MULTZ\n1 /\n"},
                            {"A_1.INC", "MULTX\n1 /\nPERMX~\n1 /\n"},
                            {"B.INC", "PERMY~\n1 /\n"}};
    const Texts newFiles = {{"T.DATA", "GRID\n" + includeB + "INCLUDE~\n'A_2.INC' /\n"},
                            {"A_2.INC", "PERMX~\n1 /\n"},
                            {"B.INC", "PERMY~\n1 /\n"}};
    const std::string top = "GRID\n" + includeB + "MULTZ\n1 /\nINCLUDE~\n'A_2.INC' /\n";
    const Texts expected = {{"T.DATA", top}, {"A_2.INC", "MULTX\n1 /\nPERMX~\n1 /\n"}};
    Check({{"through the map", oldFiles, newFiles, expected, {{"A_1.INC", "A_2.INC"}}},
           {"quoted in the map", oldFiles, newFiles, expected, {{"'A_1.INC'", "'A_2.INC'"}}},
           {"not in the map: its file is another",
            oldFiles,
            newFiles,
            {{"T.DATA", "GRID\nMULTX\n1 /\n" + includeB + "MULTZ\n1 /\nINCLUDE~\n'A_2.INC' /\n"},
             {"A_2.INC", "PERMX~\n1 /\n"}},
            {}}});
}

TEST_F(MergeFilesTest, AUsersIncludeBringsItsFileAlong)
{
    const Texts oldFiles = {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\nINCLUDE\n'MINE.INC' /\n" + user + "OIL~\n"},
                            {"MINE.INC", "WATER\nWELLDIMS\n1 /\nINCLUDE\n'MORE.INC' /\n"},
                            {"MORE.INC", "GAS\n"}};
    TwoDecks decks(oldFiles, {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\nOIL~\n"}});
    EXPECT_TRUE(decks.MergeUserKeywords());
    EXPECT_EQ(decks.Text("T.DATA"), "RUNSPEC\nTABDIMS~\n1 /\nINCLUDE\n'MINE.INC' /\n" + user + "OIL~\n");
    const std::string oldName = decks.Dir().Path("old/MINE.INC");
    const std::string newName = decks.Dir().Path("new/MINE.INC");
    EXPECT_EQ(m_log.CountOf("The INCLUDE path \"MINE.INC\", which resolves to \"" + oldName +
                            "\" in the source, finds no file \"" + newName + "\" in the target."),
              1);
    ASSERT_EQ(decks.report.entries.size(), 3u);
    EXPECT_EQ(decks.report.entries[0].action, MergeReport::Action::Missing);
    EXPECT_EQ(decks.report.entries[0].text, oldName);
}

/// The user's INCLUDE is the last of its file: what follows stands in the including file.
TEST_F(MergeFilesTest, AUsersIncludeMayEndItsFile)
{
    const std::string include = "INCLUDE\n'MINE.INC' /\n";
    Check(
        {{"",
          {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + user + "GAS~\n"},
           {"A.INC", "TABDIMS~\n1 /\n" + include},
           {"MINE.INC", "WATER\n"}},
          {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\nGAS~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}, {"MINE.INC", "WATER\n"}},
          {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + user + "GAS~\n"}, {"A.INC", "TABDIMS~\n1 /\n" + include}}}});
}

TEST_F(MergeFilesTest, ExcludedFilesArePassedOver)
{
    const Texts oldFiles = {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + user},
                            {"A.INC", "WATER\n--@@@TABDIMS~\n--@@@1 /\n"}};
    const Texts newFiles = {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}};
    TwoDecks decks(oldFiles, newFiles);
    // A file of the same name does, whosever it is.
    decks.New().GetDeckKeywords()->GetFiles();
    for (IKeywordFile* file : decks.New().GetDeckKeywords()->GetFiles()) {
        if (file->GetFileName().GetFileName() == "A.INC") decks.excluded.insert(file);
    }
    EXPECT_TRUE(decks.MergeUserKeywords());
    EXPECT_EQ(decks.Text("A.INC"), newFiles[1].second);
    EXPECT_EQ(decks.Text("T.DATA"), "RUNSPEC\n" + includeA + "OIL~\n" + user);
}

TEST_F(MergeFilesTest, SharedFilesArePassedOver)
{
    const TwoDecks place({{"T.DATA", "OIL\n"}}, {{"T.DATA", "OIL\n"}});
    place.Dir().Write("SHARED.INC", "WATER\nTABDIMS\n1 /\n");
    const std::string include = WithTags("INCLUDE~\n") + "'" + place.Dir().Path("SHARED.INC") + "' /\n";
    TwoDecks decks({{"T.DATA", "RUNSPEC\n" + include + user}}, {{"T.DATA", "RUNSPEC\n" + include}});
    EXPECT_TRUE(decks.MergeUserKeywords());
    ASSERT_EQ(decks.report.entries.size(), 1u);
    EXPECT_EQ(decks.report.entries[0].name, "EQLDIMS");
    // A deck into itself is nothing.
    std::set<KeywordIterator> replaced;
    IDeckKeywordsEditor& editor = *decks.Manager().GetEditor(&decks.Old());
    EXPECT_TRUE(editor.MergeUserKeywords(decks.Old(), replaced, {}, {}));
    EXPECT_FALSE(decks.Old().GetDeckKeywords()->GetDataFile()->IsModified());
}

TEST_F(MergeFilesTest, AFileThatIsIncludedTwiceGivesItsKeywordsOnce)
{
    Check({{"in the source",
            {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + includeA}, {"A.INC", "TABDIMS~\n1 /\n" + user}},
            {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n"}, {"A.INC", "TABDIMS~\n1 /\n"}},
            {{"A.INC", "TABDIMS~\n1 /\n" + user}}},
           {"in both",
            {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + includeA}, {"A.INC", "TABDIMS~\n1 /\n" + user}},
            {{"T.DATA", "RUNSPEC\n" + includeA + "OIL~\n" + includeA}, {"A.INC", "TABDIMS~\n1 /\n"}},
            {{"A.INC", "TABDIMS~\n1 /\n" + user}}}});
}

TEST_F(MergeFilesTest, ReadOnlyFilesAreChangedByAMergeAndByNothingElse)
{
    TwoDecks decks({{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n" + user}}, {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n"}});
    decks.New().GetDeckKeywords()->GetDataFile()->SetReadOnly();
    EXPECT_TRUE(decks.MergeUserKeywords());
    EXPECT_EQ(decks.Text("T.DATA"), "RUNSPEC\nTABDIMS~\n1 /\n" + user);
    IDeckKeywordsEditor& editor = *decks.Manager().GetEditor(&decks.New());
    EXPECT_FALSE(editor.RemoveKeyword(decks.New().GetDeckKeywords()->Begin()));
    editor.Discard();
    EXPECT_EQ(decks.Text("T.DATA"), "RUNSPEC\nTABDIMS~\n1 /\n");
}

TEST_F(MergeFilesTest, AMergeThatFailsLeavesTheFlagCleared)
{
    TwoDecks decks({{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n" + user}}, {{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n"}});
    decks.Old().GetDeckKeywords()->Begin();
    std::filesystem::remove(decks.Dir().Path("old/T.DATA"));
    EXPECT_THROW(decks.MergeUserKeywords(), DeckManagerException);
    decks.New().GetDeckKeywords()->GetDataFile()->SetReadOnly();
    EXPECT_FALSE(decks.Manager().GetEditor(&decks.New())->RemoveKeyword(decks.New().GetDeckKeywords()->Begin()));
}

/// What can't be read of either deck would be missing in the merged one, or come to stand in another place.
TEST_F(MergeFilesTest, AMergeThatCannotReadIsRefused)
{
    using TestSupport::FailingFileSystem;
    const std::string dates = "SCHEDULE\nDATES~\n1 JAN 2020 /\n/\n";
    const Texts oldFiles{
        {"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n-- of the user\n" + user + includeA + dates + "WELTARG\n'P' ORAT 1 /\n/\n"},
        {"A.INC", "DIMENS~\n1 1 1 /\n-- above\nOIL~\n-- below\nGAS\n"}};
    const Texts newFiles{{"T.DATA", "RUNSPEC\nTABDIMS~\n1 /\n" + includeA + dates + "TSTEP~\n1 /\n"},
                         {"A.INC", "DIMENS~\n1 1 1 /\nOIL~\n"}};
    const auto merge = [](TwoDecks& decks) {
        const bool isWhole = decks.MergeUserKeywords();
        decks.MergeComments();
        return isWhole;
    };
    TwoDecks whole(oldFiles, newFiles);
    EXPECT_TRUE(merge(whole));
    const std::vector<std::string> merged = whole.TextsOf(newFiles);
    for (const auto call : {FailingFileSystem::Call::Open, FailingFileSystem::Call::Read}) {
        int n = 1;
        for (bool failed = true; failed; ++n) {
            SCOPED_TRACE(n);
            TwoDecks decks(oldFiles, newFiles);
            FailingFileSystem files;
            files.FailAt(n, {call}, EIO);
            const bool isRefused = !TestSupport::Thrown<DeckManagerException>([&] { merge(decks); }).empty();
            failed = files.HasFailed();
            EXPECT_EQ(isRefused, failed);
            files.Pass();
            if (failed) {
                decks.Manager().GetEditor(&decks.New())->Discard();
                decks.Manager().RefreshDeck("Old");
                decks.Manager().RefreshDeck("New");
                EXPECT_TRUE(merge(decks));
            }
            EXPECT_EQ(decks.TextsOf(newFiles), merged);
        }
        EXPECT_GT(n, 40);
    }
}

/// Scopes nest without a bound.
TEST_F(MergeFilesTest, DeepScopesNeedNoDeepRecursion)
{
    std::string heads;
    std::string ends;
    for (int i = 0; i < 2000; ++i) {
        heads += "SKIP~\n";
        ends += "ENDSKIP~\n";
    }
    Check({{"",
            {{"T.DATA", "RUNSPEC\n" + heads + user + ends}},
            {{"T.DATA", "RUNSPEC\n" + heads + ends}},
            {{"T.DATA", "RUNSPEC\n" + heads + user + ends}}}});
}

} // namespace
