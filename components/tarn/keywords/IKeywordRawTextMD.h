#pragma once

#include <string>

#include <tarn/keywords/IKeywordMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of data that are text as it stands.
class IKeywordRawTextMD : public IKeywordMD
{
public:
    /// Fills text with the line head that ends the text, empty if nothing does. True if there is one.
    virtual bool GetTerminator(std::string& text) const = 0;

protected:
    using IKeywordMD::IKeywordMD;
};

} // namespace Tarn::Fjel::Core::Keywords
