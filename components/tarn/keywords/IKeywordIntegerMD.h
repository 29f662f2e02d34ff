#pragma once

#include <optional>

#include <tarn/keywords/IKeywordItemMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of an integer item.
class IKeywordIntegerMD : public IKeywordItemMD
{
public:
    /// The smallest and largest value that make sense, if the catalogue knows one.
    virtual std::optional<int> GetMinValue() const noexcept = 0;
    virtual std::optional<int> GetMaxValue() const noexcept = 0;

    /// The printf format to write a value with: one conversion of an int. Null: the usual one.
    virtual const char* GetFormat() const noexcept = 0;

protected:
    using IKeywordItemMD::IKeywordItemMD;
};

} // namespace Tarn::Fjel::Core::Keywords
