#pragma once

#include <memory>
#include <string>
#include <variant>
#include <vector>

#include "command/ExitStatus.h"
#include "command/Options.h"

namespace Deckman {

/// The options, or, when there is nothing more to do (help was asked for, wrong usage was told), the exit status.
std::variant<Options, ExitStatus> ParseOptions(int argc, char** argv);

/// Reads the lines of a script of edits: each is a verb that edits, without DECK and the options that say what is to be
/// done with the edits.
class ScriptLineParser
{
public:
    ScriptLineParser();
    ~ScriptLineParser();
    ScriptLineParser(const ScriptLineParser&) = delete;
    ScriptLineParser& operator=(const ScriptLineParser&) = delete;

    /// Throws `Failure` for what is no such line.
    Options Parse(const std::vector<std::string>& words);

private:
    struct Grammar;

    std::unique_ptr<Grammar> m_grammar;
};

} // namespace Deckman
