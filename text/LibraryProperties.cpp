#include <deckmanager/LibraryProperties.h>

#include <array>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

struct Property
{
    const char* key;
    const char* value;
};

constexpr std::array<Property, 7> properties = {{
    {"CompanyName", "Tarn"},
    {"FileVersion", DECKMANAGER_VERSION ".0"},
    {"FileDescription", "Live model of reservoir simulation decks"},
    {"ProductVersion", DECKMANAGER_VERSION},
    {"InternalName", "deckmanager"},
    {"LegalCopyright", "Copyright (c) the Tarn deck manager developers"},
    {"OriginalFilename", "libdeckmanager"},
}};

} // namespace

int getNumLibProperties()
{
    return static_cast<int>(properties.size());
}

void getLibProperty(int index, const char*& key, const char*& value)
{
    const bool known = index >= 0 && index < getNumLibProperties();
    key = known ? properties[static_cast<std::size_t>(index)].key : "";
    value = known ? properties[static_cast<std::size_t>(index)].value : "";
}

} // namespace Tarn::Fjel::Core::DeckManager
