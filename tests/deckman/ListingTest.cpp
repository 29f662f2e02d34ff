#include <map>

#include "tests/deckman/Program.h"
#include <tarn/service/Strings.h>

/// What the verbs say about one deck must agree, with each other and with the bytes of the files.

namespace DeckmanTests {

namespace {

using Json = nlohmann::ordered_json;

struct ExampleDeck
{
    const char* folder;
    const char* file;
};

class OnExample : public testing::TestWithParam<ExampleDeck>
{
protected:
    std::string Folder() const { return std::string(DECK_SOURCE_DIR "/examples/decks/") + GetParam().folder; }
    Outcome Ask(std::vector<std::string> arguments) const
    {
        arguments.insert(arguments.begin() + 1, Folder() + "/" + GetParam().file);
        return Deckman(arguments);
    }
    std::vector<Json> Rows(std::vector<std::string> arguments) const
    {
        arguments.push_back("--json");
        return JsonLines(Ask(arguments).out);
    }
    std::string TextOf(const std::string& file) const
    {
        const TempDir copy;
        std::filesystem::copy_file(Folder() + "/" + file, copy.Path("file"));
        return copy.Read("file");
    }
};

} // namespace

TEST_P(OnExample, ExtentsTileEachFileAndBeginWithTheName)
{
    std::map<std::string, std::string> texts;
    std::map<std::string, long long> next; // where the keyword behind must begin
    const std::vector<Json> rows = Rows({"ls", "--all"});
    ASSERT_GT(rows.size(), 50u);
    for (const Json& row : rows) {
        const std::string file = row.at("file");
        if (!texts.contains(file)) texts[file] = TextOf(file);
        const std::string& text = texts[file];
        const long long position = row.at("position"), size = row.at("size");
        if (next.contains(file)) {
            EXPECT_EQ(position, next[file]) << row;
        }
        next[file] = position + size;

        std::string_view line = std::string_view(text).substr(static_cast<std::size_t>(position));
        if (row.at("suppressed")) {
            ASSERT_TRUE(line.starts_with("--@@@")) << row;
            line.remove_prefix(5);
        }
        const std::string name = row.at("name");
        EXPECT_EQ(Tarn::Fjel::Core::Service::Uppercased(line.substr(0, name.size())), name) << row;
        EXPECT_EQ(row.at("line"), 1 + std::count(text.begin(), text.begin() + position, '\n')) << row;
    }
    for (const auto& [file, end] : next)
        EXPECT_EQ(end, static_cast<long long>(texts[file].size())) << file;
}

TEST_P(OnExample, FiltersPickFromTheFullListing)
{
    const std::vector<Json> all = Rows({"ls"});
    const auto where = [&all](auto condition) {
        std::vector<Json> rows;
        std::copy_if(all.begin(), all.end(), std::back_inserter(rows), condition);
        return rows;
    };
    EXPECT_EQ(Rows({"ls", "--section", "Schedule"}),
              where([](const Json& r) { return r.at("section") == "SCHEDULE"; }));
    EXPECT_EQ(Rows({"ls", "--name", "dates"}), where([](const Json& r) { return r.at("name") == "DATES"; }));
    EXPECT_EQ(Rows({"ls", "--user"}), where([](const Json& r) { return !r.at("generated"); }));
    EXPECT_EQ(Rows({"ls", "--generated"}), where([](const Json& r) { return r.at("generated"); }));
    const std::vector<Json> more = Rows({"ls", "--all"});
    ASSERT_GT(more.size(), all.size());
    EXPECT_TRUE(std::equal(all.begin(), all.end(), more.begin()));
}

TEST_P(OnExample, EveryFormOfAPlaceLeadsToTheSameText)
{
    const std::vector<Json> rows = Rows({"ls"});
    std::map<std::string, int> seen, seenInSection;
    for (std::size_t i = 0; i < rows.size(); i += 17) {
        const Json& row = rows[i];
        const std::string name = row.at("name");
        const auto earlier = [&](bool sameSection) {
            return 1 + std::count_if(rows.begin(), rows.begin() + static_cast<std::ptrdiff_t>(i), [&](const Json& r) {
                       return r.at("name") == name && (!sameSection || r.at("section") == row.at("section"));
                   });
        };
        const std::string text = Ask({"show", "@" + std::to_string(i + 1)}).out;
        ASSERT_FALSE(text.empty()) << row;
        EXPECT_LE(text.size(), row.at("size").get<std::size_t>()) << row;
        EXPECT_EQ(Ask({"show", name + "#" + std::to_string(earlier(false))}).out, text) << row;
        EXPECT_EQ(
            Ask({"show", row.at("section").get<std::string>() + "/" + name + "#" + std::to_string(earlier(true))}).out,
            text)
            << row;
        const auto lines = std::count(text.begin(), text.end(), '\n');
        EXPECT_EQ(Ask({"show",
                       row.at("file").get<std::string>() + ":" + std::to_string(row.at("line").get<int>() + lines - 1)})
                      .out,
                  text)
            << row;
        const std::vector<Json> one = Rows({"show", "@" + std::to_string(i + 1)});
        ASSERT_EQ(one.size(), 1u);
        EXPECT_EQ(one[0].at("text"), text);
    }
}

TEST_P(OnExample, SectionsAndScopesAgreeWithTheListing)
{
    const std::vector<Json> rows = Rows({"ls"});
    const auto row = [&rows](int index) -> const Json& { return rows.at(static_cast<std::size_t>(index) - 1); };
    const int deckEnd = static_cast<int>(rows.size()) + 1;

    int next = 1;
    for (const Json& section : Rows({"sections"})) {
        EXPECT_EQ(section.at("begin"), next);
        next = section.at("end");
        for (int i = section.at("begin"); i < next; ++i)
            EXPECT_EQ(row(i).at("section"), section.at("section")) << row(i);
    }
    EXPECT_EQ(next, deckEnd);

    std::vector<int> open;
    for (const Json& scope : Rows({"scopes"})) {
        const int begin = scope.at("begin"), end = scope.at("end");
        EXPECT_EQ(row(begin).at("name"), scope.at("head"));
        EXPECT_LT(begin, end);
        EXPECT_LE(end, deckEnd);
        while (!open.empty() && open.back() <= begin)
            open.pop_back();
        EXPECT_EQ(scope.at("depth"), open.size()) << scope;
        if (!open.empty()) {
            EXPECT_LE(end, open.back()) << scope << ": scopes lie inside each other";
        }
        open.push_back(end);
    }
}

TEST_P(OnExample, TreeCountsWhatTheListingLists)
{
    std::map<std::string, int> listed;
    for (const Json& row : Rows({"ls", "--all"}))
        ++listed[row.at("file").get<std::string>()];
    std::map<std::string, int> counted;
    const auto count = [&](const auto& self, const Json& file) -> void {
        EXPECT_TRUE(file.at("exists")) << file.at("file");
        const std::string name = file.at("file");
        EXPECT_EQ(file.at("bytes"), TextOf(name).size()) << name;
        if (const Json& keywords = file.at("keywords"); keywords.is_number() && keywords > 0)
            counted[name] += keywords.get<int>();
        for (const Json& included : file.at("includes"))
            self(self, included);
    };
    count(count, Rows({"tree"}).at(0));
    EXPECT_EQ(counted, listed);
}

INSTANTIATE_TEST_SUITE_P(Decks, OnExample,
                         testing::Values(ExampleDeck{"single", "SKERROW.DATA"}, ExampleDeck{"field", "FIELD.DATA"}),
                         [](const auto& test) { return std::string(test.param.folder); });

TEST(Listing, FindLooksAtAKeywordsOwnDataOnly)
{
    const TempDir folder;
    folder.Write("TOP.DATA",
                 "RUNSPEC\n\nDIMENS     -- word in the line\n-- word in the data\n 1 2 3 /\n\n-- word above\nOIL\n"
                 "-- word below a keyword without data\n\nGRID\n--@@@NTG\n--@@@ 6*0.9 /\n\nPORO\n 6*0.2 /\n");
    const Launch run{folder.Path()};
    const auto found = [&](const std::string& expression) {
        std::vector<std::string> names;
        for (const Json& row : JsonLines(Deckman({"find", "TOP.DATA", expression, "--json"}, run).out))
            names.push_back(row.at("name"));
        return names;
    };
    using testing::ElementsAre;
    EXPECT_THAT(found("word"), ElementsAre("DIMENS"));
    EXPECT_THAT(found("in the line"), ElementsAre());
    EXPECT_THAT(found("^ 6\\*0"), ElementsAre("NTG", "PORO"));
    EXPECT_THAT(found("data\n 1 2 3 /$"), ElementsAre("DIMENS"));
    EXPECT_THAT(found("(?i)WORD IN"), ElementsAre("DIMENS"));
}

TEST(Listing, FilesOutsideTheFolderOfTheDeckShowTheirFullName)
{
    const TempDir folder;
    folder.Write("decks/a/TOP.DATA", "RUNSPEC\nINCLUDE\n '../shared/x.inc' /\nINCLUDE\n 'sub/y.inc' /\n");
    folder.Write("decks/shared/x.inc", "OIL\n");
    folder.Write("decks/a/sub/y.inc", "GAS\n");
    const Launch run{folder.Path("decks")};
    const auto rows = JsonLines(Deckman({"ls", "a/TOP.DATA", "--json"}, run).out);
    ASSERT_EQ(rows.size(), 5u);
    EXPECT_EQ(rows[2].at("file"), folder.Path("decks/shared/x.inc"));
    EXPECT_EQ(rows[4].at("file"), "sub/y.inc");
    for (const char* place : {"x.inc:1", "shared/x.inc:1", "a/../shared/x.inc:1"})
        EXPECT_EQ(Deckman({"show", "a/TOP.DATA", place}, run).out, "OIL\n") << place;
}

TEST(Listing, ScopesMayNestDeeply)
{
    const TempDir folder;
    std::string text = "RUNSPEC\n";
    for (int i = 0; i < 10000; ++i)
        text += "SKIP\n";
    folder.Write("TOP.DATA", text + "OIL\n");
    const auto scopes = JsonLines(Deckman({"scopes", "TOP.DATA", "--json"}, {folder.Path()}).out);
    ASSERT_EQ(scopes.size(), 10001u);
    EXPECT_EQ(scopes[10000].dump(), R"({"head":"SKIP","begin":10001,"end":10003,"depth":10000})");
}

} // namespace DeckmanTests
