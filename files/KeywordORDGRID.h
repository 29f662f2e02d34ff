#pragma once

#include "files/GridFileKeyword.h"

namespace Tarn::Fjel::Core::DeckManager {

/// ORDGRID: names an auxiliary grid file of the modelling application.
class KeywordORDGRID : public GridFileKeyword
{
public:
    using GridFileKeyword::GridFileKeyword;

    /// The file that the keyword stands for; none when it isn't there.
    std::vector<Service::FileName> GridFiles(const Context& context) const override;

protected:
    std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const override;
    void PutName(Keywords::IKeywordData& data, const std::string& name) const override;
};

} // namespace Tarn::Fjel::Core::DeckManager
