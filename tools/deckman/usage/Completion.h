#pragma once

#include <span>
#include <string>

namespace CLI {
class App;
}

namespace Deckman {

/// What may stand in the place of the last word of a command line behind `deckman`, for the completion of a shell: a
/// line each, a word and behind a tab what it is. A line ":file" or ":dir" stands for the names of files or folders.
/// Words that name a place in a deck come from that deck. Whatever can't be read gives nothing, in silence.
std::string Completions(const CLI::App& app, std::span<const std::string> words);

} // namespace Deckman
