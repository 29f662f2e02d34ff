// What the targets that read data have in common: a keyword in no file, a deck without keywords, and the choice of a
// keyword by the input.

#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

namespace Fuzz {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

class LooseKeyword : public IKeyword
{
public:
    explicit LooseKeyword(const Keywords::IKeywordSyntax& syntax) : m_syntax(syntax) {}
    const std::string& GetName() const override { return m_syntax.GetName(); }
    const Keywords::IKeywordSyntax* GetSyntax() const override { return &m_syntax; }
    std::string GetComment() const override { return {}; }
    bool IsGenerated() const override { return false; }
    bool IsInGeneratedFile() const override { return false; }
    IKeywordFile* GetFile() const override { return nullptr; }
    KeywordFile* GetDiskFile() const override { return nullptr; }
    int GetLine() const override { return -1; }
    long long GetPosition() const override { return 0; }
    bool IsCommentedOut() const override { return false; }
    bool IsSuppressed() const override { return false; }
    std::shared_ptr<std::string> GetText() const override { return std::make_shared<std::string>(); }
    long long GetSize() const override { return 0; }

private:
    const Keywords::IKeywordSyntax& m_syntax;
};

/// A deck without keywords, so that the sizes that hang on others are asked for and not found.
class EmptyDeck : public IDeckKeywords
{
public:
    KeywordIterator Begin() const override { return {}; }
    const KeywordIterator& LogicalEnd() const override { return m_end; }
    const KeywordIterator& End() const override { return m_end; }
    KeywordIterator PhysicalEnd() const override { return {}; }
    const KeywordIterator& SectionBegin(Keywords::SectionType) const override { return m_end; }
    const KeywordIterator& SectionEnd(Keywords::SectionType) const override { return m_end; }
    Keywords::SectionType SectionOf(const KeywordIterator&) const override { return Keywords::SectionType::None; }
    KeywordIterator FindKeyword(const IKeyword*) const override { return {}; }
    KeywordFileIterator GetFileIterator(const KeywordIterator&) const override { return {}; }
    KeywordFileIterator GetFileIterator(const IKeyword*) const override { return {}; }
    KeywordIterator FindKeywordById(const std::string&, const Keywords::IKeywordData*, const KeywordIterator&,
                                    const KeywordIterator& last, bool) const override
    {
        return last;
    }
    KeywordIterator FindLastKeywordById(const std::string&, const Keywords::IKeywordData*, const KeywordIterator&,
                                        const KeywordIterator& last, bool) const override
    {
        return last;
    }
    Keywords::IKeywordData* GetKeywordData(const IKeyword*) const override { return nullptr; }
    std::shared_ptr<std::string> GetDataText(const IKeyword*) const override { return nullptr; }
    std::shared_ptr<std::string> GetRawText(const IKeyword*) const override { return nullptr; }
    std::string ReadDataText(ILineReader&, long long, bool*, bool) const override { return {}; }
    std::string GetComment(const KeywordIterator&, bool) const override { return {}; }
    IKeywordFile* GetFileOf(const KeywordFileIterator&) const override { return nullptr; }
    IKeywordFile* GetDataFile() const override { return nullptr; }
    std::set<IKeywordFile*> GetFiles() const override { return {}; }
    Service::FileName GetGridFile() const override { return {}; }
    KeywordIterator FindGridKeyword() const override { return {}; }
    IKeywordFile* GetIncludedFile(const IKeyword*) const override { return nullptr; }
    IKeyword* GetIncludingKeyword(IKeywordFile*) const override { return nullptr; }
    KeywordIterator GetScopeEnd(const KeywordIterator&, bool) const override { return {}; }
    void GetEnclosingScope(const KeywordIterator&, KeywordIterator&, KeywordIterator&) const override {}
    bool ExportToDirectory(const std::string&, const std::string&, Keywords::SimulatorType, bool) const
    {
        return false;
    }
    bool ExportToDirectory(const std::string&, Keywords::SimulatorType, bool) const { return false; }
    bool AllowsVariables() const override { return true; }
    bool HasVariables(const IKeyword*) const override { return false; }
    KeywordVariables* GetVariables(const IKeyword*) const override { return nullptr; }
    bool CheckSections(std::string&) const override { return true; }

private:
    KeywordIterator m_end;
};

/// The keyword of the input's first line, which is taken off it.
inline const Keywords::IKeywordSyntax* ChooseSyntax(std::string_view& input)
{
    const Keywords::IKeywordSyntaxTable& table = *Environment::Instance().GetSyntaxTable();
    const std::size_t end = input.find('\n');
    const std::string_view name = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    if (const Keywords::IKeywordSyntax* const syntax = table.FindSyntax(name, true)) return syntax;
    std::size_t number = 0;
    for (const char c : name.substr(0, 2))
        number = number * 256 + static_cast<unsigned char>(c);
    const Keywords::SyntaxList all = table.GetSyntaxes();
    return all[number % all.size()];
}

} // namespace Fuzz
