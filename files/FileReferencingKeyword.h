#pragma once

#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// A keyword that names another file, which belongs to the deck as the keyword does.
class FileReferencingKeyword : public Keyword
{
protected:
    using Keyword::Keyword;
};

} // namespace Tarn::Fjel::Core::DeckManager
