// Catalogues of a host's own: what a definition becomes, and what a broken one is told.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/keywords/Metadata.h>

#include "tests/support/Thrown.h"

namespace Tarn::Fjel::Core::Keywords {
namespace {

using testing::HasSubstr;

std::string ErrorOf(const std::string& json)
{
    return TestSupport::Thrown<KeywordException>([&] { KeywordSyntaxTable::FromText(json, "my.json"); });
}

std::string WithData(const std::string& data)
{
    return R"([{"name": "MYKEY", "sections": "all", "data": )" + data + "}]";
}

TEST(CatalogueLoader, BrokenDefinitionsAreToldWithFileKeywordAndField)
{
    const std::string item = R"({"type": "record", "items": [{"name": "A", )";
    struct Case
    {
        std::string json;
        std::string message;
    };
    const Case cases[] = {
        {R"([{"name": "mykey", "sections": "all"}])", "my.json: keyword mykey: field name: \"mykey\" is no name"},
        {R"([{"sections": "all"}])", "my.json: keyword number 1: field name:"},
        {R"([{"name": "MYKEY"}])", "my.json: keyword MYKEY: field sections: is missing"},
        {R"([{"name": "MYKEY", "sections": ["PROPS", "WELLS"]}])", "field sections: there is no section \"WELLS\""},
        {R"([{"name": "MYKEY", "sections": "all", "colour": 1}])", "field colour: is unknown here"},
        {R"([{"name": "MYKEY", "sections": "all", "simulators": ["S200"]}])", "field simulators: knows S100"},
        {R"([{"name": "MYKEY", "sections": "all", "scope": {"closedBy": ["NOKEY"]}}])", "scope.closedBy: no keyword"},
        {R"([{"name": "MYKEY", "sections": ["GRID"], "after": {"PROPS": ["X"]}}])", "after.PROPS: the keyword isn't"},
        {R"([{"name": "MYKEY", "sections": "all", "after": {"SCHEDULE": ["X"]}}])", "after.SCHEDULE: has no"},
        {R"([{"name": "AA", "sections": ["GRID"], "after": {"GRID": ["BB"]}},
             {"name": "BB", "sections": ["GRID"], "after": {"GRID": ["AA"]}}])",
         "section GRID form a ring"},
        {R"([{"name": "AA", "sections": "all"}, {"name": "AA", "sections": ["GRID"]}])", "already in my.json"},
        {WithData(R"({"type": "integer"})"), "my.json: keyword MYKEY: field data.type: must be record, list"},
        {WithData(R"({"type": "table"})"), "field data.type: must be one of record, list, map"},
        {WithData(R"({"type": "record", "items": [{"type": "real"}]})"), "field data.items[0].name: is missing"},
        {WithData(item + R"("type": "real", "default": "x"}]})"), "field data.items[0].default: must be a number"},
        {WithData(item + R"("type": "option", "options": ["ON"], "default": "OFF"}]})"), "must be one of the options"},
        {WithData(item + R"("type": "option", "options": ["ON", "ON"]}]})"), "options[1]: \"ON\" stands twice"},
        {WithData(item + R"("type": "integer", "format": "%s"}]})"), "data.items[0].format: \"%s\" is no printf"},
        {WithData(item + R"("type": "real", "format": "%g%n"}]})"), "is no printf format"},
        {WithData(item + R"("type": "string", "unit": "length"}]})"), "unit: doesn't belong to an item of this type"},
        {WithData(item + R"("type": "map", "entries": []}]})"), "field data.items[0].name: is unknown here"},
        {WithData(item + R"("type": "real"}], "identity": ["B"]})"), "field data.identity: the record has no item"},
        {WithData(R"({"use": "table"})"), "field data.use: the file has no shape \"table\""},
        {R"({"shapes": {"s": {"type": "list", "element": {"use": "s"}}},
             "keywords": [{"name": "MYKEY", "sections": "all", "data": {"use": "s"}}]})",
         "uses itself"},
        {"[{", "my.json: "},
        {"3", "my.json: must be an array of keywords"},
    };
    for (const Case& c : cases)
        EXPECT_THAT(ErrorOf(c.json), HasSubstr(c.message)) << c.json;
}

TEST(CatalogueLoader, FileThatCannotBeReadIsNamed)
{
    EXPECT_THROW(KeywordSyntaxTable::FromFile("/no/such/catalogue.json"), KeywordException);
}

TEST(CatalogueLoader, FieldsOfADefinitionReachSyntaxAndMetadata)
{
    const auto table = KeywordSyntaxTable::FromText(R"({
        "shapes": {"array": {"type": "list", "element": {"type": "real", "unit": "length"}, "elementsDefaultable": true}},
        "keywords": [
        {"name": "FIRST", "names": ["SECOND", {"name": "THIRD", "simulators": ["S300"]}],
         "sections": ["GRID", "EDIT"], "simulators": ["S100", "S300"], "summary": "One line.",
         "after": {"GRID": ["DIMENS"]}, "example": ["1 2 /", "/"], "confidence": "high",
         "data": {"type": "list", "element": {"type": "record", "termination": "eol", "identity": ["NAME"], "items": [
            {"name": "COUNT", "type": "integer", "default": {"S100": 3, "S300": 4}, "min": 1, "max": 9, "format": "%5d"},
            {"name": "NAME", "type": "string", "preservesCase": true, "maxLength": 8, "defaultable": true},
            {"name": "MODE", "type": "option", "options": ["ON", {"name": "OFF", "aliases": ["NONE"]}],
             "optionalOnRead": true, "optionalOnWrite": true},
            {"name": "FLAG", "type": "yesNo", "default": true}]}}},
        {"name": "ARRAY", "sections": "all", "data": {"use": "array", "unit": "pressure", "size": "12"}},
        {"name": "WORDS", "sections": "all", "data": {"type": "list", "termination": "none",
         "end": {"tokens": ["STOP"], "at": "number", "consume": true}, "startsOnNewLine": false,
         "element": {"type": "string", "allowsCommas": true}}},
        {"name": "TEXT", "sections": "all", "data": {"type": "rawText", "terminator": "ENDTEXT"}}]})");

    const IKeywordSyntax* first = table->FindSyntax("FIRST", true);
    ASSERT_NE(first, nullptr);
    EXPECT_EQ(table->FindSyntax("SECOND", true), first);
    EXPECT_TRUE(first->IsNameValidForSimulator(SimulatorType::S300, "THIRD"));
    EXPECT_FALSE(first->IsNameValidForSimulator(SimulatorType::S100, "THIRD"));
    EXPECT_TRUE(first->IsNameValidForSimulator(SimulatorType::Any, "THIRD"));
    EXPECT_FALSE(first->IsSupportedBy(SimulatorType::NoSuppression));
    EXPECT_TRUE(first->IsValidForSection(SectionType::EDIT, SimulatorType::S100));
    EXPECT_FALSE(first->IsValidForSection(SectionType::EDIT, SimulatorType::NoSuppression));
    EXPECT_FALSE(first->IsValidForSection(SectionType::None, SimulatorType::Any));
    EXPECT_EQ(first->GetSection(), SectionType::None);
    EXPECT_TRUE(first->GetPredecessors(SectionType::GRID).count("DIMENS"));
    EXPECT_TRUE(first->GetPredecessors(SectionType::EDIT).empty());
    EXPECT_TRUE(first->HasIdentity());
    EXPECT_EQ(first->GetExampleText(), "1 2 /\n/");

    const auto& record =
        static_cast<const IKeywordRecordMD&>(*static_cast<const IKeywordListMD*>(first->GetMetaData())->GetElementMD());
    EXPECT_EQ(record.GetTermination(), Termination::EndOfLine);
    EXPECT_EQ(record.FindItem("mode"), 2);
    EXPECT_EQ(record.GetIdentityItems().size(), 1u);
    const auto& count = static_cast<const IKeywordIntegerMD&>(*record.GetItemMD(0));
    EXPECT_EQ(count.GetMaxValue(), 9);
    EXPECT_STREQ(count.GetFormat(), "%5d");
    EXPECT_EQ(count.GetDefaultText(SimulatorType::S300), "4");
    EXPECT_FALSE(count.HasDefaultFor(SimulatorType::NoSuppression));
    EXPECT_TRUE(count.HasDefaultFor(SimulatorType::Any) && record.IsItemDefaultable(0));
    const auto& name = static_cast<const IKeywordStringMD&>(*record.GetItemMD(1));
    EXPECT_TRUE(name.PreservesCase() && !name.AllowsCommas() && record.IsItemDefaultable(1));
    EXPECT_FALSE(name.HasDefaultFor(SimulatorType::Any));
    ASSERT_NE(record.GetItemTraits(), nullptr);
    EXPECT_TRUE(record.GetItemTraits()->IsOptionalOnRead(2) && !record.GetItemTraits()->IsOptionalOnRead(1));
    EXPECT_EQ(static_cast<const IKeywordItemMD*>(record.GetItemMD(3))->GetDefaultText(SimulatorType::S100), "YES");

    const auto& mode = static_cast<const IKeywordOptionMD&>(*record.GetItemMD(2));
    std::string reason = "unchanged";
    EXPECT_EQ(mode.FindOption("none", reason), 1);
    EXPECT_EQ(mode.GetOptionIndex("NONE"), -1);
    EXPECT_EQ(reason, "unchanged");
    EXPECT_EQ(mode.FindOption("", reason), -1);
    EXPECT_EQ(reason, "Must be one of ON, OFF");

    const auto& array = *static_cast<const IKeywordListMD*>(table->FindSyntax("ARRAY", true)->GetMetaData());
    EXPECT_EQ(static_cast<const IKeywordItemMD*>(array.GetElementMD())->GetUnitDimension(), "pressure");
    EXPECT_EQ(*array.GetSizeExpression(), "12");
    EXPECT_TRUE(array.AllowsDefaultElements() && array.GetListEndDetector() == nullptr);
    EXPECT_EQ(array.StartsOnNewLine(), -1);

    const auto& words = *static_cast<const IKeywordListMD*>(table->FindSyntax("WORDS", true)->GetMetaData());
    bool consume = false;
    EXPECT_TRUE(words.GetListEndDetector()->IsEnd("stop", consume) && consume);
    EXPECT_TRUE(words.GetListEndDetector()->IsEnd("-.5", consume));
    EXPECT_FALSE(words.GetListEndDetector()->IsEnd("GO", consume) || consume);
    EXPECT_EQ(words.StartsOnNewLine(), 0);
    EXPECT_EQ(words.GetSizeExpression(), nullptr);

    std::string terminator;
    EXPECT_TRUE(static_cast<const IKeywordRawTextMD*>(table->FindSyntax("TEXT", true)->GetMetaData())
                    ->GetTerminator(terminator));
    EXPECT_EQ(terminator, "ENDTEXT");
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
