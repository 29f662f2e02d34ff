#pragma once

#include <map>
#include <memory>
#include <string>

#include <tarn/keywords/IKeywordVariables.h>
#include <tarn/keywords/VariablesString.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordListData;
class IKeywordMapData;
class IKeywordRecordData;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Where the data of one keyword hold a reference to a variable in place of a value, and with what text. Filled while
/// the data are read, and owned by the keyword beside its data tree; the two are dropped together.
class KeywordVariables : public Keywords::IKeywordVariables
{
public:
    /// Note a reference: by the element's position, the entry's name or the item's index. The last text for a place
    /// wins. A data object that already has references of another kind takes nothing.
    void SetListVariable(Keywords::IKeywordListData& data, int index, const Keywords::VariablesString& text);
    void SetMapVariable(Keywords::IKeywordMapData& data, const std::string& key, const Keywords::VariablesString& text);
    void SetRecordVariable(Keywords::IKeywordRecordData& data, int index, const Keywords::VariablesString& text);

    /// At least one reference has been noted.
    bool HasVariables() const { return !m_dataVariables.empty(); }

    Keywords::IKeywordDataVariables* GetDataVariables(const Keywords::IKeywordData* data) const override;

private:
    template <class Variables, class Key>
    void Set(const Keywords::IKeywordData& data, const Key& key, const Keywords::VariablesString& text);

    /// The data objects are compared, never followed.
    std::map<const Keywords::IKeywordData*, std::shared_ptr<Keywords::IKeywordDataVariables>> m_dataVariables;
};

} // namespace Tarn::Fjel::Core::DeckManager
