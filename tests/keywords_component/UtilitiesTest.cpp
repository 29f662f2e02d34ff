// What is asked of certain keywords' data, and the walks over data and metadata.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <tarn/keywords/ConstMetaDataIterator.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/DataIterator.h>
#include <tarn/keywords/KeywordIdentity.h>
#include <tarn/keywords/KeywordRecordMDUtil.h>
#include <tarn/keywords/VariablesString.h>

#include "tests/keywords_component/SmallTree.h"

namespace Tarn::Fjel::Core::Keywords {
namespace {

using Service::Time;
using testing::ElementsAre;

std::unique_ptr<IKeywordData> DataOf(const char* keyword)
{
    const IKeywordSyntax* syntax = KeywordSyntaxTable::Instance(false, true)->FindSyntax(keyword, true);
    return KeywordDataFactory::Instance().ConstructSafely(syntax);
}

TEST(Variables, References)
{
    for (const char* text :
         {"$A", "${A1}", "x$_", "1 2 $POROSITY /", "-- no\n $A", "'-- $A'", "--@@@$A", "$$A", "a-$B"}) {
        EXPECT_TRUE(VariablesString::ContainsVariables(text)) << text;
    }
    for (const char* text :
         {"", "A", "$", "$1", "${", "${A", "${}", "${1}", "$ A", "-- $A", "1 / -- $A\n2 / --$B", "A--$B", "--@@@-- $A"})
    {
        EXPECT_FALSE(VariablesString::ContainsVariables(text)) << text;
    }
    EXPECT_EQ(VariablesString("$A").GetString(), "$A");
}

TEST(Paths, AliasesAtTheHead)
{
    PathAliases aliases;
    aliases.AddAlias("Grid", "/data/grids");
    aliases.AddAlias("$SUB", "$GRID\\sub");
    aliases.AddAlias("EMPTY", "");
    aliases.AddAlias("A", "$B/x");
    aliases.AddAlias("B", "$A");
    struct Case
    {
        std::string in;
        std::string out;
        bool resolved;
    };
    const Case cases[] = {
        {"$GRID/a.grdecl", "/data/grids/a.grdecl", true},
        {"$grid", "/data/grids", true},
        {"$sub/b.inc", "/data/grids\\sub/b.inc", true},
        {"$EMPTY/b", "/b", true},
        {"dir/$GRID/a", "dir/$GRID/a", true},
        {"", "", true},
        {"$GRIDS/a", "$GRIDS/a", false},
        {"$", "$", false},
        {"$A/a", "$A/a", false},
    };
    for (const Case& c : cases) {
        std::string out = "old";
        EXPECT_EQ(aliases.resolvePathAliases(c.in, out), c.resolved) << c.in;
        EXPECT_EQ(out, c.out);
    }
    std::string same = "$GRID/x";
    EXPECT_TRUE(aliases.resolvePathAliases(same, same));
    EXPECT_EQ(same, "/data/grids/x");
    aliases.AddAlias("GRID", "/new");
    EXPECT_TRUE(aliases.resolvePathAliases("$SUB", same));
    EXPECT_EQ(same, "/new\\sub");
}

TEST(DataAccess, FileNamesAndAliases)
{
    const auto include = DataOf("INCLUDE");
    EXPECT_EQ(DataAccessUtils::GetINCLUDEFileName(include.get()), std::nullopt);
    DataAccessUtils::SetINCLUDEFileName(include.get(), "Sub/a.inc");
    EXPECT_EQ(DataAccessUtils::GetINCLUDEFileName(include.get()), "Sub/a.inc");
    EXPECT_EQ(DataAccessUtils::GetGDFILEName(nullptr), std::nullopt);
    const auto grid = DataOf("ORDGRID");
    DataAccessUtils::SetORDGRIDName(grid.get(), "");
    EXPECT_EQ(DataAccessUtils::GetORDGRIDName(grid.get()), ""); // set to nothing is not unset
    DataAccessUtils::SetGDFILEName(DataOf("PORO").get(), "x");

    const auto paths = DataOf("PATHS");
    for (const char* alias : {"ONE", "", "TWO"}) {
        AsList(*paths).AddElement();
        auto& row = AsRecord(AsList(*paths).GetContainer(AsList(*paths).GetElementCount() - 1));
        if (*alias) row.GetItem(0).SetString(alias);
        row.GetItem(1).SetString("/path");
    }
    PathAliases aliases;
    DataAccessUtils::AddPathAliases(paths.get(), aliases);
    std::string out;
    EXPECT_TRUE(aliases.resolvePathAliases("$TWO/a", out));
    EXPECT_EQ(out, "/path/a");
}

void SetDate(IKeywordData& data, int day, int month, int year, const char* time = nullptr)
{
    IKeywordRecordData& record = AsRecord(data);
    record.GetItem(0).SetInteger(day);
    record.GetItem(1).SetOption(month);
    record.GetItem(2).SetInteger(year);
    if (time) record.GetItem(3).SetString(time);
}

TEST(DataAccess, TimesOfScheduleKeywords)
{
    const auto start = DataOf("START");
    EXPECT_FALSE(DataAccessUtils::GetTimeFromSTART(start.get()).IsDef());
    SetDate(*start, 1, 6, 2020);
    EXPECT_EQ(DataAccessUtils::GetTimeFromSTART(start.get()), Time(2020, 7, 1));
    struct Case
    {
        const char* text;
        Time time;
    };
    for (const Case& c : {Case{"12:30:15.25", Time(2020, 7, 1, 12, 30, 15, 250)}, Case{"6", Time(2020, 7, 1, 6)},
                          Case{"06:05", Time(2020, 7, 1, 6, 5)}, Case{"00:00:00.00049", Time(2020, 7, 1)}})
    {
        SetDate(*start, 1, 6, 2020, c.text);
        EXPECT_EQ(DataAccessUtils::GetTimeFromSTART(start.get()), c.time) << c.text;
    }
    for (const char* text : {"", "noon", "12:", "12:30x", "25:00"}) {
        SetDate(*start, 1, 6, 2020, text);
        EXPECT_FALSE(DataAccessUtils::GetTimeFromSTART(start.get()).IsDef()) << text;
    }
    SetDate(*start, 30, 1, 2020, "0");
    EXPECT_FALSE(DataAccessUtils::GetTimeFromSTART(start.get()).IsDef());

    const Time begin(2020, 1, 1);
    const Time current(2020, 3, 1);
    const auto dates = DataOf("DATES");
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, dates.get()), current);
    for (const int day : {1, 15, 99}) {
        AsList(*dates).AddElement();
        SetDate(AsList(*dates).GetContainer(AsList(*dates).GetElementCount() - 1), day, 3, 2020);
    }
    const std::vector<Time> times = DataAccessUtils::GetTimesFromDATES(dates.get());
    ASSERT_EQ(times.size(), 3u);
    EXPECT_TRUE(times[0] == Time(2020, 4, 1) && times[1] == Time(2020, 4, 15) && !times[2].IsDef());
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, dates.get()), times[1]);

    const auto steps = DataOf("TSTEP");
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, steps.get()), current);
    AsList(*steps).AppendRealRun(0.1, 10);
    AsList(*steps).AddElement();
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, steps.get()), Time(2020, 3, 2));
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::HOUR, steps.get()), Time(2020, 3, 1, 1));
    const auto time = DataOf("TIME");
    AsList(*time).AppendReals(std::vector<double>{10, 31});
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, time.get()), Time(2020, 2, 1));
    EXPECT_EQ(DataAccessUtils::AdvanceTime(begin, current, Service::DAY, nullptr), current);
}

TEST(Identity, ComparesTheItemsThatTellKeywordsApart)
{
    const auto wells = [](std::initializer_list<const char*> names) {
        auto data = DataOf("WELSPECS");
        for (const char* name : names) {
            AsList(*data).AddElement();
            if (*name)
                AsRecord(AsList(*data).GetContainer(AsList(*data).GetElementCount() - 1)).GetItem(0).SetString(name);
        }
        return data;
    };
    const KeywordIdentity identity(*wells({"P1", "P2"}));
    const auto twin = wells({"p1", "P2"});
    AsRecord(AsList(*twin).GetContainer(0)).GetItem(1).SetString("GROUP"); // no part of the identity
    EXPECT_TRUE(identity.Compare(*twin));
    EXPECT_FALSE(identity.Compare(*wells({"P2", "P1"})));
    EXPECT_FALSE(identity.Compare(*wells({"P1"})));
    EXPECT_FALSE(identity.Compare(*wells({"P1", "P2", "P3"})));
    EXPECT_FALSE(identity.Compare(*wells({"P1", ""})));
    EXPECT_FALSE(identity.Compare(nullptr));
    EXPECT_TRUE(KeywordIdentity(*wells({""})).Compare(*wells({""})));

    // A lift table's number stands in a record within the record.
    const auto table = DataOf("VFPPROD");
    const auto other = DataOf("VFPPROD");
    AsRecord(AsRecord(*table).GetContainer(0)).GetItem(0).SetInteger(1);
    AsRecord(AsRecord(*other).GetContainer(0)).GetItem(0).SetInteger(2);
    EXPECT_FALSE(KeywordIdentity(table.get()).Compare(other.get()));
    AsRecord(AsRecord(*other).GetContainer(0)).GetItem(0).SetInteger(1);
    EXPECT_TRUE(KeywordIdentity(table.get()).Compare(other.get()));
}

constexpr const char* mixed = R"({"type": "list", "element": {"type": "record", "items": [
    {"name": "NAME", "type": "string"}, {"name": "X", "type": "real"},
    {"type": "list", "name": "WORDS", "element": {"type": "string"}},
    {"type": "list", "name": "NUMBERS", "element": {"type": "real"}}]}})";

TEST(Iterators, VisitValuesInDeckOrder)
{
    SmallTree tree(mixed);
    EXPECT_TRUE(DataIterator(tree.Data()).AtEnd());
    for (const char* name : {"a", "b"}) {
        tree.List().AddElement();
        auto& record = AsRecord(tree.List().GetContainer(tree.List().GetElementCount() - 1));
        record.GetItem(0).SetString(name);
        AsList(record.GetContainer(2)).AppendStringRun(std::string(name) + "w", 2);
        AsList(record.GetContainer(3)).AppendRealRun(1, 3);
    }
    std::vector<std::string> words;
    for (DataIterator it(tree.Data(), MDType::String); !it.AtEnd(); it.Next()) {
        words.emplace_back(it.GetSlot().GetString());
        EXPECT_EQ(it.GetItemMD()->GetType(), MDType::String);
        it.GetSlot().SetString("new");
    }
    EXPECT_THAT(words, ElementsAre("a", "aw", "aw", "b", "bw", "bw"));
    int count = 0;
    for (DataIterator it(tree.Data()); !it.AtEnd(); it.Next())
        ++count;
    EXPECT_EQ(count, 2 * (2 + 2 + 3));

    std::vector<MDType> kinds;
    for (ConstMetaDataIterator it(tree.Data().GetMetaData()); !it.AtEnd(); ++it)
        kinds.push_back((*it)->GetType());
    EXPECT_THAT(kinds, ElementsAre(MDType::List, MDType::Record, MDType::String, MDType::Real, MDType::List,
                                   MDType::String, MDType::List, MDType::Real));
    EXPECT_TRUE(ConstMetaDataIterator(nullptr).AtEnd());
}

TEST(Iterators, VisitSharedElementsOnceAndChangeThemForAll)
{
    SmallTree tree(R"({"type": "list", "element": {"type": "list", "element": {"type": "record", "items": [
        {"name": "NAME", "type": "string"}]}}})");
    for (int i = 0; i < 3; ++i)
        tree.List().AddElement();
    auto& first = AsList(tree.List().GetContainer(0));
    first.AddElement();
    AsRecord(first.GetContainer(0)).GetItem(0).SetString("a");
    tree.List().SetElement(1, first);
    tree.List().SetElement(2, tree.List().GetContainer(1));
    int visits = 0;
    for (DataIterator it(tree.Data()); !it.AtEnd(); it.Next(), ++visits)
        it.GetSlot().SetString("A");
    EXPECT_EQ(visits, 1);
    const IKeywordListData& seen = tree.List();
    EXPECT_EQ(AsRecord(AsList(seen.GetContainer(2)).GetContainer(0)).GetItem(0).GetString(), "A");
}

TEST(RecordMetadata, Questions)
{
    struct Case
    {
        const char* items;
        bool allNumeric;
        bool hasString;
        bool hasContainer;
    };
    const Case cases[] = {
        {R"({"name":"A","type":"integer"},{"name":"B","type":"real"})", true, false, false},
        {R"({"name":"A","type":"real"},{"name":"B","type":"string"})", false, true, false},
        {R"({"name":"A","type":"restOfLine"})", false, true, false},
        {R"({"name":"A","type":"option","options":["X"]})", false, false, false},
        {R"({"name":"A","type":"yesNo"})", false, false, false},
        {R"({"name":"A","type":"real"},{"type":"list","element":{"type":"real"}})", true, false, true},
        {R"({"name":"A","type":"real"},{"type":"list","element":{"type":"string"}})", false, false, true},
        {"", true, false, false},
    };
    for (const Case& c : cases) {
        SmallTree tree(std::string(R"({"type": "record", "items": [)") + c.items + "]}");
        const IKeywordRecordMD& md = *tree.Record().GetRecordMD();
        EXPECT_EQ(KeywordRecordMDUtil::AllNumeric(md), c.allNumeric) << c.items;
        EXPECT_EQ(KeywordRecordMDUtil::HasStringType(md), c.hasString) << c.items;
        EXPECT_EQ(KeywordRecordMDUtil::HasNestedContainer(md), c.hasContainer) << c.items;
    }
}

} // namespace
} // namespace Tarn::Fjel::Core::Keywords
