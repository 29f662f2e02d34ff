#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Service {
class ISerializable;
}

/// How a cache file looks on disk, whatever it holds. Both forms end in a checksum of their bytes: a damaged file is
/// told from a whole one, also where its text would still make sense.
namespace Tarn::Fjel::Core::DeckManager::CacheForm {

enum class Kind
{
    Xml,
    Binary
};

/// Fills `value` from the file. Throws for a file that can't be read, is damaged or is of the other kind; `value` may
/// then hold some of it.
void Read(const std::string& path, Kind kind, Service::ISerializable& value);

/// Puts `value` in the place of what the file holds, in one step. False where it can't be written; the file is then
/// what it was.
bool Write(const std::string& path, Kind kind, Service::ISerializable& value);

/// The same from and to bytes.
void FromBytes(std::string bytes, Kind kind, Service::ISerializable& value);
std::string ToBytes(Kind kind, Service::ISerializable& value);

/// `text` with the checksum behind it, as the XML form ends.
std::string WithChecksum(std::string text);

} // namespace Tarn::Fjel::Core::DeckManager::CacheForm
