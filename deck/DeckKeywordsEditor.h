#pragma once

#include <vector>

#include <deckmanager/FileRenamePlan.h>
#include <deckmanager/IDeckKeywordsEditor.h>

namespace Tarn::Fjel::Core::DeckManager {

class Deck;
class FileRenames;
class IKeywordFileManager;
class Keyword;
class KeywordFile;

/// The one editor of a deck manager. It guards, converts positions and hands on.
class DeckKeywordsEditor : public IDeckKeywordsEditor
{
public:
    explicit DeckKeywordsEditor(IKeywordFileManager& fileManager) : m_fileManager(fileManager) {}
    ~DeckKeywordsEditor() override;

    IDeck* GetDeck() const override;
    void Close() override;
    void Discard() override;
    void Commit() override;
    void CommitFile(IKeywordFile* file) override;
    bool ImportDeck(const std::string& fileName, bool managed, bool checkDataFiles) override;
    IKeyword* GetOrCreateSection(Keywords::SectionType section, bool* existed) override;
    IKeyword* InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                            std::unique_ptr<Keywords::IKeywordData> data, const std::string& name) override;
    IKeyword* InsertKeyword(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                            std::unique_ptr<Keywords::IKeywordData> data, const std::string& name) override;
    IKeyword* InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordFileIterator& position,
                                const std::string& text) override;
    IKeyword* InsertKeywordText(const Keywords::IKeywordSyntax& syntax, const KeywordIterator& position,
                                const std::string& text) override;
    bool MoveKeyword(const KeywordIterator& from, const KeywordIterator& to) override;
    bool MoveKeyword(const KeywordFileIterator& from, const KeywordFileIterator& to) override;
    bool RemoveKeywords(const KeywordIterator& first, const KeywordIterator& last) override;
    bool RemoveKeyword(const KeywordIterator& position) override;
    bool RemoveKeyword(const KeywordFileIterator& position) override;
    bool ResolveVariables(const KeywordIterator& position, IKeywordVariablesResolver& resolver) override;
    bool ResolveVariables(const KeywordFileIterator& position, IKeywordVariablesResolver& resolver) override;
    bool SetDataText(const KeywordIterator& position, const std::string& text) override;
    bool SetDataText(const KeywordFileIterator& position, const std::string& text) override;
    bool SetData(const KeywordIterator& position, std::unique_ptr<Keywords::IKeywordData> data) override;
    bool SetData(const KeywordFileIterator& position, std::unique_ptr<Keywords::IKeywordData> data) override;
    bool SetKeywordText(const KeywordIterator& position, const std::string& text) override;
    bool SetKeywordText(const KeywordFileIterator& position, const std::string& text) override;
    bool SetComment(const KeywordIterator& position, const std::string& text) override;
    bool SetComment(const KeywordFileIterator& position, const std::string& text) override;
    bool CommentOut(const KeywordIterator& position) override;
    bool CommentOut(const KeywordFileIterator& position) override;
    bool Suppress(const KeywordIterator& position) override;
    bool Suppress(const KeywordFileIterator& position) override;
    bool Unsuppress(const KeywordIterator& position) override;
    bool Unsuppress(const KeywordFileIterator& position) override;
    bool SetHeaderComment(IKeywordFile* file, const std::string& text) override;
    void OverwriteFileFromPath(IKeywordFile* file, const std::string& path, bool commitFirst, bool keepTag) override;
    void OverwriteFile(IKeywordFile* file, std::istream& stream, bool replace, bool commitFirst, bool keepTag) override;
    bool ApplyFileRenames(const std::map<Service::FileName, Service::FileName>& names, bool generatedOnly) override;
    /// See `FileRenamePlan`.
    FileRenamePlan PlanFileRenames(const std::map<Service::FileName, Service::FileName>& names, bool generatedOnly);
    void TagAllKeywords() override;
    void UntagAllKeywords() override;
    void TagKeyword(const IKeyword* keyword) override;
    void UntagKeyword(const IKeyword* keyword) override;
    void SortKeywords() override;

    bool MergeUserKeywords(const IDeck& source, std::set<KeywordIterator>& replaced,
                           const std::set<IKeywordFile*>& excluded,
                           const std::map<std::string, std::string>& includeNames, MergeReport* report) override;
    void MergeComments(const IDeck& source, const std::set<IKeywordFile*>& excluded,
                       const std::map<std::string, std::string>& includeNames, MergeReport* report) override;

    /// Replaces the comment above a keyword.
    bool SetCommentAbove(const KeywordFileIterator& position, const std::string& text);
    bool SetCommentAbove(const KeywordIterator& position, const std::string& text);

    /// Makes a deck current. Uncommitted changes of the one that was are dropped.
    void SetDeck(Deck* deck);

protected:
    std::unique_ptr<Keywords::IKeywordData> TakeData(const IKeyword* keyword) override;

private:
    void CleanUp();
    void CommitRenamed(FileRenames& renames);
    void Release();
    bool IsOpenToEdits(const KeywordFile* file) const;
    KeywordFile* FileToEdit(const KeywordFileIterator& position) const;
    Keyword* KeywordToEdit(const KeywordFileIterator& position) const;
    KeywordFileIterator PlaceOf(const KeywordIterator& position) const;
    bool IsOfDeck(const KeywordFile* file) const;
    void SetTag(const IKeyword* keyword, bool tagged);
    void SetTagOnChanged(bool tagged);
    void SortSection(const KeywordIterator& start, const KeywordIterator& next,
                     const std::vector<KeywordFileIterator>& deckEnd);
    void MoveToFixedPlace(Keywords::SectionType section, const KeywordIterator& start, const KeywordIterator& next);
    void SortFileRange(Keywords::SectionType section, const KeywordFileIterator& begin, const KeywordFileIterator& end);
    void Arrange(Keywords::SectionType section, const std::vector<KeywordFileIterator>& places);
    bool MoveScope(const KeywordFileIterator& from, const KeywordFileIterator& to, bool generatedOnly);

    IKeywordFileManager& m_fileManager;
    Deck* m_deck = nullptr;
    bool m_merging = false; ///< read-only files are open to edits
};

} // namespace Tarn::Fjel::Core::DeckManager
