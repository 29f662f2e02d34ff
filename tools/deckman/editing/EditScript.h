#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Deckman {

/// One edit of a script, as words.
struct ScriptCommand
{
    int line = 0; ///< on which it begins, from 1
    std::vector<std::string> words;
};

/// Cuts a script into its edits, one a line. Words are written as in a shell: blanks part them, '…' holds anything,
/// "…" too, with \" and \\ in it, a backslash takes the next character as it is and at the end of a line goes on with
/// the next, and # at the head of a word begins a comment. What stands in quotes may hold line ends. A word <<END is
/// the text of the lines that follow, up to the line END.
///
/// `name` is the script's, for the places of failures. Throws `Failure` for a text that is never ended.
std::vector<ScriptCommand> ReadScript(std::string_view text, const std::string& name);

} // namespace Deckman
