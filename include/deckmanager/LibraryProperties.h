#pragma once

namespace Tarn::Fjel::Core::DeckManager {

/// The number of pairs by which the library describes itself: 7.
int getNumLibProperties();

/// The pair at `index`, counted from 0: company, versions, description, names and legal notice of the library.
/// Any other index gives two empty strings. The texts live as long as the process.
void getLibProperty(int index, const char*& key, const char*& value);

} // namespace Tarn::Fjel::Core::DeckManager
