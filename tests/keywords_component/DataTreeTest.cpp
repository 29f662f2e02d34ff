// Records, maps, raw text and slots.
#include <gtest/gtest.h>

#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/UnsetValue.h>

#include "tests/keywords_component/SmallTree.h"

namespace Tarn::Fjel::Core::Keywords {
namespace {

// Kinds in an order that would leave gaps if values lay as they come.
constexpr const char* allKinds = R"({"type": "record", "items": [
    {"name": "YES", "type": "yesNo"}, {"name": "NUMBER", "type": "real"},
    {"name": "CHOICE", "type": "option", "options": ["A", "B"]}, {"name": "WORD", "type": "string"},
    {"name": "COUNT", "type": "integer"}, {"type": "list", "name": "LIST", "element": {"type": "integer"}},
    {"name": "ALSO", "type": "yesNo"}, {"type": "record", "name": "INNER", "items": [
        {"name": "LINE", "type": "restOfLine"}]}]})";

void FillAllKinds(IKeywordRecordData& record)
{
    record.GetItem(0).SetYesNo(1);
    record.GetItem(1).SetReal(2.5);
    record.GetItem(2).SetOption(1);
    record.GetItem(3).SetString("a string that is longer than fifteen characters");
    record.GetItem(4).SetInteger(-7);
    const std::int64_t added = AsList(record.GetContainer(5)).AppendIntegerRun(3, 4);
    ASSERT_EQ(added, 4);
    record.GetItem(6).SetYesNo(0);
    AsRecord(record.GetContainer(7)).GetItem(0).SetString("");
}

void ExpectAllKinds(const IKeywordRecordData& record)
{
    EXPECT_EQ(record.GetItem(0).GetYesNo(), 1);
    EXPECT_EQ(record.GetItem(1).GetReal(), 2.5);
    EXPECT_EQ(record.GetItem(2).GetOption(), 1);
    EXPECT_EQ(record.GetItem(3).GetString(), "a string that is longer than fifteen characters");
    EXPECT_EQ(record.GetItem(4).GetInteger(), -7);
    EXPECT_EQ(AsList(record.GetContainer(5)).Integers().size(), 4u);
    EXPECT_EQ(record.GetItem(6).GetYesNo(), 0);
    const ConstSlot line = AsRecord(record.GetContainer(7)).GetItem(0);
    EXPECT_TRUE(line.HasValue() && line.GetString().empty());
}

TEST(RecordData, BeginsUnsetWithItsContainersInPlace)
{
    SmallTree tree(allKinds);
    const IKeywordRecordData& record = tree.Record();
    ASSERT_EQ(record.GetItemCount(), 8);
    EXPECT_EQ(record.GetItem(0).GetYesNo(), -1);
    EXPECT_EQ(record.GetItem(1).GetReal(), 2.2250738585072014e-308);
    EXPECT_EQ(record.GetItem(2).GetOption(), -2147483647 - 1);
    EXPECT_EQ(record.GetItem(4).GetInteger(), UnsetValue::Integer);
    for (int i = 0; i < 8; ++i) {
        const bool isContainer = i == 5 || i == 7;
        EXPECT_EQ(record.GetItem(i).HasValue(), isContainer) << i;
        EXPECT_EQ(record.GetItem(i).GetContainer() != nullptr, isContainer) << i;
        EXPECT_EQ(record.GetItem(i).GetMD(), record.GetRecordMD()->GetItemMD(i));
    }
    EXPECT_FALSE(AsRecord(record.GetContainer(7)).GetItem(0).HasValue());
}

TEST(RecordData, HoldsEachKindAndCopiesAll)
{
    SmallTree tree(allKinds);
    FillAllKinds(tree.Record());
    ExpectAllKinds(tree.Record());

    const std::unique_ptr<IKeywordData> copy = tree.Data().CloneSafely();
    ExpectAllKinds(AsRecord(std::as_const(*copy)));
    for (int i = 0; i < 7; ++i) {
        if (i != 5) tree.Record().GetItem(i).SetUnset();
    }
    AsList(tree.Record().GetContainer(5)).RemoveElement(0);
    AsRecord(tree.Record().GetContainer(7)).GetItem(0).SetUnset();
    ExpectAllKinds(AsRecord(std::as_const(*copy)));
    EXPECT_FALSE(tree.Record().GetItem(3).HasValue());

    for (int i = 0; i < 8; ++i)
        tree.Record().GetItem(i).Assign(AsRecord(*copy).GetItem(i));
    ExpectAllKinds(tree.Record());
}

TEST(RecordData, ComparesItsItemsBitForBit)
{
    // Without containers the numbers are compared in one go.
    for (const char* shape : {allKinds, R"({"type": "record", "items": [
             {"name": "YES", "type": "yesNo"}, {"name": "NUMBER", "type": "real"},
             {"name": "CHOICE", "type": "option", "options": ["A", "B"]}, {"name": "WORD", "type": "string"},
             {"name": "COUNT", "type": "integer"}]})"})
    {
        SmallTree tree(shape);
        const IKeywordRecordData& record = tree.Record();
        const auto differs = [&record, &tree](const auto& change) {
            const std::unique_ptr<IKeywordData> copy = tree.Data().CloneSafely();
            EXPECT_TRUE(record.HasSameItems(AsRecord(*copy)));
            change(AsRecord(*copy));
            return !record.HasSameItems(AsRecord(*copy)) && !AsRecord(*copy).HasSameItems(record);
        };
        tree.Record().GetItem(1).SetReal(0.0);
        tree.Record().GetItem(3).SetString("a string that is longer than fifteen characters");
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(0).SetYesNo(0); }));
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(1).SetReal(-0.0); }));
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(2).SetOption(0); }));
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(3).SetString("a string"); }));
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(4).SetInteger(1); }));
        tree.Record().GetItem(3).SetUnset();
        EXPECT_TRUE(differs([](IKeywordRecordData& other) { other.GetItem(3).SetString(""); }));
    }
    SmallTree tree(allKinds);
    const std::unique_ptr<IKeywordData> copy = tree.Data().CloneSafely();
    FillAllKinds(AsRecord(*copy));
    for (int i = 0; i < 5; ++i)
        AsRecord(*copy).GetItem(i).SetUnset();
    AsRecord(*copy).GetItem(6).SetUnset();
    EXPECT_TRUE(tree.Record().HasSameItems(AsRecord(*copy))) << "containers aside";
    EXPECT_FALSE(tree.Record().HasSameItems(SmallTree(allKinds).Record())) << "of another table";
}

TEST(RecordData, RefusesWhatIsNotThere)
{
    SmallTree tree(allKinds);
    IKeywordRecordData& record = tree.Record();
    EXPECT_THROW(record.GetItem(8), KeywordException);
    EXPECT_THROW(record.GetItem(-1), KeywordException);
    EXPECT_THROW(record.GetItem(1).SetInteger(1), KeywordException);
    EXPECT_THROW(record.GetItem(4).GetOption(), KeywordException);
    EXPECT_THROW(record.GetItem(4).GetString(), KeywordException);
    EXPECT_THROW(record.GetItem(5).GetReal(), KeywordException);
    EXPECT_THROW(record.GetItem(5).SetUnset(), KeywordException);
    EXPECT_THROW(record.GetContainer(0), KeywordException);
    EXPECT_THROW(record.GetItem(1).Assign(record.GetItem(3)), KeywordException);
    EXPECT_THROW(record.GetItem(5).Assign(record.GetItem(7)), KeywordException);
    EXPECT_THROW(ConstSlot().HasValue(), KeywordException);
    EXPECT_THROW(Slot().SetReal(1), KeywordException);
    EXPECT_THROW(record.GetRecordMD()->GetItemMD(8), KeywordException);
}

TEST(RecordData, StringsOfEveryLength)
{
    SmallTree tree(allKinds);
    Slot word = tree.Record().GetItem(3);
    for (std::size_t length = 0; length < 40; ++length) {
        const std::string text(length, static_cast<char>('a' + length % 26));
        word.SetString(text);
        EXPECT_EQ(word.GetString(), text);
        word.SetString(word.GetString().substr(length / 2)); // a part of itself
        EXPECT_EQ(word.GetString(), text.substr(length / 2));
    }
    word.SetString(std::string("\0x", 2));
    EXPECT_EQ(word.GetString().size(), 2u);
}

TEST(MapData, EntriesByPlaceAndByName)
{
    SmallTree tree(R"({"type": "map", "entries": ["PRES", {"name": "FIP", "aliases": ["FLUIDIP"],
        "valueNames": {"2": ["FIPRESV"], "3": []}}, {"name": "WELL*", "simulators": ["S300"]}, "WELLS"]})");
    auto& map = static_cast<IKeywordMapData&>(tree.Data());
    ASSERT_EQ(map.GetEntryCount(), 4);
    EXPECT_EQ(map.GetEntryValue(3), UnsetValue::MapEntry);
    map.SetEntry("pres", 4);
    map.SetEntry("FLUIDIP", 0);
    map.SetEntry("WELLX", 5);
    map.SetEntry("WELLS", 6);
    map.SetEntry("NOTHING", 1);
    EXPECT_EQ(map.GetEntryValue(0), 4);
    EXPECT_EQ(map.GetEntryValue(1), 0);
    EXPECT_EQ(map.GetEntryValue(2), 5);
    EXPECT_EQ(map.GetEntryValue(3), 6);
    map.SetEntry("FIPRESV", 1);
    EXPECT_EQ(map.GetEntryValue(1), 2);
    EXPECT_EQ(map.GetEntryMD(1)->GetEntryNames(2).front(), "FIPRESV");
    EXPECT_EQ(map.GetEntryMD(1)->GetEntryNames(1).front(), "FIP");
    EXPECT_TRUE(map.GetEntryMD(1)->GetEntryNames(3).empty());
    EXPECT_FALSE(map.GetEntryMD(2)->IsSupportedBy(SimulatorType::S100));
    EXPECT_THROW(map.GetEntryValue(4), KeywordException);
    EXPECT_THROW(map.SetEntry(-1, 0), KeywordException);
    EXPECT_THROW(Slot(map, 0).HasValue(), KeywordException);
    EXPECT_EQ(static_cast<IKeywordMapData&>(*map.CloneSafely()).GetEntryValue(3), 6);
}

TEST(RawTextData, KeepsTextAndCopies)
{
    SmallTree tree(R"({"type": "rawText"})");
    auto& text = static_cast<IKeywordRawTextData&>(tree.Data());
    EXPECT_TRUE(text.GetText().empty());
    text.SetText("one\r\ntwo");
    const auto copy = text.CloneSafely();
    text.SetText("");
    EXPECT_EQ(static_cast<IKeywordRawTextData&>(*copy).GetText(), "one\r\ntwo");
}

TEST(DataFactory, NoDataForAKeywordWithoutMetadata)
{
    const auto& table = *KeywordSyntaxTable::Instance(false, true);
    EXPECT_EQ(KeywordDataFactory::Instance().ConstructSafely(table.FindSyntax("ENDSKIP", true)), nullptr);
    EXPECT_EQ(KeywordDataFactory::Instance().ConstructSafely(nullptr), nullptr);
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
