// The built-in catalogue as a whole: its form, and that everything in it can be built.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <valijson/adapters/nlohmann_json_adapter.hpp>
#include <valijson/schema.hpp>
#include <valijson/schema_parser.hpp>
#include <valijson/validation_results.hpp>
#include <valijson/validator.hpp>

#include <tarn/keywords/ConstMetaDataIterator.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/Metadata.h>

namespace Tarn::Fjel::Core::Keywords {
namespace {

namespace fs = std::filesystem;

const KeywordSyntaxTable& Table()
{
    return *KeywordSyntaxTable::Instance(false, true);
}

nlohmann::json ReadJson(const fs::path& path)
{
    std::ifstream file(path);
    return nlohmann::json::parse(file);
}

std::vector<fs::path> CatalogueFiles()
{
    std::vector<fs::path> files;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(DECK_SOURCE_DIR) / "catalogue")) {
        if (entry.path().extension() == ".json" && entry.path().filename() != "schema.json") files.push_back(entry);
    }
    std::sort(files.begin(), files.end());
    return files;
}

TEST(Catalogue, FilesHaveTheFormOfTheSchema)
{
    const nlohmann::json schemaText = ReadJson(fs::path(DECK_SOURCE_DIR) / "catalogue" / "schema.json");
    valijson::Schema schema;
    valijson::SchemaParser parser;
    parser.populateSchema(valijson::adapters::NlohmannJsonAdapter(schemaText), schema);
    ASSERT_FALSE(CatalogueFiles().empty());
    for (const fs::path& path : CatalogueFiles()) {
        const nlohmann::json text = ReadJson(path);
        valijson::Validator validator;
        valijson::ValidationResults results;
        const bool valid = validator.validate(schema, valijson::adapters::NlohmannJsonAdapter(text), &results);
        valijson::ValidationResults::Error error;
        std::string problems;
        while (results.popError(error)) {
            for (const std::string& step : error.context)
                problems += step;
            problems += ": " + error.description + "\n";
        }
        EXPECT_TRUE(valid) << path << "\n" << problems;
    }
}

TEST(Catalogue, EveryKeywordCanBeBuilt)
{
    ASSERT_GT(Table().GetSyntaxes().size(), 30u);
    for (const IKeywordSyntax* syntax : Table().GetSyntaxes()) {
        SCOPED_TRACE(syntax->GetName());
        for (const std::string& name : syntax->GetNames()) {
            const SyntaxList found = Table().FindSyntaxes(name);
            EXPECT_NE(std::find(found.begin(), found.end(), syntax), found.end());
        }
        for (ConstMetaDataIterator it(syntax->GetMetaData()); !it.AtEnd(); it.Next()) {
            EXPECT_EQ(it.Get()->GetSyntax(), syntax);
        }
        const auto data = KeywordDataFactory::Instance().ConstructSafely(syntax);
        ASSERT_EQ(data != nullptr, syntax->GetMetaData() != nullptr);
        if (!data) continue;
        EXPECT_EQ(data->CloneSafely()->GetMetaData(), syntax->GetMetaData());
    }
}

TEST(Catalogue, ScopesAreClosedByWhatStandsInTheirSections)
{
    for (const IKeywordSyntax* syntax : Table().GetSyntaxes()) {
        SCOPED_TRACE(syntax->GetName());
        EXPECT_EQ(syntax->GetScopeEndSyntaxes().empty(), !syntax->IsScopeStart() || syntax->GetKind() == 5);
        if (const IKeywordSyntax* end = syntax->GetScopeEndSyntax()) {
            std::vector<SectionType> sections;
            syntax->GetValidSections(sections);
            for (const SectionType section : sections) {
                EXPECT_TRUE(end->IsValidForSection(section, SimulatorType::Any));
            }
        }
    }
}

TEST(Catalogue, OrderingRulesFormNoRingAndSpareWhatMustStandStill)
{
    std::set<std::string> closers;
    for (const IKeywordSyntax* syntax : Table().GetSyntaxes()) {
        for (const IKeywordSyntax* closer : syntax->GetScopeEndSyntaxes())
            closers.insert(closer->GetName());
    }
    for (int section = 0; section < SectionCount; ++section) {
        std::map<std::string, std::set<std::string>> waiting;
        for (const IKeywordSyntax* syntax : Table().GetSyntaxes()) {
            const auto& predecessors = syntax->GetPredecessors(static_cast<SectionType>(section));
            if (predecessors.empty()) continue;
            EXPECT_FALSE(syntax->IsScopeStart() || closers.count(syntax->GetName())) << syntax->GetName();
            EXPECT_TRUE(syntax->HasOrderingRules());
            waiting[syntax->GetName()].insert(predecessors.begin(), predecessors.end());
        }
        // Takes away, again and again, whatever waits for nothing that waits itself.
        for (bool changed = true; changed;) {
            changed = std::erase_if(waiting, [&](const auto& rule) {
                          return std::none_of(rule.second.begin(), rule.second.end(),
                                              [&](const std::string& name) { return waiting.count(name) != 0; });
                      }) != 0;
        }
        EXPECT_TRUE(waiting.empty()) << "a ring through " << waiting.begin()->first << " in section " << section;
    }
}

TEST(Catalogue, KindsOfTheKeywordsThatSteerTheReading)
{
    const std::map<std::string, int> kinds = {{"END", 0},     {"ENDINC", 1},  {"INCLUDE", 2},  {"PORO", 3},
                                              {"ENDSKIP", 4}, {"RUNSPEC", 5}, {"OPTIMIZE", 5}, {"SKIP", 3}};
    for (const auto& [name, kind] : kinds) {
        const IKeywordSyntax* syntax = Table().FindSyntax(name, true);
        ASSERT_NE(syntax, nullptr) << name;
        EXPECT_EQ(syntax->GetKind(), kind) << name;
        std::vector<SectionType> sections;
        syntax->GetValidSections(sections);
        EXPECT_EQ(sections.size(), name == "PORO" ? 1u : 9u) << name;
    }
    // What tells an opener of a skipped region is that the first keyword that closes it has kind 4.
    EXPECT_EQ(Table().FindSyntax("SKIP300", true)->GetScopeEndSyntaxes().front()->GetKind(), 4);
    const IKeywordSyntax* dates = Table().FindSyntax("DATES", true);
    EXPECT_NE(dates->GetScopeEndSyntaxes().front()->GetKind(), 4);
    EXPECT_EQ(dates->GetScopeEndSyntaxes().size(), 4u);
    EXPECT_EQ(dates->GetScopeEndSyntax(), nullptr);
    EXPECT_FALSE(Table().FindSyntax("TSTEP", true)->IsScopeStart());
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
