#pragma once

#include <optional>
#include <string>
#include <string_view>

#include <deckmanager/DataTextEditor.h>

#include "editing/KeywordEdits.h"

namespace Deckman {

/// The text that the options give, from standard input for "-", without line ends behind it. Throws `Failure` when that
/// can't be read, or is empty.
std::string GivenText(const Options& options);

/// The way to the item of a target, in numbers. A value of a list is found without reading the others.
Tarn::Fjel::Core::DeckManager::DataTextEditor::Path PathTo(KeywordEdits& run, const KeywordEdits::Target& target);

/// Takes over what an editor has made of a keyword's data text. Throws `Failure` where it has made nothing of it.
void TakeText(KeywordEdits& run, const KeywordEdits::Target& target,
              const Tarn::Fjel::Core::DeckManager::DataTextEditor::Result& result);

/// Reads the data of a keyword that has been given a text, and throws `Failure` for an error in it. What only the rest
/// of the deck can tell is no error.
void RequireReadable(const KeywordEdits& run, const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

/// Tells the warnings of that read, at `place`.
void TellWarnings(const KeywordEdits& run, const Tarn::Fjel::Core::DeckManager::IKeyword& keyword,
                  const std::string& place);

} // namespace Deckman
