#pragma once

#include <deckmanager/KeywordIterator.h>
#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::Service {
class Directory;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;

/// Finds the grid file that a deck names, where the name may lack its extension.
class GridFileGuess
{
public:
    /// The file of the deck's GDFILE, else of its ORDGRID; not set when nothing fits.
    static Service::FileName Find(const IDeckKeywords& keywords);
};

} // namespace Tarn::Fjel::Core::DeckManager
