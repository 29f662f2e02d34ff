#pragma once

#include <string>
#include <string_view>

#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordRawTextMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Data that are text as it stands; empty at first.
class IKeywordRawTextData : public IKeywordData
{
public:
    const IKeywordRawTextMD* GetRawTextMD() const noexcept
    {
        return static_cast<const IKeywordRawTextMD*>(GetMetaData());
    }

    virtual const std::string& GetText() const noexcept = 0;
    virtual void SetText(std::string_view text) = 0;

protected:
    using IKeywordData::IKeywordData;
};

} // namespace Tarn::Fjel::Core::Keywords
