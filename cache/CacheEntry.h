#pragma once

#include <string>
#include <vector>

#include <tarn/service/ISerializable.h>
#include <tarn/service/Time.h>

namespace Tarn::Fjel::Core::Service {
class Serializer;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The keyword positions of one file, as a table keeps them between processes.
class CacheEntry : public Service::ISerializable
{
public:
    /// One keyword.
    class CacheValue : public Service::ISerializable
    {
    public:
        std::string name;
        long long pos = -1;  ///< byte position of the keyword line
        long long size = -1; ///< bytes of the keyword's extent

        void Serialize(Service::Serializer& serializer) override;
    };

    Service::Time stamp;            ///< modification time of the file when the entry was stored
    long long length = 0;           ///< bytes of the file when the entry was stored
    std::vector<CacheValue> values; ///< in file order

    void Serialize(Service::Serializer& serializer) override;
};

} // namespace Tarn::Fjel::Core::DeckManager
