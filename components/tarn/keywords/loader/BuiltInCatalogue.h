#pragma once

#include <tarn/keywords/loader/CatalogueImage.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

/// The catalogue that was compiled into the library; it lives as long as the program.
CatalogueImage BuiltInCatalogue();

} // namespace Tarn::Fjel::Core::Keywords::Loader
