#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "keywords/IKeywordsByName.h"
#include <deckmanager/IDeckKeywords.h>

namespace Tarn::Fjel::Core::DeckManager {

class DiskOrder;
class FilePaths;
class Keyword;
class KeywordFile;
class KeywordFileEventArgs;
struct KeywordNames;

/// The deck's keywords, over a shared root file. What a question has found out is kept until a file of the deck
/// changes.
class DeckKeywords : public IDeckKeywords, public IKeywordsByName
{
public:
    DeckKeywords(const std::shared_ptr<KeywordFile>& file, bool variablesAllowed);
    ~DeckKeywords() override;
    DeckKeywords(const DeckKeywords&) = delete;
    DeckKeywords& operator=(const DeckKeywords&) = delete;

    KeywordIterator Begin() const override;
    const KeywordIterator& LogicalEnd() const override;
    const KeywordIterator& End() const override;
    KeywordIterator PhysicalEnd() const override;
    const KeywordIterator& SectionBegin(Keywords::SectionType section) const override;
    const KeywordIterator& SectionEnd(Keywords::SectionType section) const override;
    Keywords::SectionType SectionOf(const KeywordIterator& position) const override;
    KeywordIterator FindKeyword(const IKeyword* keyword) const override;
    KeywordFileIterator GetFileIterator(const KeywordIterator& position) const override;
    KeywordFileIterator GetFileIterator(const IKeyword* keyword) const override;
    KeywordIterator FindKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                    const KeywordIterator& first, const KeywordIterator& last,
                                    bool generatedOnly) const override;
    KeywordIterator FindLastKeywordById(const std::string& name, const Keywords::IKeywordData* data,
                                        const KeywordIterator& first, const KeywordIterator& last,
                                        bool generatedOnly) const override;
    Keywords::IKeywordData* GetKeywordData(const IKeyword* keyword) const override;
    std::shared_ptr<std::string> GetDataText(const IKeyword* keyword) const override;
    std::shared_ptr<std::string> GetRawText(const IKeyword* keyword) const override;
    std::string ReadDataText(ILineReader& reader, long long limit, bool* tagSeen, bool stopAtTag) const override;
    std::string GetComment(const KeywordIterator& position, bool stripHeader) const override;
    IKeywordFile* GetFileOf(const KeywordFileIterator& position) const override;
    IKeywordFile* GetDataFile() const override;
    std::set<IKeywordFile*> GetFiles() const override;
    Service::FileName GetGridFile() const override;
    KeywordIterator FindGridKeyword() const override;
    IKeywordFile* GetIncludedFile(const IKeyword* keyword) const override;
    IKeyword* GetIncludingKeyword(IKeywordFile* file) const override;
    KeywordIterator GetScopeEnd(const KeywordIterator& position, bool generatedOnly) const override;
    void GetEnclosingScope(const KeywordIterator& position, KeywordIterator& head, KeywordIterator& end) const override;
    bool ExportToDirectory(const std::string& directory, const std::string& fileName, Keywords::SimulatorType simulator,
                           bool forceRewrite) const override;
    bool ExportToDirectory(const std::string& directory, Keywords::SimulatorType simulator,
                           bool forceRewrite) const override;
    bool AllowsVariables() const override { return m_variablesAllowed; }
    bool HasVariables(const IKeyword* keyword) const override;
    KeywordVariables* GetVariables(const IKeyword* keyword) const override;
    bool CheckSections(std::string& message) const override;
    const IKeyword* FirstOfName(Keywords::SectionType section, std::string_view name) const override;

    /// Binds the root file's expressions to this deck, and shows them the keywords of the RUNSPEC section.
    virtual void RebuildContext();

    /// Puts the deck on another root file; changes not committed are dropped. Throws `DeckManagerException` for null.
    void SetDataFile(const std::shared_ptr<KeywordFile>& newFile);
    const std::shared_ptr<KeywordFile>& RootFile() const { return m_rootFile; }

    /// The files of the deck, each once, the root first; their text is read. The reference lasts until a file of the
    /// deck changes.
    const std::vector<KeywordFile*>& FilesInDeckOrder() const;

    /// The editor works on this deck from now on, or no longer. While it does, no other deck of the manager drops what
    /// is uncommitted in a file that both may share.
    void SetEdited(bool edited);

    /// Brings the changes of every file to the disk. Throws `DeckManagerException` when a file has changed on the disk
    /// since it was read, when files can't be written, which are named, and when writing them fails: up to then no file
    /// has changed, and everything is as uncommitted as it was. Also when a new text, which is kept, can't take the
    /// place of its file; the other files are committed then.
    void Commit();
    /// Files have another text, or are back at their old one: reads those files anew in which a scan finds other
    /// keywords now. Nothing where something is uncommitted.
    void SettleSections();
    /// What `Commit` looks at first. Throws as it does.
    void RequireCommittable() const;
    /// A file has a whole new text that could not take its place.
    bool IsPending() const;
    /// Writes the text of a file beside it, for the next `Commit` to go on with; keywords in it give their data up. A
    /// file that exchanges keywords with others waits for that commit. Throws as `Commit` does.
    void CommitFile(KeywordFile& file);
    /// Drops the uncommitted changes of every file.
    void Rollback();
    /// Drops what was read, of the root file alone or of every file: the next use reads the disk.
    void Refresh(bool allFiles);

    /// All keywords with the syntax of that name, behind logical ends too: those of a file, then those of the files
    /// that it includes. Each file is looked at once. With `generatedOnly` only generated keywords count, and only
    /// generated INCLUDE keywords are followed.
    std::vector<KeywordFileIterator> FindKeywords(const std::string& name, bool generatedOnly) const;

    /// The position of the walk for a place in a file; logical ends are ignored.
    KeywordIterator DeckPositionOf(const KeywordFileIterator& place) const;
    KeywordIterator StepOverInclude(const KeywordIterator& position) const;

private:
    struct Sections
    {
        std::vector<KeywordIterator> begins;
        std::vector<KeywordIterator> ends;
        std::vector<KeywordIterator> duplicates;
        /// All section keywords, behind the deck's end too.
        std::vector<std::pair<KeywordIterator, Keywords::SectionType>> all;
        bool endedByEND; ///< the setting that the ends follow
    };

    struct Scope
    {
        KeywordIterator head;
        KeywordIterator end;
        std::size_t outer; ///< the place of the scope around it; its own when there is none
    };

    /// Moves behind the keyword's own text.
    static void SkipKeywordData(const Keyword& keyword, ILineReader& reader);
    /// Takes the header of a file and the lines that enclose it out of a comment.
    static void StripGeneratedBlock(std::string& text);
    static const std::string* TextSetAbove(const KeywordFileIterator& place);
    const Keyword* AheadOnDisk(KeywordFileIterator place, const Keyword& keyword) const;
    const Sections& GetSections() const;
    const std::vector<Scope>& GetScopes() const;
    bool FindEnclosingScope(const KeywordIterator& position, KeywordIterator& head, KeywordIterator& end) const;
    bool GoBackToEnclosingScope(const KeywordIterator& position, KeywordIterator& head, KeywordIterator& end) const;
    bool IsPassedByWalk(const KeywordIterator& position) const;
    Keywords::SectionType SectionBehindLogicalEnd(KeywordIterator position) const;
    const FilePaths& Paths() const;
    void BindContext() const;
    void UnbindContext() const;
    bool IsEditedByAnother(const KeywordFile& file) const;
    /// A rollback that leaves the sections as they are, for a deck that goes or is read anew.
    void CancelAll();
    void OnKeywordFileChanged(KeywordFileEventArgs& args);
    void DropWhatMissedMoves() const;
    void DropAll() const;

    std::shared_ptr<KeywordFile> m_rootFile;
    bool m_variablesAllowed;
    mutable std::optional<KeywordIterator> m_logicalEnd;
    mutable std::optional<KeywordIterator> m_physicalEnd;
    mutable std::unique_ptr<Sections> m_sections;
    mutable std::unique_ptr<std::vector<Scope>> m_scopes; ///< in the order of the walk
    mutable std::unique_ptr<DiskOrder> m_diskOrder;
    mutable unsigned long long m_diskOrderStamp = 0;
    mutable std::unique_ptr<KeywordNames> m_names;
    mutable std::unique_ptr<FilePaths> m_paths;
    mutable unsigned long long m_pathsStamp = 0;
    unsigned long long m_sectionsSettled = 0;    ///< of `KeywordFile::ChangesOfSections`
    mutable unsigned long long m_movesHeard = 0; ///< of `KeywordFile::MovesBetweenFiles`
};

} // namespace Tarn::Fjel::Core::DeckManager
