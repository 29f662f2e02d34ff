#pragma once

#include <cstddef>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;
class Output;

/// What the edits of one command come to, keyword by keyword. Each edit is announced before it is made; what has become
/// of the keywords is looked at in the end, so that several edits of one keyword are one change.
class ChangeLog
{
public:
    /// Nobody wants to see the changes where `isShown` is false; then no text is kept.
    ChangeLog(DeckSession& session, bool isShown);

    /// The keyword's own text is about to change.
    void Touch(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// The comment above it is.
    void TouchAbove(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// It is about to move, with what stands above it.
    void NoteMove(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    void NoteRemoval(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// It has been inserted.
    void NoteInserted(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// That text has been put above a keyword that has been inserted.
    void NoteAhead(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, const std::string& text);
    /// The text above the first keyword of the file is about to change.
    void NoteHeader(const Tarn::Fjel::Core::DeckManager::IKeywordFile& file);

    /// A text was, and is. Empty: there was none, or there is none any more.
    struct Change
    {
        const Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        int line;         ///< as the file stands on the disk
        std::string name; ///< of the keyword; empty for the head of a file
        std::string before;
        std::string after;
    };
    /// In the order of files and lines. REQUIRES: nothing has been committed.
    std::vector<Change> Changes();

    /// Comments have changed beside keywords that came or went, or something changes beside words that no catalogue
    /// knows, which stay where they stand: it takes the whole text to show what becomes of them.
    bool IsIntricate() const;

    /// As a unified diff.
    void PrintDiff(const std::vector<Change>& changes, Output& out) const;
    /// A line each: {"action":"changed","file","line","name","old","new"}. Files that a commit has let go since need
    /// not exist any more.
    void PrintJson(const std::vector<Change>& changes, Output& out) const;

private:
    struct Record
    {
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword;
        std::string name;
        const Tarn::Fjel::Core::DeckManager::IKeywordFile* file; ///< where it stood; null for a new one
        int line = 0;
        std::string text = {};  ///< its own, as it was
        std::string block = {}; ///< what followed up to the next keyword line
        std::string ahead = {}; ///< what stood above it, where that moves along or changes
        bool changesAhead = false;
        bool isMoved = false;
        bool isGone = false;
    };
    /// Where something that has come to a file stands in its text.
    struct Arrival
    {
        const Record* record;
        const Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        int line;
    };

    Record& RecordOf(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    std::string BlockAhead(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword) const;
    std::string CommentAbove(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword) const;
    std::string TextNow(const Record& record) const;
    std::vector<Arrival> Arrivals() const;
    int LineBehind(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword) const;
    bool IsKeptApart(const Record& record) const;
    Change HeadOf(const Tarn::Fjel::Core::DeckManager::IKeywordFile& file) const;

    DeckSession& m_session;
    bool m_isShown;
    std::deque<Record> m_records;
    std::unordered_map<const Tarn::Fjel::Core::DeckManager::IKeyword*, Record*> m_byKeyword;
    std::vector<const Tarn::Fjel::Core::DeckManager::IKeywordFile*> m_headers;
    std::unordered_map<const Tarn::Fjel::Core::DeckManager::IKeywordFile*, std::string> m_shownNames; ///< of changes
};

} // namespace Deckman
