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
///
/// Which keywords a text has depends on more than the text: on the settings and the syntax table, and on the sections
/// that a scan learns from other files. The entry bears what the scan met, so that a load under other circumstances can
/// tell.
class CacheEntry final : public Service::ISerializable
{
public:
    /// One keyword.
    class CacheValue final : public Service::ISerializable
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
    std::string settings; ///< a text that stands for all settings that shape the list; empty: whoever made it answers
    std::string sections; ///< what the scan learnt of other files, in its own code

    void Serialize(Service::Serializer& serializer) override;
};

} // namespace Tarn::Fjel::Core::DeckManager
