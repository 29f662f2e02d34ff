#include <deckmanager/KeywordVariables.h>

#include <list>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordMapDataVariables.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordRecordDataVariables.h>
#include <tarn/keywords/KeywordException.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// References by key, in the keys' order.
template <class Key>
class References
{
public:
    void Set(const Key& key, const Keywords::VariablesString& text) { m_variables.insert_or_assign(key, text); }

    const std::list<Key>& Keys() const
    {
        m_keys.clear();
        for (const auto& [key, text] : m_variables)
            m_keys.push_back(key);
        return m_keys;
    }

    const Keywords::VariablesString& Get(const Key& key, const char* missing) const
    {
        const auto found = m_variables.find(key);
        if (found == m_variables.end()) throw Keywords::KeywordException(missing);
        return found->second;
    }

private:
    mutable std::list<Key> m_keys;
    std::map<Key, Keywords::VariablesString> m_variables;
};

class KeywordListDataVariables : public Keywords::IKeywordListDataVariables, public References<int>
{
public:
    const std::list<int>& GetVariableIndices() const override { return Keys(); }
    const Keywords::VariablesString& GetVariable(int index) const override
    {
        return Get(index, "Variables are not set for the given index");
    }
};

class KeywordRecordDataVariables : public Keywords::IKeywordRecordDataVariables, public References<int>
{
public:
    const std::list<int>& GetVariableIndices() const override { return Keys(); }
    const Keywords::VariablesString& GetVariable(int index) const override
    {
        return Get(index, "Variable are not set for the given index");
    }
};

class KeywordMapDataVariables : public Keywords::IKeywordMapDataVariables, public References<std::string>
{
public:
    const std::list<std::string>& GetVariableKeys() const override { return Keys(); }
    const Keywords::VariablesString& GetVariable(const std::string& key) const override
    {
        return Get(key, "Variable are not set for the given key");
    }
};

} // namespace

template <class Variables, class Key>
void KeywordVariables::Set(const Keywords::IKeywordData& data, const Key& key, const Keywords::VariablesString& text)
{
    auto& entry = m_dataVariables[&data];
    if (!entry) entry = std::make_shared<Variables>();
    if (auto* const variables = dynamic_cast<Variables*>(entry.get())) variables->Set(key, text);
}

void KeywordVariables::SetListVariable(Keywords::IKeywordListData& data, int index,
                                       const Keywords::VariablesString& text)
{
    Set<KeywordListDataVariables>(data, index, text);
}

void KeywordVariables::SetMapVariable(Keywords::IKeywordMapData& data, const std::string& key,
                                      const Keywords::VariablesString& text)
{
    Set<KeywordMapDataVariables>(data, key, text);
}

void KeywordVariables::SetRecordVariable(Keywords::IKeywordRecordData& data, int index,
                                         const Keywords::VariablesString& text)
{
    Set<KeywordRecordDataVariables>(data, index, text);
}

Keywords::IKeywordDataVariables* KeywordVariables::GetDataVariables(const Keywords::IKeywordData* data) const
{
    const auto found = m_dataVariables.find(data);
    return found == m_dataVariables.end() ? nullptr : found->second.get();
}

} // namespace Tarn::Fjel::Core::DeckManager
