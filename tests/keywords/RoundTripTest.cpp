// Trees of every keyword of the catalogue, filled at random, are written, read and compared.

#include <functional>

#include <rapidcheck/gtest.h>

#include "tests/keywords/TreeMaker.h"

namespace {

using namespace TreeMaking;

/// Empty when the tree comes back as it was, and its text too.
std::string Difference(const Keywords::IKeywordSyntax& syntax, const IKeywordData& tree,
                       const DeckManager::Context& context)
{
    const DataReading::LooseKeyword keyword(&syntax);
    const std::string text = WriteTree(tree);
    const std::string before = DataReading::Describe(tree);
    const auto outcome = DataReading::ReadText(keyword, text, false, context);
    std::string said;
    for (const std::string& message : outcome.messages)
        said += message + "\n";
    for (std::size_t at = 0; at < text.size(); at = std::min(text.find('\n', at), text.size() - 1) + 1) {
        if (Service::IsAlpha(text[at]) && syntax.GetName() != "TITLE" && syntax.GetName() != "PYINPUT")
            return syntax.GetName() + ": a data line could be taken for a keyword\n" + text;
    }
    if (outcome.tree != before || !said.empty())
        return fmt::format("{}\n{}\nwas  {}\nis   {}\n{}", syntax.GetName(), text, before, outcome.tree, said);
    const std::string again = WriteTree(*outcome.data);
    if (again != text) return fmt::format("{}\nwas\n{}\nis\n{}", syntax.GetName(), text, again);
    return {};
}

TEST(RoundTrip, EveryKeywordOfTheCatalogue)
{
    const SizedDeck deck;
    const auto syntaxes = DeckManager::Environment::Instance().GetSyntaxTable()->GetSyntaxes();
    EXPECT_TRUE(rc::check("what is written reads as it was", [&] {
        const auto seed = *rc::gen::arbitrary<std::uint64_t>();
        std::size_t index = seed % 16;
        for (const auto* const syntax : syntaxes) {
            if (!syntax->GetMetaData() || ++index % 16 != 0) continue;
            const auto tree = Keywords::KeywordDataFactory::Instance().ConstructSafely(*syntax);
            TreeMaker(seed + index, deck.GetContext()).Fill(*syntax, *tree);
            const std::string difference = Difference(*syntax, *tree, deck.GetContext());
            if (!difference.empty()) RC_FAIL(difference);
        }
    }));
}

/// What a tree of one item of a list, or of one item of a record, comes back as.
std::string Returned(std::string_view shape, const std::function<void(IKeywordData&)>& fill)
{
    const DataReading::TableInForce table(DataReading::TableOf(shape));
    const DataReading::LooseKeyword keyword(table.Syntax("X"));
    const auto tree = Keywords::KeywordDataFactory::Instance().ConstructSafely(keyword.GetSyntax());
    fill(*tree);
    return DataReading::ReadText(keyword, WriteTree(*tree)).tree;
}

TEST(RoundTrip, WhatTheFormatItselfLoses)
{
    const TestSupport::CleanEnvironment clean;
    const std::string strings = R"({"type": "list", "element": {"type": "string"}})";
    const auto string = [](const char* text) {
        return [text](IKeywordData& data) { static_cast<IKeywordListData&>(data).AppendStringRun(text, 1); };
    };
    EXPECT_EQ(Returned(strings, string("O'NEIL")), "[ONEIL]"); // a quote inside a string
    EXPECT_EQ(Returned(strings, string("A B'C D")), "[A B C D]");
    EXPECT_EQ(Returned(strings, string("/")), "[]");    // ends a list in quotes too
    EXPECT_EQ(Returned(strings, string("1*")), "[]");   // a default there in quotes too
    EXPECT_EQ(Returned(strings, string(" A ")), "[A]"); // blanks at the ends of a string
    EXPECT_EQ(Returned(R"({"type": "list", "element": {"type": "real"}})",
                       [](IKeywordData& data) {
                           static_cast<IKeywordListData&>(data).AppendRealRun(0.1 + 0.2, 1); // more than 15 digits
                       }),
              "[0.3]");
    EXPECT_EQ(Returned(R"({"type": "map", "entries": ["A", "B"]})",
                       [](IKeywordData& data) {
                           static_cast<Keywords::IKeywordMapData&>(data).SetEntry(0, 0); // a zero in a map
                       }),
              "{}");
    const std::string restOfLine =
        R"({"type": "record", "termination": "none", "items": [{"name": "T", "type": "restOfLine"}]})";
    EXPECT_EQ(Returned(restOfLine, [](IKeywordData&) {}), "{1*}"); // no default is known there
}

} // namespace
