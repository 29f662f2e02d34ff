#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

using nlohmann::ordered_json;

std::vector<ordered_json> Definitions(std::vector<std::string> arguments)
{
    arguments.insert(arguments.begin(), "syntax");
    arguments.emplace_back("--json");
    const Outcome outcome = Deckman(arguments);
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.err, IsEmpty());
    return JsonLines(outcome.out);
}

bool Holds(const ordered_json& array, std::string_view text)
{
    return std::find(array.begin(), array.end(), text) != array.end();
}

} // namespace

TEST(Syntax, OneKeyword)
{
    const auto found = Definitions({"welspecs"});
    ASSERT_EQ(found.size(), 1u);
    const ordered_json& wells = found[0];
    EXPECT_EQ(wells.at("name"), "WELSPECS");
    EXPECT_EQ(wells.at("kind"), "ordinary");
    EXPECT_EQ(wells.at("sections").dump(), R"(["SCHEDULE"])");
    EXPECT_EQ(wells.at("simulators").dump(), R"(["100","300"])");
    EXPECT_TRUE(wells.at("scope").is_null());
    EXPECT_EQ(wells.at("identity"), true);
    const ordered_json& record = wells.at("data").at("element");
    EXPECT_EQ(record.at("identity").dump(), R"(["WELL"])");
    EXPECT_EQ(record.at("items").at(4).at("unit"), "length");

    const Outcome shown = Deckman({"syntax", "WELSPECS"});
    EXPECT_THAT(shown.out, testing::ContainsRegex("0 +WELL +string +identity"));
    EXPECT_THAT(shown.out, HasSubstr("\nexample:\nWELSPECS\n"));
}

TEST(Syntax, ShapesOfEveryKind)
{
    const std::pair<const char*, const char*> cases[] = {
        {"SWOF", R"("size":"RUNSPEC:TABDIMS[0]")"},
        {"RPTSCHED", R"("type":"map")"},
        {"TITLE", R"("type":"restOfLine")"},
        {"EQUALS", R"("type":"record")"},
        {"ACTIONX", R"("closingKeyword":"ENDACTIO")"},
        {"RUNSPEC", R"("kind":"section")"},
        {"OIL", R"("data":null)"},
        {"WCONPROD", R"("options":["OPEN")"},
    };
    for (const auto& [name, part] : cases)
        EXPECT_THAT(Deckman({"syntax", name, "--json"}).out, HasSubstr(part)) << name;
    // A family that the user names.
    EXPECT_EQ(Definitions({"FIPABC"}).at(0).at("name"), "FIP*");
}

TEST(Syntax, Listings)
{
    const auto all = Definitions({});
    EXPECT_GT(all.size(), 1500u);
    const std::string table = Deckman({"syntax"}).out;
    EXPECT_EQ(static_cast<std::size_t>(std::count(table.begin(), table.end(), '\n')), all.size() + 1);
    for (const auto& definition : Definitions({"--section", "optimize", "--simulator", "300"})) {
        EXPECT_TRUE(Holds(definition.at("sections"), "OPTIMIZE")) << definition.at("name");
        EXPECT_TRUE(Holds(definition.at("simulators"), "300")) << definition.at("name");
    }
    const auto several = std::find_if(all.begin(), all.end(), [&all](const auto& first) {
        return std::count_if(all.begin(), all.end(),
                             [&](const auto& other) { return other.at("name") == first.at("name"); }) > 1;
    });
    ASSERT_NE(several, all.end());
    EXPECT_GT(Definitions({several->at("name")}).size(), 1u);

    const ordered_json counts = Definitions({"--stats"}).at(0);
    EXPECT_EQ(counts.at("definitions"), all.size());
    EXPECT_EQ(counts.at("kind").at("section"), 9);
    EXPECT_EQ(counts.at("section").size(), 9u);
    long long definitions = 0;
    for (const auto& count : counts.at("confidence"))
        definitions += count.get<long long>();
    EXPECT_EQ(definitions, counts.at("definitions"));
}

TEST(Syntax, WhatIsNotThere)
{
    const struct
    {
        std::vector<std::string> arguments;
        const char* message;
        int status = 1;
    } cases[] = {
        {{"syntax", "WELSPEX"}, "deckman: error: The catalogue knows no keyword WELSPEX. Nearest: WELSPECS"},
        {{"syntax", "WELSPECS", "--section", "GRID"}, "WELSPECS is known, but not in that section"},
        {{"syntax", "WELSPECS", "--stats"}, "excludes", 2},
        {{"syntax", "--section", "GRIDS"}, "'GRIDS' is not a section. Nearest: GRID.", 2},
    };
    for (const auto& c : cases) {
        const Outcome outcome = Deckman(c.arguments);
        EXPECT_EQ(outcome.status, c.status);
        EXPECT_THAT(outcome.err, HasSubstr(c.message));
        EXPECT_THAT(outcome.out, IsEmpty());
    }
}

} // namespace DeckmanTests
