#include "tests/deckman/Program.h"

/// What the documents show is what a user sees who types it in the folder of the example decks.

namespace DeckmanTests {

namespace {

const std::string indent = "    ";
const std::string prompt = indent + "$ ";

class Documents : public testing::Test
{
protected:
    Documents()
    {
        constexpr auto all = std::filesystem::copy_options::recursive;
        std::filesystem::copy(DECK_SOURCE_DIR "/examples/decks", m_folder.Path(), all);
        std::filesystem::copy(DECK_SOURCE_DIR "/examples/many", m_folder.Path("many"), all);
        m_run.directory = m_folder.Path();
        // Commands that others start find it, too.
        const std::string program = std::filesystem::path(DECKMAN_PROGRAM).parent_path();
        m_run.environment = {{"PATH", program + ":" + std::getenv("PATH")}};
    }

    /// Standard output and error in one, as on a terminal.
    Outcome Type(const std::string& command) const { return Shell("{ " + command + "\n} 2>&1", m_run); }

    /// Plays the commands of a page that stand behind a prompt, and compares what they print with the page. Returns how
    /// many there are.
    int Play(const std::string& name) const
    {
        std::ifstream page(DECK_SOURCE_DIR "/docs/" + name);
        std::string written;
        std::string played;
        int commands = 0;
        bool isInSession = false;
        for (std::string line; std::getline(page, line);) {
            if (line.starts_with(prompt)) {
                isInSession = true;
                written += line + "\n";
                played += line + "\n";
                ++commands;
                std::istringstream lines(Type(line.substr(prompt.size())).out);
                for (std::string shown; std::getline(lines, shown);)
                    played += shown.empty() ? "" : indent + shown + "\n";
            } else if (line.starts_with(indent) && isInSession) {
                written += line + "\n";
            } else if (line.starts_with("## ")) {
                isInSession = false;
            }
        }
        EXPECT_EQ(played, written) << name;
        return commands;
    }

    TempDir m_folder;
    Launch m_run;
};

} // namespace

TEST_F(Documents, TheSessionsAreTrue)
{
    EXPECT_GE(Play("deckman.md"), 30);
}

TEST_F(Documents, ManyDecksTakeTheWaysThatThePageShows)
{
    EXPECT_GE(Play("many-decks.md"), 10);
}

/// Those that are shown without what they print.
TEST_F(Documents, TheOtherCommandsRun)
{
    int commands = 0;
    for (const char* name : {"/README.md", "/docs/deckman.md"}) {
        std::ifstream page(std::string(DECK_SOURCE_DIR) + name);
        const std::string beginning = (name == std::string("/README.md") ? prompt : indent) + "deckman ";
        for (std::string line; std::getline(page, line);) {
            if (!line.starts_with(beginning)) continue;
            ++commands;
            const Outcome outcome = Type(line.substr(line.find("deckman ")));
            EXPECT_EQ(outcome.status, 0) << name << ": " << line << "\n" << outcome.out;
        }
    }
    EXPECT_GE(commands, 15);
}

} // namespace DeckmanTests
