#pragma once

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/support/TempDir.h"

namespace DeckmanTests {

using testing::ContainsRegex;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using TestSupport::TempDir;

/// What a finished program left behind.
struct Outcome
{
    int status = -1; ///< the exit status; 128 and the signal's number for a program that a signal ended
    std::string out;
    std::string err;
};

/// One run of the built program.
struct Launch
{
    std::string directory = {}; ///< where it runs; empty: the directory of the tests
    std::vector<std::pair<std::string, std::string>> environment = {}; ///< set besides what the tests have
    bool unprivileged = false;                                         ///< as a user whom permissions stop
    std::string outFile = {}; ///< standard output goes there and not into `out`
};

/// A run in a directory that any user may enter and change.
Launch In(const TestSupport::TempDir& folder);

/// Runs deckman with arguments. A run that takes longer than a minute is ended.
Outcome Deckman(const std::vector<std::string>& arguments, const Launch& run = {});
/// Runs a command line of the shell in which `deckman` is the built program.
Outcome Shell(const std::string& command, const Launch& run = {});

/// A terminal of that size.
struct Screen
{
    int rows = 24;
    int columns = 80;
};
/// The same on a terminal, which shows all output: `out` is what it got, with "\n" for line ends.
Outcome OnTerminal(const std::string& command, const Screen& screen = {}, const Launch& run = {});

/// One JSON value for each line.
std::vector<nlohmann::ordered_json> JsonLines(const std::string& text);
/// The text with the first `old` in it replaced; there must be one.
std::string Replaced(std::string text, const std::string& old, const std::string& now);

} // namespace DeckmanTests
