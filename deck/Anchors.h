#pragma once

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// What a deck has of its generator: tagged keywords, sections, and the keywords that end a deck or a file. Every other
/// keyword is a user's.
bool IsAnchor(const IKeyword& keyword);

} // namespace Tarn::Fjel::Core::DeckManager
