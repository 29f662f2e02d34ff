#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of one entry of a map.
class IKeywordMapEntryMD
{
public:
    virtual ~IKeywordMapEntryMD() = default;

    /// The name that the entry goes by; it may end in "*".
    virtual const std::string& GetName() const noexcept = 0;

    virtual bool IsSupportedBy(SimulatorType simulator) const noexcept = 0;

    /// The names under which that value may be written, the preferred one first; empty if it can't be written.
    /// A name may end in "*", which isn't part of what is written.
    virtual const std::vector<std::string>& GetEntryNames(int value) const noexcept = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
