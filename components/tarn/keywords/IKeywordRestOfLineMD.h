#pragma once

#include <tarn/keywords/IKeywordItemMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of an item that takes the rest of its line as it stands, with its case.
class IKeywordRestOfLineMD : public IKeywordItemMD
{
protected:
    using IKeywordItemMD::IKeywordItemMD;
};

} // namespace Tarn::Fjel::Core::Keywords
