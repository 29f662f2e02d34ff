#include <tarn/keywords/IKeywordMapDataVariables.h>
#include <tarn/keywords/IKeywordRecordDataVariables.h>
#include <tarn/keywords/KeywordException.h>

#include "tests/keywords/DataReading.h"

using namespace DataReading;
using Core::Keywords::KeywordException;
using Core::Keywords::VariablesString;

TEST(KeywordVariables, KeepTheLastTextOfAPlaceInOrder)
{
    const TableInForce table(R"([
        {"name": "L", "sections": "all", "data": {"type": "list", "element": {"type": "integer"}}},
        {"name": "M", "sections": "all", "data": {"type": "map", "entries": ["A"]}},
        {"name": "R", "sections": "all", "data": {"type": "record", "items": [{"name": "A", "type": "integer"}]}}])");
    const auto& factory = Core::Keywords::KeywordDataFactory::Instance();
    const auto list = factory.ConstructSafely(table.Syntax("L"));
    const auto map = factory.ConstructSafely(table.Syntax("M"));
    const auto record = factory.ConstructSafely(table.Syntax("R"));
    auto& listData = static_cast<Core::Keywords::IKeywordListData&>(*list);
    auto& mapData = static_cast<Core::Keywords::IKeywordMapData&>(*map);
    auto& recordData = static_cast<Core::Keywords::IKeywordRecordData&>(*record);

    DeckManager::KeywordVariables variables;
    EXPECT_FALSE(variables.HasVariables());
    EXPECT_EQ(variables.GetDataVariables(list.get()), nullptr);
    for (const int index : {5, 1, 3, 1})
        variables.SetListVariable(listData, index, VariablesString("$V" + std::to_string(index)));
    variables.SetListVariable(listData, 3, VariablesString("$LAST"));
    variables.SetMapVariable(mapData, "b", VariablesString("$B"));
    variables.SetMapVariable(mapData, "B", VariablesString("$C"));
    variables.SetRecordVariable(recordData, 2, VariablesString("$R"));
    EXPECT_TRUE(variables.HasVariables());

    auto* const ofList =
        dynamic_cast<Core::Keywords::IKeywordListDataVariables*>(variables.GetDataVariables(list.get()));
    ASSERT_NE(ofList, nullptr);
    EXPECT_EQ(ofList->GetVariableIndices(), (std::list<int>{1, 3, 5}));
    EXPECT_EQ(&ofList->GetVariableIndices(), &ofList->GetVariableIndices());
    EXPECT_EQ(ofList->GetVariable(3).GetString(), "$LAST");
    EXPECT_EQ(Thrown<KeywordException>([&] { ofList->GetVariable(2); }), "Variables are not set for the given index");

    // What a host is given, a table that it can't change, tells the same.
    const Core::Keywords::IKeywordVariables& asGiven = variables;
    EXPECT_EQ(asGiven.GetDataVariables(list.get()), ofList);
    const Core::Keywords::IKeywordListDataVariables& unchangeable = *ofList;
    EXPECT_EQ(unchangeable.GetVariableIndices(), (std::list<int>{1, 3, 5}));

    auto* const ofMap = dynamic_cast<Core::Keywords::IKeywordMapDataVariables*>(variables.GetDataVariables(map.get()));
    ASSERT_NE(ofMap, nullptr);
    EXPECT_EQ(ofMap->GetVariableKeys(), (std::list<std::string>{"B", "b"}));
    EXPECT_EQ(Thrown<KeywordException>([&] { ofMap->GetVariable("C"); }), "Variable are not set for the given key");

    auto* const ofRecord =
        dynamic_cast<Core::Keywords::IKeywordRecordDataVariables*>(variables.GetDataVariables(record.get()));
    ASSERT_NE(ofRecord, nullptr);
    EXPECT_EQ(Thrown<KeywordException>([&] { ofRecord->GetVariable(0); }), "Variable are not set for the given index");
    EXPECT_EQ(ofRecord->GetVariableIndices(), std::list<int>{2});

    // Whoever has references of one kind takes none of another.
    auto& recordAsList = reinterpret_cast<Core::Keywords::IKeywordListData&>(recordData); // never followed
    variables.SetListVariable(recordAsList, 7, VariablesString("$L"));
    EXPECT_EQ(variables.GetDataVariables(record.get()), ofRecord);
    EXPECT_EQ(ofRecord->GetVariableIndices(), std::list<int>{2});
    EXPECT_EQ(ofRecord->GetVariable(2).GetString(), "$R");
}
