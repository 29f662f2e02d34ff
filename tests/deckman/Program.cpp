#include "tests/deckman/Program.h"

#include <fcntl.h>
#include <pty.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace DeckmanTests {

namespace {

constexpr unsigned timeLimit = 60; // seconds
constexpr unsigned nobody = 65534;

void Redirect(int descriptor, const std::string& file)
{
    const int opened = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0666);
    if (opened < 0 || ::dup2(opened, descriptor) < 0) ::_exit(125);
}

[[noreturn]] void Become(const std::vector<std::string>& command, const Launch& run)
{
    if (!run.directory.empty() && ::chdir(run.directory.c_str()) != 0) ::_exit(125);
    for (const auto& [name, value] : run.environment)
        ::setenv(name.c_str(), value.c_str(), 1);
    if (run.unprivileged && ::getuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(125);
    ::alarm(timeLimit);

    std::vector<char*> arguments;
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    ::execv(arguments.front(), arguments.data());
    ::_exit(126);
}

int StatusOf(int state)
{
    return WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

std::vector<std::string> InShell(const std::string& command)
{
    return {"/bin/sh", "-c", "deckman() { \"" DECKMAN_PROGRAM "\" \"$@\"; }\n" + command};
}

Outcome Execute(const std::vector<std::string>& command, const Launch& run)
{
    const TestSupport::TempDir files;
    const pid_t child = ::fork();
    if (child < 0) throw std::runtime_error("fork");
    if (child == 0) {
        Redirect(STDOUT_FILENO, run.outFile.empty() ? files.Path("out") : run.outFile);
        Redirect(STDERR_FILENO, files.Path("err"));
        Become(command, run);
    }
    int state = 0;
    ::waitpid(child, &state, 0);

    Outcome outcome;
    outcome.status = StatusOf(state);
    if (run.outFile.empty()) outcome.out = files.Read("out");
    outcome.err = files.Read("err");
    return outcome;
}

} // namespace

Launch In(const TestSupport::TempDir& folder)
{
    std::filesystem::permissions(folder.Path(), std::filesystem::perms::others_all | std::filesystem::perms::owner_all);
    return {folder.Path()};
}

Outcome Deckman(const std::vector<std::string>& arguments, const Launch& run)
{
    std::vector<std::string> command{DECKMAN_PROGRAM};
    command.insert(command.end(), arguments.begin(), arguments.end());
    return Execute(command, run);
}

Outcome Shell(const std::string& command, const Launch& run)
{
    return Execute(InShell(command), run);
}

Outcome OnTerminal(const std::string& command, const Screen& screen, const Launch& run)
{
    winsize size{};
    size.ws_row = static_cast<unsigned short>(screen.rows);
    size.ws_col = static_cast<unsigned short>(screen.columns);
    int terminal = -1;
    const pid_t child = ::forkpty(&terminal, nullptr, nullptr, &size);
    if (child < 0) throw std::runtime_error("forkpty");
    if (child == 0) {
        ::setenv("TERM", "xterm", 1);
        for (const char* variable : {"NO_COLOR", "PAGER", "DECKMAN_PAGER", "LESS"})
            ::unsetenv(variable);
        Become(InShell(command), run);
    }
    Outcome outcome;
    char buffer[4096];
    // The other end is gone: an error, on this system.
    for (ssize_t count; (count = ::read(terminal, buffer, sizeof buffer)) > 0;) {
        for (ssize_t i = 0; i < count; ++i) {
            if (buffer[i] == '\n' && outcome.out.ends_with('\r')) outcome.out.pop_back();
            outcome.out += buffer[i];
        }
    }
    ::close(terminal);
    int state = 0;
    ::waitpid(child, &state, 0);
    outcome.status = StatusOf(state);
    return outcome;
}

std::vector<nlohmann::ordered_json> JsonLines(const std::string& text)
{
    std::vector<nlohmann::ordered_json> values;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);)
        values.push_back(nlohmann::ordered_json::parse(line));
    return values;
}

std::string Replaced(std::string text, const std::string& old, const std::string& now)
{
    return text.replace(text.find(old), old.size(), now);
}

} // namespace DeckmanTests
