#include "cache/CacheEntry.h"

#include <tarn/service/Serializer.h>

namespace Tarn::Fjel::Core::DeckManager {

void CacheEntry::CacheValue::Serialize(Service::Serializer& serializer)
{
    serializer.SerializeImpl(name, "name");
    serializer.SerializeDecimal(pos, "pos");
    serializer.SerializeDecimal(size, "size");
}

void CacheEntry::Serialize(Service::Serializer& serializer)
{
    serializer.SerializeImpl(stamp, "stamp");
    serializer.SerializeDecimal(length, "length");

    int count = static_cast<int>(values.size());
    serializer.StartArray(count, "values");
    if (serializer.IsReading()) values.assign(static_cast<std::size_t>(count), CacheValue());
    for (int i = 0; i < count; ++i) {
        serializer.SerializeImpl(values[static_cast<std::size_t>(i)], "a", i);
    }
    serializer.EndArray();
    serializer.SerializeImpl(settings, "settings");
    serializer.SerializeImpl(sections, "sections");
}

} // namespace Tarn::Fjel::Core::DeckManager
