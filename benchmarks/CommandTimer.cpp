#include "benchmarks/CommandTimer.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <stdexcept>

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Benchmarks {

namespace {

[[noreturn]] void Fail(const Command& command, const std::string& reason)
{
    std::string text;
    for (const std::string& word : command.words)
        text += word + ' ';
    throw std::runtime_error(text + "- " + reason);
}

std::vector<char*> Pointers(const std::vector<std::string>& texts)
{
    std::vector<char*> pointers;
    pointers.reserve(texts.size() + 1);
    for (const std::string& text : texts)
        pointers.push_back(const_cast<char*>(text.c_str()));
    pointers.push_back(nullptr);
    return pointers;
}

long long Drain(int descriptor)
{
    static std::vector<char> buffer(1 << 16);
    long long total = 0;
    for (;;) {
        const ssize_t count = read(descriptor, buffer.data(), buffer.size());
        if (count > 0)
            total += count;
        else if (count == 0 || errno != EINTR)
            return total;
    }
}

} // namespace

Run RunOnce(const Command& command)
{
    std::vector<std::string> environment = command.environment;
    for (char** entry = environ; *entry; ++entry)
        environment.emplace_back(*entry);
    const std::vector<char*> arguments = Pointers(command.words);
    const std::vector<char*> variables = Pointers(environment);

    int channel[2];
    if (pipe2(channel, O_CLOEXEC) != 0) Fail(command, std::strerror(errno));
    const auto begin = std::chrono::steady_clock::now();
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, channel[1], STDOUT_FILENO);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    const int failure = posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), variables.data());
    posix_spawn_file_actions_destroy(&actions);
    close(channel[1]);
    if (failure != 0) {
        close(channel[0]);
        Fail(command, std::strerror(failure));
    }
    Run run;
    run.outputBytes = Drain(channel[0]);
    close(channel[0]);
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, 0, &usage) < 0 && errno == EINTR) {
    }
    run.seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
    run.peakKiB = usage.ru_maxrss;
    if (!WIFEXITED(status) || WEXITSTATUS(status) > 1)
        Fail(command, WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                                        : "signal " + std::to_string(WTERMSIG(status)));
    return run;
}

std::vector<Run> MedianRuns(const std::vector<Command>& commands, int repeats)
{
    std::vector<std::vector<Run>> runs(commands.size());
    for (int round = 0; round <= repeats; ++round)
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const Run run = RunOnce(commands[i]);
            if (round > 0) runs[i].push_back(run);
        }

    std::vector<Run> medians;
    for (std::vector<Run>& of : runs) {
        std::sort(of.begin(), of.end(), [](const Run& a, const Run& b) { return a.seconds < b.seconds; });
        medians.push_back(of[of.size() / 2]);
    }
    return medians;
}

} // namespace Benchmarks
