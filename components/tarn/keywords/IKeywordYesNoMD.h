#pragma once

#include <tarn/keywords/IKeywordItemMD.h>

namespace Tarn::Fjel::Core::Keywords {

/// Metadata of an item that is YES or NO.
class IKeywordYesNoMD : public IKeywordItemMD
{
protected:
    using IKeywordItemMD::IKeywordItemMD;
};

} // namespace Tarn::Fjel::Core::Keywords
