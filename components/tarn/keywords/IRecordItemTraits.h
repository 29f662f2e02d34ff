#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// What is special about single items of a record.
class IRecordItemTraits
{
public:
    virtual ~IRecordItemTraits() = default;

    /// The item takes a token only if the token converts; else the token is left for the next item.
    virtual bool IsOptionalOnRead(int index) const noexcept = 0;

    /// The item isn't written at all while it is unset, in place of a default token.
    virtual bool IsOptionalOnWrite(int index) const noexcept = 0;
};

} // namespace Tarn::Fjel::Core::Keywords
