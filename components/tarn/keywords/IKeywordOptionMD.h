#pragma once

#include <string>
#include <string_view>

#include <tarn/keywords/IKeywordItemMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of an item that takes one of a set of names. The value is the index of the name.
class IKeywordOptionMD : public IKeywordItemMD
{
public:
    /// The index of that very name, in capitals; -1 if there is none. Aliases don't count.
    virtual int GetOptionIndex(std::string_view name) const noexcept = 0;

    /// The index of the option that a token of a deck means, by name or alias and without regard to case. A token
    /// that means none gives -1, and reason then says why, without a full stop. Else reason is left alone.
    virtual int FindOption(std::string_view token, std::string& reason) const = 0;

    virtual int GetOptionCount() const noexcept = 0;

    /// REQUIRES: 0 <= index < GetOptionCount(); anything else throws KeywordException.
    virtual const std::string& GetOptionName(int index) const = 0;

protected:
    using IKeywordItemMD::IKeywordItemMD;
};

} // namespace Tarn::Fjel::Core::Keywords
