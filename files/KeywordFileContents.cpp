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

KeywordFileContents::List::iterator KeywordFileContents::Insert(List::iterator position,
                                                                std::shared_ptr<IKeyword> keyword)
{
    const List::iterator node = m_keywords.insert(position, std::move(keyword));
    Subscribe(*node);
    NoteNode(node);
    return node;
}

void KeywordFileContents::Erase(List::iterator node)
{
    Unsubscribe(*node);
    if (m_index) m_index->erase(node->get());
    m_ordinalsHold = false;
    m_keywords.erase(node);
}

void KeywordFileContents::Splice(List::iterator position, KeywordFileContents& source, List::iterator node)
{
    if (&source != this) {
        source.Unsubscribe(*node);
        if (source.m_index) source.m_index->erase(node->get());
        source.m_ordinalsHold = false;
    }
    m_keywords.splice(position, source.m_keywords, node);
    if (&source != this) Subscribe(*node);
    NoteNode(node);
}

/// So that finding a keyword between edits needs no new index.
void KeywordFileContents::NoteNode(List::iterator node)
{
    if (m_index) (*m_index)[node->get()] = Place{node, 0};
    m_ordinalsHold = false;
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
    Index& index = GetIndex();
    if (!m_ordinalsHold) {
        std::size_t ordinal = 0;
        for (const std::shared_ptr<IKeyword>& keyword : m_keywords) {
            index.at(keyword.get()).ordinal = ordinal++;
        }
        m_ordinalsHold = true;
    }
    return index.at(node->get()).ordinal;
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
        m_ordinalsHold = true;
    }
    return *m_index;
}

} // namespace Tarn::Fjel::Core::DeckManager
