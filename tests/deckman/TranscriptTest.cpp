#include "tests/deckman/Program.h"

/// The program's output on the example decks, pinned. Each file of golden/ is a transcript: commands, as typed in
/// examples/decks/, and behind each what it printed ("! " ahead of what went to standard error, the exit status unless
/// it is 0). To add a case, add its command and write all transcripts anew:
///
///     UPDATE_GOLDEN=1 build/bin/test_deckman --gtest_filter='*Transcript*'

namespace DeckmanTests {

namespace {

namespace fs = std::filesystem;

const std::string prompt = "$ ";
const fs::path goldenFolder = DECK_SOURCE_DIR "/tests/deckman/golden";

std::vector<std::string> Transcripts()
{
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(goldenFolder))
        names.push_back(entry.path().stem().string());
    std::sort(names.begin(), names.end());
    return names;
}

std::string ReadAll(const fs::path& path)
{
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

std::string Played(const std::string& command)
{
    const Outcome outcome = Shell(command, {DECK_SOURCE_DIR "/examples/decks"});
    std::string text = prompt + command + "\n" + outcome.out;
    std::istringstream errors(outcome.err);
    for (std::string line; std::getline(errors, line);)
        text += "! " + line + "\n";
    if (outcome.status != 0) text += "[exit " + std::to_string(outcome.status) + "]\n";
    return text;
}

class Transcript : public testing::TestWithParam<std::string>
{
};

} // namespace

TEST_P(Transcript, IsWhatTheProgramPrints)
{
    const fs::path path = goldenFolder / (GetParam() + ".txt");
    const std::string expected = ReadAll(path);
    std::string actual;
    std::istringstream lines(expected);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with(prompt)) actual += Played(line.substr(prompt.size()));
    }
    if (std::getenv("UPDATE_GOLDEN") != nullptr)
        std::ofstream(path, std::ios::binary) << actual;
    else
        EXPECT_EQ(actual, expected);
}

INSTANTIATE_TEST_SUITE_P(Golden, Transcript, testing::ValuesIn(Transcripts()),
                         [](const auto& test) { return test.param; });

} // namespace DeckmanTests
