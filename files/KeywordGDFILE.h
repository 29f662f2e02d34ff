#pragma once

#include "files/GridFileKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// GDFILE: names a grid file.
class KeywordGDFILE : public GridFileKeyword
{
public:
    using GridFileKeyword::GridFileKeyword;

    /// The files that the keyword stands for: that of its name, and those of its name with the extension of a grid
    /// file.
    std::vector<Service::FileName> GridFiles(const Context& context) const override;

protected:
    std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const override;
    void PutName(Keywords::IKeywordData& data, const std::string& name) const override;
};

} // namespace Tarn::Fjel::Core::DeckManager
