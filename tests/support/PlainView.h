#pragma once

#include <memory>
#include <set>
#include <string>

#include <deckmanager/IDeckKeywords.h>

namespace TestSupport {

namespace Core = Tarn::Fjel::Core;
namespace Decks = Tarn::Fjel::Core::DeckManager;

/// A deck's view as any host could write it: without the index.
class PlainView : public Decks::IDeckKeywords
{
public:
    explicit PlainView(const Decks::IDeckKeywords& view) : m_view(view) {}

    Decks::KeywordIterator Begin() const override { return m_view.Begin(); }
    const Decks::KeywordIterator& LogicalEnd() const override { return m_view.LogicalEnd(); }
    const Decks::KeywordIterator& End() const override { return m_view.End(); }
    Decks::KeywordIterator PhysicalEnd() const override { return m_view.PhysicalEnd(); }
    const Decks::KeywordIterator& SectionBegin(Core::Keywords::SectionType section) const override
    {
        return m_view.SectionBegin(section);
    }
    const Decks::KeywordIterator& SectionEnd(Core::Keywords::SectionType section) const override
    {
        return m_view.SectionEnd(section);
    }
    Core::Keywords::SectionType SectionOf(const Decks::KeywordIterator& position) const override
    {
        return m_view.SectionOf(position);
    }
    Decks::KeywordIterator FindKeyword(const Decks::IKeyword* keyword) const override
    {
        return m_view.FindKeyword(keyword);
    }
    Decks::KeywordFileIterator GetFileIterator(const Decks::KeywordIterator& position) const override
    {
        return m_view.GetFileIterator(position);
    }
    Decks::KeywordFileIterator GetFileIterator(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetFileIterator(keyword);
    }
    Decks::KeywordIterator FindKeywordById(const std::string& name, const Core::Keywords::IKeywordData* data,
                                           const Decks::KeywordIterator& first, const Decks::KeywordIterator& last,
                                           bool generatedOnly) const override
    {
        return m_view.FindKeywordById(name, data, first, last, generatedOnly);
    }
    Decks::KeywordIterator FindLastKeywordById(const std::string& name, const Core::Keywords::IKeywordData* data,
                                               const Decks::KeywordIterator& first, const Decks::KeywordIterator& last,
                                               bool generatedOnly) const override
    {
        return m_view.FindLastKeywordById(name, data, first, last, generatedOnly);
    }
    Core::Keywords::IKeywordData* GetKeywordData(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetKeywordData(keyword);
    }
    std::shared_ptr<std::string> GetDataText(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetDataText(keyword);
    }
    std::shared_ptr<std::string> GetRawText(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetRawText(keyword);
    }
    std::string ReadDataText(Decks::ILineReader& reader, long long limit, bool* tagSeen, bool stopAtTag) const override
    {
        return m_view.ReadDataText(reader, limit, tagSeen, stopAtTag);
    }
    std::string GetComment(const Decks::KeywordIterator& position, bool stripHeader) const override
    {
        return m_view.GetComment(position, stripHeader);
    }
    Decks::IKeywordFile* GetFileOf(const Decks::KeywordFileIterator& position) const override
    {
        return m_view.GetFileOf(position);
    }
    Decks::IKeywordFile* GetDataFile() const override { return m_view.GetDataFile(); }
    std::set<Decks::IKeywordFile*> GetFiles() const override { return m_view.GetFiles(); }
    Core::Service::FileName GetGridFile() const override { return m_view.GetGridFile(); }
    Decks::KeywordIterator FindGridKeyword() const override { return m_view.FindGridKeyword(); }
    Decks::IKeywordFile* GetIncludedFile(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetIncludedFile(keyword);
    }
    Decks::IKeyword* GetIncludingKeyword(Decks::IKeywordFile* file) const override
    {
        return m_view.GetIncludingKeyword(file);
    }
    Decks::KeywordIterator GetScopeEnd(const Decks::KeywordIterator& position, bool generatedOnly) const override
    {
        return m_view.GetScopeEnd(position, generatedOnly);
    }
    void GetEnclosingScope(const Decks::KeywordIterator& position, Decks::KeywordIterator& head,
                           Decks::KeywordIterator& end) const override
    {
        m_view.GetEnclosingScope(position, head, end);
    }
    bool ExportToDirectory(const std::string&, const std::string&, Core::Keywords::SimulatorType, bool) const override
    {
        return false;
    }
    bool ExportToDirectory(const std::string&, Core::Keywords::SimulatorType, bool) const override { return false; }
    bool AllowsVariables() const override { return m_view.AllowsVariables(); }
    bool HasVariables(const Decks::IKeyword* keyword) const override { return m_view.HasVariables(keyword); }
    Decks::KeywordVariables* GetVariables(const Decks::IKeyword* keyword) const override
    {
        return m_view.GetVariables(keyword);
    }
    bool CheckSections(std::string& message) const override { return m_view.CheckSections(message); }

private:
    const Decks::IDeckKeywords& m_view;
};

} // namespace TestSupport
