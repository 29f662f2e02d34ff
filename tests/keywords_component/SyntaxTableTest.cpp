// Look-ups by name: exact names, several definitions of a name, names that share a stem.
#include <algorithm>
#include <random>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/keywords/KeywordSyntaxUtils.h>

namespace Tarn::Fjel::Core::Keywords {
namespace {

using testing::ElementsAre;

std::vector<std::string> Found(const IKeywordSyntaxTable& table, std::string_view name)
{
    std::vector<std::string> summaries;
    for (const IKeywordSyntax* syntax : table.FindSyntaxes(name))
        summaries.emplace_back(syntax->GetSummary());
    return summaries;
}

std::unique_ptr<KeywordSyntaxTable> SmallTable()
{
    return KeywordSyntaxTable::FromText(R"([
        {"name": "TRAC*",  "sections": ["PROPS"], "summary": "t*"},
        {"name": "TVDP",   "sections": ["PROPS"], "summary": "exact"},
        {"name": "TVDP*",  "sections": ["SOLUTION"], "summary": "long stem"},
        {"name": "TV*",    "sections": ["GRID"], "summary": "short stem", "confidence": "low"},
        {"name": "EQUIL",  "sections": ["SOLUTION"], "simulators": ["S300"], "summary": "first"},
        {"name": "EQUIL",  "sections": ["PROPS", "SOLUTION"], "summary": "second"},
        {"name": "OTHER",  "names": ["EQUIL"], "sections": ["GRID"], "summary": "third"},
        {"name": "A",      "sections": "all", "summary": "one letter"}])");
}

TEST(SyntaxTable, ExactNamesComeFirstThenStems)
{
    const auto table = SmallTable();
    EXPECT_THAT(Found(*table, "EQUIL"), ElementsAre("first", "second", "third"));
    EXPECT_THAT(Found(*table, "TVDP"), ElementsAre("exact", "long stem", "short stem"));
    EXPECT_THAT(Found(*table, "TVDPFCO2"), ElementsAre("long stem", "short stem"));
    EXPECT_THAT(Found(*table, "TVX"), ElementsAre("short stem"));
    EXPECT_THAT(Found(*table, "TV"), ElementsAre("short stem"));
    EXPECT_THAT(Found(*table, "A"), ElementsAre("one letter"));
    for (const char* miss : {"", "T", "EQUI", "EQUILX", "equil", "B", "123", "\xC3\x85", " EQUIL"}) {
        EXPECT_TRUE(table->FindSyntaxes(miss).empty()) << miss;
    }
    EXPECT_TRUE(table->FindSyntax("TVDPFCO2", true)->KeepsLongName());
    EXPECT_FALSE(table->FindSyntax("TVDP", true)->KeepsLongName());
    EXPECT_TRUE(table->FindSyntax("TVX", true)->IsNameValidForSimulator(SimulatorType::S100, "TVX"));
}

TEST(SyntaxTable, SectionAndSimulatorChooseAmongDefinitions)
{
    const auto table = SmallTable();
    const auto summary = [](const IKeywordSyntax* syntax) { return syntax ? std::string(syntax->GetSummary()) : ""; };
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", true)), "first");
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", false)), "second");
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", SectionType::SOLUTION, true)), "first");
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", SectionType::SOLUTION, false)), "second");
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", SectionType::PROPS, true)), "second");
    EXPECT_EQ(summary(table->FindSyntax("EQUIL", SectionType::GRID, true)), "third");
    EXPECT_EQ(table->FindSyntax("EQUIL", SectionType::SCHEDULE, true), nullptr);
    EXPECT_EQ(table->FindSyntax("EQUIL", SectionType::None, true), nullptr);
}

TEST(SyntaxTable, AgreesWithAWalkThroughAllNames)
{
    const KeywordSyntaxTable& table = *KeywordSyntaxTable::Instance(false, true);
    std::vector<std::string> words;
    for (const IKeywordSyntax* syntax : table.GetSyntaxes()) {
        for (const std::string& name : syntax->GetNames()) {
            words.push_back(name);
            words.push_back(name.substr(0, name.size() - 1));
            words.push_back(name + "X");
        }
    }
    std::mt19937 random(7);
    for (int i = 0; i < 2000; ++i) {
        std::string word(1 + random() % 9, ' ');
        for (char& c : word)
            c = "ABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789"[random() % 36];
        words.push_back(word);
    }
    for (const std::string& word : words) {
        std::vector<const IKeywordSyntax*> expected;
        for (const bool patterns : {false, true}) {
            for (const IKeywordSyntax* syntax : table.GetSyntaxes()) {
                for (const std::string& name : syntax->GetNames()) {
                    const std::string stem = name.substr(0, name.size() - 1);
                    const bool fits =
                        name.ends_with('*') ? patterns && word.starts_with(stem) : !patterns && name == word;
                    if (fits) expected.push_back(syntax);
                }
            }
        }
        const SyntaxList found = table.FindSyntaxes(word);
        EXPECT_TRUE(std::equal(found.begin(), found.end(), expected.begin(), expected.end())) << word;
    }
}

TEST(SyntaxTable, TablesOfTheBuiltInCatalogueAreKept)
{
    EXPECT_EQ(KeywordSyntaxTable::Instance(false, true), KeywordSyntaxTable::Instance(false, true));
    EXPECT_NE(KeywordSyntaxTable::Instance(false, true), KeywordSyntaxTable::Instance(true, true));
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(true, false)->GetSyntaxes()) {
        EXPECT_NE(syntax->GetConfidence(), "low") << syntax->GetName();
        EXPECT_FALSE(syntax->GetName().ends_with('*')) << syntax->GetName();
    }
}

TEST(SyntaxTable, SkipKeywordsAreToldByName)
{
    const KeywordSyntaxTable& table = *KeywordSyntaxTable::Instance(false, true);
    const IKeywordSyntax* skip100 = table.FindSyntax("SKIP100", true);
    EXPECT_TRUE(KeywordSyntaxUtils::IsSKIP100(skip100));
    EXPECT_FALSE(KeywordSyntaxUtils::IsSKIP(skip100) || KeywordSyntaxUtils::IsSKIP300(skip100));
    EXPECT_TRUE(KeywordSyntaxUtils::IsENDSKIP(table.FindSyntax("ENDSKIP", true)));
    EXPECT_FALSE(KeywordSyntaxUtils::IsSKIP(nullptr));
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
