#pragma once

#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "merge/IPositionSearch.h"
#include <deckmanager/MergeReport.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IDeckKeywordsEditor;
class IKeyword;
class IKeywordFile;
class KeywordFile;

/// Carries what a user has written in the source deck into the target, the current deck of an editor. One merger, one
/// run. The source is only read; the target is changed through the editor, and not committed.
class DeckMerger
{
public:
    using SearchMaker = std::function<std::unique_ptr<IPositionSearch>(MergeWork&)>;

    /// Everything must outlive the merger. `report` may be null; without `makeSearch` the usual search is used.
    DeckMerger(IDeckKeywordsEditor& editor, const IDeck& source, const IncludeNames& includeNames,
               MergeReport* report = nullptr, const SearchMaker& makeSearch = nullptr);
    ~DeckMerger();
    DeckMerger(const DeckMerger&) = delete;
    DeckMerger& operator=(const DeckMerger&) = delete;

    /// Keywords and suppression. `replaced` receives the source position of each user's keyword that took the place of
    /// a generated one. Source files with the name of an excluded one, or that the target has too, are passed over.
    /// False when something of the user's is not carried whole.
    bool MergeUserKeywords(std::set<KeywordIterator>& replaced, const std::set<IKeywordFile*>& excluded);

    /// The comments above generated keywords and section keywords, beside their names, and at the ends of files.
    void MergeComments(const std::set<IKeywordFile*>& excluded);

private:
    /// A head that the merge has made in the target, and the closing keyword that it made for it.
    struct ExportedScope
    {
        const IKeyword* head;   ///< null: gone
        const IKeyword* closer; ///< null: none, or gone
    };

    struct LastCopied
    {
        KeywordIterator source;
        KeywordFileIterator target; ///< straight behind the copy
        bool hasMoved = false;      ///< the keyword that stood there is gone
    };

    /// A user's keyword as it is to be written.
    struct CopyText
    {
        std::string data;
        std::string comment; ///< the keyword comment, where it isn't part of the data
        bool isCut = false;
    };

    /// A generated keyword that a user's has taken the place of.
    struct Twin
    {
        KeywordFileIterator follower; ///< what stood straight behind it
        std::size_t blocks;           ///< how many stretches of the disk stood ahead of it
        std::string comment;          ///< the one above it
    };

    /// What stands above a keyword of the target, and what this run puts there.
    struct CommentsAbove
    {
        std::string own;
        std::string before; ///< what the keyword was to bear
        std::string added;
        std::string all;
        std::unordered_set<std::string> lines; ///< of all

        void Add(const std::string& text);
        bool Holds(const std::string& text) const;
    };

    struct CommentScope;

    // --- DeckMerger.cpp
    void Prepare(const std::set<IKeywordFile*>& excluded);
    bool IsExcluded(const IKeywordFile& file) const;
    bool IsExcluded(const KeywordIterator& position) const;
    bool HasSomethingToCarry() const;
    void MergeAheadOfSections();
    void MergeUserScope(const KeywordIterator& section, std::set<KeywordIterator>& replaced);
    void TransferSuppression(const KeywordIterator& position, const ScopeStack& stack);
    void InsertUserKeyword(const KeywordIterator& position, const ScopeStack& stack,
                           std::set<KeywordIterator>& replaced);
    bool IsInUserScope(const KeywordIterator& position, const KeywordIterator& head) const;
    bool CameWithUserInclude(IKeywordFile& file) const;
    KeywordIterator FindTwin(const KeywordIterator& position, const KeywordIterator& head,
                             const KeywordIterator& scope);
    Twin RemoveTwin(const KeywordIterator& twin);
    bool FollowsLastCopied(const KeywordIterator& position) const;
    bool WouldOvertakeLastCopied(const KeywordIterator& position, const KeywordFileIterator& place);
    KeywordFileIterator PlaceOfUserKeyword(const KeywordIterator& position, const ScopeStack& stack,
                                           const KeywordIterator& scope);
    std::vector<KeywordIterator> SectionKeywords(const IDeck& deck) const;

    // --- DeckMergerCopy.cpp
    std::optional<CopyText> TextToCopy(const KeywordIterator& position) const;
    KeywordFileIterator CopyKeyword(const KeywordFileIterator& place, const KeywordIterator& position,
                                    const CopyText& text, const std::string& above);
    const IKeyword* Insert(const Keywords::IKeywordSyntax& syntax, KeywordFileIterator place, const std::string& name);
    void Remove(const KeywordFileIterator& place);
    void SetTag(const KeywordFileIterator& place, bool tagged);
    void OpenToUserKeywords(KeywordFile& file);
    void TellOfMissingFile(const KeywordIterator& position, const IKeyword& copy);
    void TellOfLostWords();
    void Refuse(const KeywordIterator& position, const std::string& why);
    void Note(MergeReport::Action action, const KeywordIterator& position, const KeywordFileIterator& place,
              const std::string& text = "");

    // --- DeckMergerScopes.cpp
    std::pair<KeywordIterator, bool> ResolveScope(ScopeStack stack, bool createMissing);
    KeywordIterator ExportMissingScope(const KeywordIterator& parent, const ScopeStack& stack,
                                       const KeywordIterator* previousHead);
    KeywordIterator MakeSection(const KeywordIterator& section);
    KeywordFileIterator PlaceOfMissingHead(const KeywordIterator& head, const KeywordIterator& parent,
                                           const KeywordIterator* previousHead);
    KeywordIterator ExportHead(KeywordFileIterator& place, const KeywordIterator& head);
    void CheckThatScopeEnds(const KeywordIterator& position, const KeywordIterator& head) const;
    void SettleExportedScopes();

    // --- DeckMergerComments.cpp
    void MergeCommentScope(const KeywordIterator& section, const KeywordIterator& destination);
    void OpenCommentScope(std::vector<CommentScope>& open, const KeywordIterator& head,
                          const KeywordIterator* hint) const;
    void ResolveCommentScope(CommentScope& scope, const ScopeStack& stack);
    KeywordIterator DestinationOfComment(const KeywordIterator& position, CommentScope& scope, const ScopeStack& stack);
    void ApplyComment(KeywordIterator position, const std::string& comment, const KeywordIterator& source);
    void WriteComments();
    void AddKeywordComment(const KeywordIterator& position, const KeywordIterator& destination, bool isCounterpart);
    void ApplyKeywordComment(const KeywordIterator& position, CommentScope& scope, const ScopeStack& stack);
    void ApplyRemark(const KeywordIterator& position, CommentScope& scope, const ScopeStack& stack);
    void AddRemark(const KeywordIterator& position, const KeywordIterator& destination, bool isCounterpart);
    void GatherRemarks();
    void MergeCommentsAheadOfSections();

    // --- DeckMergerEnds.cpp
    void CarryTextBehindEnds();
    void MergeCommentsAtEnds();
    void MergeCommentAboveEndInc(KeywordFile& file);
    void AddAtEnd(KeywordFile& file, const std::string& text, MergeReport::Action action);
    void NoteAtEnd(MergeReport::Action action, KeywordFile& file, const KeywordFile& target) const;
    KeywordFile& CounterpartOf(KeywordFile& file) const;

    IDeckKeywordsEditor& m_editor;
    const IDeck& m_source;
    const IDeck& m_target;
    MergeReport* m_report;
    MergeWork m_work;
    std::unique_ptr<IPositionSearch> m_search;

    std::unordered_set<std::string> m_excludedNames;
    std::unordered_set<const IKeywordFile*> m_sharedFiles;
    std::unordered_map<const IKeywordFile*, bool> m_broughtByUser; ///< files of the source
    std::unordered_set<const IKeyword*> m_copied;                  ///< of the source
    std::list<ExportedScope> m_exportedScopes;
    std::unordered_map<const IKeyword*, ExportedScope*> m_exportedKeywords; ///< heads and closing keywords
    std::optional<LastCopied> m_lastCopied;
    bool m_isWhole = true;
    std::unordered_map<const IKeyword*, CommentsAbove> m_comments; ///< of keywords of the target
    std::unordered_map<const IKeyword*, std::string> m_remarks;    ///< beside the names of anchors of the source
};

} // namespace Tarn::Fjel::Core::DeckManager
