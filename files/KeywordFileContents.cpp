#include "files/KeywordFileContents.h"

#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"

namespace Tarn::Fjel::Core::DeckManager {

KeywordFileContents::~KeywordFileContents()
{
    for (const std::shared_ptr<IKeyword>& keyword : m_keywords) {
        Unsubscribe(keyword);
    }
}

void KeywordFileContents::Append(std::shared_ptr<IKeyword> keyword)
{
    m_keywords.push_back(std::move(keyword));
    Subscribe(m_keywords.back());
    m_index.reset();
}

void KeywordFileContents::Replace(const List& keywords)
{
    for (const std::shared_ptr<IKeyword>& keyword : m_keywords) {
        Unsubscribe(keyword);
    }
    List copy = keywords;
    m_keywords.swap(copy);
    for (const std::shared_ptr<IKeyword>& keyword : m_keywords) {
        Subscribe(keyword);
    }
    m_index.reset();
}

KeywordFileContents::List::iterator KeywordFileContents::Find(const IKeyword* keyword)
{
    Index& index = GetIndex();
    const auto found = index.find(keyword);
    return found == index.end() ? m_keywords.end() : found->second.node;
}

std::size_t KeywordFileContents::OrdinalOf(List::iterator node)
{
    if (node == m_keywords.end()) return m_keywords.size();
    return GetIndex().at(node->get()).ordinal;
}

Keyword& KeywordFileContents::AsKeyword(const std::shared_ptr<IKeyword>& keyword)
{
    return static_cast<Keyword&>(*keyword);
}

void KeywordFileContents::Subscribe(const std::shared_ptr<IKeyword>& keyword)
{
    if (m_owner == nullptr) return;
    if (KeywordINCLUDE* include = KeywordINCLUDE::From(keyword.get())) {
        include->forwardedChange.Add(m_owner, &KeywordFile::OnIncludedFileChanged);
    }
}

void KeywordFileContents::Unsubscribe(const std::shared_ptr<IKeyword>& keyword)
{
    if (m_owner == nullptr) return;
    if (KeywordINCLUDE* include = KeywordINCLUDE::From(keyword.get())) {
        include->forwardedChange.Remove(m_owner, &KeywordFile::OnIncludedFileChanged);
    }
}

KeywordFileContents::Index& KeywordFileContents::GetIndex()
{
    if (!m_index) {
        m_index = std::make_unique<Index>();
        m_index->reserve(m_keywords.size());
        std::size_t ordinal = 0;
        for (auto node = m_keywords.begin(); node != m_keywords.end(); ++node) {
            m_index->emplace(node->get(), Place{node, ordinal++});
        }
    }
    return *m_index;
}

} // namespace Tarn::Fjel::Core::DeckManager
