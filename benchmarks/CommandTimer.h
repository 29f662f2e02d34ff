#pragma once

#include <string>
#include <vector>

namespace Benchmarks {

/// A command by its words; the first is the program. `environment` adds to that of this process, as "NAME=VALUE".
struct Command
{
    std::vector<std::string> words;
    std::vector<std::string> environment;
};

/// One run of a command: from before the process is made until it has ended and its output has been read.
struct Run
{
    double seconds = 0;
    long peakKiB = 0;          ///< largest resident size of the process
    long long outputBytes = 0; ///< what it wrote to its standard output, a pipe
};

/// Starts the process from which commands are run. To be called once, before anything else: a process counts the memory
/// of the one that made it as its own peak, so commands must come from one that stays small.
void StartLauncher();

/// Runs the command once, its standard output into a pipe that is read to the end, its standard error dropped. Throws
/// `std::runtime_error` when it can't be started, or when it fails (grep's 1, no match, is no failure).
Run RunOnce(const Command& command);

/// The median of `repeats` runs of each command after one warm-up of each, run in turn so that a busy moment of the
/// machine falls on all of them.
std::vector<Run> MedianRuns(const std::vector<Command>& commands, int repeats);

} // namespace Benchmarks
