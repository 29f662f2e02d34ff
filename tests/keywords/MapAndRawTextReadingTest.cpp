#include <tarn/keywords/IKeywordMapDataVariables.h>

#include "tests/keywords/DataReading.h"

using namespace DataReading;

TEST(MapReading, ByNameOrByPosition)
{
    const char* shape = R"({"type": "map", "entries": ["A", "B", "C"]})";
    const std::string unbalanced = "3 Unbalanced quote while reading keyword data: '";
    const std::vector<ReadCase> cases = {
        {"A=3 b C= /", "{A=3 B=1 C=1}"},
        {"A=7x Q=1 9A B=-2 / C", "{A=7 B=-2}"},
        {"A = 2 B= -3 C =4 /", "{A=2 B=-3 C=4}"},
        {"A = B=2 C = /", "{A=1 B=2 C=1}"},
        {"A =\n2 B\n= 3 /", "{A=1 B=1}"}, // a value stands on the line of its name
        {"1* A=2 /", "{}"},               // the first token says that entries stand by position
        {"A 2* C=4 1* /", "{A=1 C=4}"},
        {"1 0 2 /", "{A=1 C=2}"},
        {"1 x\n2 /", "{A=1 C=2}"},
        {"1* 5 /", "{B=5}"},
        {"2*1 /", "{A=1 B=1}"},
        {"999999999*1 /", "{A=1 B=1 C=1}"},
        {"1 2 3 4 5", "{A=1 B=2 C=3}"},
        {"/", "{}"},
        {"'", "{}", {unbalanced, unbalanced}},
        {"A=99999999999", "{A=2147483647}"},
    };
    ExpectReads(shape, cases);
}

TEST(MapReading, WhatIsPassedOverInSilenceIsNotComplete)
{
    const char* shape = R"({"type": "map", "entries": ["A", "B", "C"]})";
    for (const char* text : {"A=3 b C= /", "A = 3 B= 2 C =1 /", "A B=0 1* /", "1* 5 /", "1 2 3 2* /"})
        EXPECT_TRUE(ReadShape(shape, text).isComplete) << text;
    for (const char* text : {"A Q /", "A 9 /", "A=7x /", "1 x /", "1 2 3 4 /", "4*1 /"}) {
        const Outcome outcome = ReadShape(shape, text);
        EXPECT_FALSE(outcome.isComplete) << text;
        EXPECT_TRUE(outcome.messages.empty()) << text;
    }
}

TEST(MapReading, References)
{
    const TableInForce table(TableOf(R"({"type": "map", "entries": ["A", "B"]})"));
    Outcome outcome = ReadText(LooseKeyword(table.Syntax("X")), "A=$V a=$W B=2 /", true);
    EXPECT_EQ(outcome.tree, "{B=2}");
    auto* const variables =
        dynamic_cast<Core::Keywords::IKeywordMapDataVariables*>(outcome.variables.GetDataVariables(outcome.data.get()));
    ASSERT_NE(variables, nullptr);
    EXPECT_EQ(variables->GetVariableKeys(), (std::list<std::string>{"A", "a"}));
    EXPECT_EQ(variables->GetVariable("a").GetString(), "$W");
}

TEST(RawTextReading, EndsAheadOfItsTerminator)
{
    const char* shape = R"({"type": "rawText", "terminator": "ENDTEXT"})";
    const std::string text = "  One -- two\r\n\r\nthree ENDTEXT\r\nENDTEXT x\r\n-- of the next\r\n";
    const Outcome outcome = ReadShape(shape, text);
    EXPECT_EQ(outcome.tree, "'  One -- two||three ENDTEXT|'");
    EXPECT_EQ(outcome.takenEnd, static_cast<long long>(text.find("-- of")));

    const Outcome empty = ReadShape(shape, "ENDTEXT\n-- of the next\n");
    EXPECT_EQ(empty.tree, "''");
    EXPECT_EQ(empty.takenEnd, 8);

    const Outcome open = ReadShape(shape, "one\ntwo\n");
    EXPECT_EQ(open.tree, "'one|two|'");
    EXPECT_EQ(open.takenEnd, 8);

    const TableInForce table(R"([{"name": "X", "sections": "all", "data": {"type": "rawText"}}])");
    const std::string file = "X\n-- Generated\n\n one\n\ntwo\nNEXT\n";
    EXPECT_EQ(ReadExtent(LooseKeyword(table.Syntax("X")), file, 0, static_cast<long long>(file.find("NEXT"))).tree,
              "'| one||two|'");
}
