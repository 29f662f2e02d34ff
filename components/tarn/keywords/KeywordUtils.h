#pragma once

#include <tarn/keywords/IKeywordMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Questions to metadata of any kind.
class KeywordUtils
{
public:
    /// None for null.
    static MDType GetMDType(const IKeywordMD* md) noexcept { return md ? md->GetType() : MDType::None; }
    static MDType GetMDType(const IKeywordMD& md) noexcept { return md.GetType(); }

    /// A single value, not a container.
    static constexpr bool IsItemMDType(MDType type) noexcept
    {
        return type == MDType::YesNo || type == MDType::Option || type == MDType::Integer ||
               type == MDType::RestOfLine || type == MDType::Real || type == MDType::String;
    }
    static bool IsItemMDType(const IKeywordMD* md) noexcept { return IsItemMDType(GetMDType(md)); }
};

} // namespace Tarn::Fjel::Core::Keywords
