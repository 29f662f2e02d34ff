#pragma once

#include <string>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of a single value. The base of the six kinds of item.
class IKeywordItemMD : public IKeywordMD
{
public:
    /// The item has a default value for that simulator. Any: for some simulator.
    virtual bool HasDefaultFor(SimulatorType simulator) const noexcept = 0;

    /// The default value as it would be written in a deck, without quotes; empty if there is none, or if it is an
    /// empty string. Any: the first simulator's that has one.
    virtual const std::string& GetDefaultText(SimulatorType simulator) const noexcept = 0;

    /// The dimension by whose unit the value is measured, "length" or "pressure" say; empty for a bare number.
    virtual const std::string& GetUnitDimension() const noexcept = 0;

protected:
    using IKeywordMD::IKeywordMD;
};

} // namespace Tarn::Fjel::Core::Keywords
