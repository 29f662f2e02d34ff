#include "cache/CacheEntry.h"

#include <charconv>

#include <tarn/service/Exception.h>
#include <tarn/service/Serializer.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// 64-bit numbers travel as decimal text, so that the form doesn't depend on the integers that a serializer knows.
void SerializeNumber(Service::Serializer& serializer, long long& value, std::string_view name)
{
    std::string text;
    if (serializer.IsWriting()) text = std::to_string(value);
    serializer.SerializeImpl(text, name);
    if (!serializer.IsReading()) return;
    const char* end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc() || stop != end) throw Service::Exception("No number: " + text);
}

} // namespace

void CacheEntry::CacheValue::Serialize(Service::Serializer& serializer)
{
    serializer.SerializeImpl(name, "name");
    SerializeNumber(serializer, pos, "pos");
    SerializeNumber(serializer, size, "size");
}

void CacheEntry::Serialize(Service::Serializer& serializer)
{
    serializer.SerializeImpl(stamp, "stamp");
    SerializeNumber(serializer, length, "length");

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
