#include "output/Terminal.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Deckman::Terminal {

namespace {

constexpr int narrowest = 20;

winsize Size()
{
    winsize size{};
    if (::ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0) return {};
    return size;
}

/// A number that the user has set, or 0.
int NumberFrom(const char* variable)
{
    const char* text = std::getenv(variable);
    return text != nullptr ? std::max(0, std::atoi(text)) : 0;
}

bool IsProgram(const std::string& name)
{
    if (name.find('/') != std::string::npos) return ::access(name.c_str(), X_OK) == 0;
    const char* paths = std::getenv("PATH");
    for (std::string_view rest = paths != nullptr ? paths : ""; !rest.empty();) {
        const std::size_t end = std::min(rest.find(':'), rest.size());
        const std::string path = std::string(rest.substr(0, end)) + "/" + name;
        if (end > 0 && ::access(path.c_str(), X_OK) == 0) return true;
        rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return false;
}

} // namespace

bool IsOutput()
{
    return ::isatty(STDOUT_FILENO) != 0;
}

bool IsPiped()
{
    struct stat status
    {
    };
    return ::fstat(STDOUT_FILENO, &status) == 0 && (S_ISFIFO(status.st_mode) || S_ISSOCK(status.st_mode));
}

bool IsErrors()
{
    return ::isatty(STDERR_FILENO) != 0;
}

bool HasColours(bool isTerminal)
{
    const char* noColour = std::getenv("NO_COLOR");
    if (noColour != nullptr && *noColour != '\0') return false;
    const char* terminal = std::getenv("TERM");
    return isTerminal && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

int Columns()
{
    const int columns = Size().ws_col > 0 ? Size().ws_col : NumberFrom("COLUMNS");
    return std::max(columns > 0 ? columns : 80, narrowest);
}

int Rows()
{
    const int rows = Size().ws_row > 0 ? Size().ws_row : NumberFrom("LINES");
    return rows > 0 ? rows : 24;
}

std::string PagerCommand()
{
    const char* wish = std::getenv("DECKMAN_PAGER");
    if (wish == nullptr) wish = std::getenv("PAGER");
    const std::string command = wish != nullptr ? wish : "less";
    if (command.find_first_not_of(' ') == std::string::npos || command == "cat") return {};
    // A pager that isn't there would swallow the output. A command that only a shell understands is the user's.
    const std::string program = command.substr(0, command.find(' '));
    if (command.find_first_of("|&;<>()$`\\\"'*?[#~=%") == std::string::npos && !IsProgram(program)) return {};
    return command;
}

} // namespace Deckman::Terminal
