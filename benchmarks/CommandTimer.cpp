#include "benchmarks/CommandTimer.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cmath>
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

Run RunHere(const Command& command)
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
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0)
        Fail(command, WIFEXITED(status) ? "exit status " + std::to_string(WEXITSTATUS(status))
                                        : "signal " + std::to_string(WTERMSIG(status)));
    return run;
}

using Texts = std::vector<std::string>;

bool TransferAll(int descriptor, char* data, std::size_t size, bool writes)
{
    while (size > 0) {
        const ssize_t count = writes ? write(descriptor, data, size) : read(descriptor, data, size);
        if (count == 0 || (count < 0 && errno != EINTR)) return false;
        if (count < 0) continue;
        data += count;
        size -= static_cast<std::size_t>(count);
    }
    return true;
}

/// Texts without a byte 0 in them, each with one behind it, and ahead of all their size.
bool Send(int descriptor, const Texts& texts)
{
    std::string bytes;
    for (const std::string& text : texts)
        bytes.append(text).push_back('\0');
    std::size_t size = bytes.size();
    return TransferAll(descriptor, reinterpret_cast<char*>(&size), sizeof size, true) &&
           TransferAll(descriptor, bytes.data(), size, true);
}

bool Receive(int descriptor, Texts& texts)
{
    std::size_t size = 0;
    if (!TransferAll(descriptor, reinterpret_cast<char*>(&size), sizeof size, false)) return false;
    std::string bytes(size, '\0');
    if (!TransferAll(descriptor, bytes.data(), size, false)) return false;
    texts.clear();
    for (std::size_t at = 0; at < size; at += texts.back().size() + 1)
        texts.emplace_back(bytes.c_str() + at);
    return true;
}

/// The pipes to and from the process that starts the commands.
int toLauncher = -1;
int fromLauncher = -1;

void Serve(int from, int to)
{
    Texts words;
    Texts environment;
    while (Receive(from, words) && Receive(from, environment)) {
        Texts answer;
        try {
            const Run run = RunHere({words, environment});
            answer = {std::to_string(std::llround(run.seconds * 1e9)), std::to_string(run.peakKiB),
                      std::to_string(run.outputBytes)};
        } catch (const std::exception& failure) {
            answer = {failure.what()};
        }
        if (!Send(to, answer)) return;
    }
}

} // namespace

void StartLauncher()
{
    int to[2];
    int from[2];
    if (pipe2(to, O_CLOEXEC) != 0 || pipe2(from, O_CLOEXEC) != 0) throw std::runtime_error(std::strerror(errno));
    const pid_t child = fork();
    if (child < 0) throw std::runtime_error(std::strerror(errno));
    if (child == 0) {
        close(to[1]);
        close(from[0]);
        Serve(to[0], from[1]);
        _exit(0);
    }
    close(to[0]);
    close(from[1]);
    toLauncher = to[1];
    fromLauncher = from[0];
}

Run RunOnce(const Command& command)
{
    Texts answer;
    if (!Send(toLauncher, command.words) || !Send(toLauncher, command.environment) || !Receive(fromLauncher, answer))
        Fail(command, "no process to start it");
    if (answer.size() != 3) throw std::runtime_error(answer.empty() ? "no answer" : answer.front());
    return {static_cast<double>(std::stoll(answer[0])) / 1e9, std::stol(answer[1]), std::stoll(answer[2])};
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
