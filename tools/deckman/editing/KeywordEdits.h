#pragma once

#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <deckmanager/KeywordFileIterator.h>
#include <tarn/keywords/SectionType.h>

#include "data/ItemPath.h"
#include "editing/ChangeLog.h"
#include "session/DeckSession.h"
#include "session/Where.h"

namespace Deckman {

class Output;
class PlaceIndex;

/// The edits of one command, or of all lines of a script: made in memory, and then shown or brought to the disk.
///
/// Places are those of the deck as it was opened, whatever has been edited since. A keyword that has been inserted goes
/// by its name: it counts behind those that the deck had, in the order of insertion.
class KeywordEdits
{
public:
    /// `options` say what is to be done with the edits.
    KeywordEdits(DeckSession& session, const Options& options);

    DeckSession& Session() const { return m_session; }
    Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& Editor() const { return m_editor; }

    /// Notes where everything stands, for the places of an edit to come; `line` are its options. To be called for all
    /// edits ahead of the first.
    void Prepare(const Options& line);
    /// The edits from now on are those of that line of a script.
    void BeginLine(int line) { m_line = line; }

    struct Target
    {
        const Tarn::Fjel::Core::DeckManager::IKeyword* keyword = nullptr;
        Tarn::Fjel::Core::DeckManager::KeywordFileIterator position;
        Tarn::Fjel::Core::Keywords::SectionType section = Tarn::Fjel::Core::Keywords::SectionType::None;
        ItemPath items;
    };
    /// The one keyword at a place, with the path behind it, as the options of the edit say. Throws `Failure` when there
    /// is none, when it has been removed, and when a name alone doesn't say which of several is meant.
    Target Find(const std::string& where, const Options& options);
    /// The same, without a path.
    Target FindKeyword(const std::string& where, const Options& options, std::string_view verb);
    /// All keywords, each once, with --all those behind the deck's end too.
    std::vector<Target> AllKeywords(const Options& options);

    /// The section in which a keyword would stand ahead of that one, or behind it in its file; `None` ahead of the
    /// first.
    Tarn::Fjel::Core::Keywords::SectionType SectionAt(const Target& target, bool behind);
    /// The position of a keyword in the deck's walk.
    Tarn::Fjel::Core::DeckManager::KeywordIterator DeckPosition(const Target& target) const;

    /// Announce edits; see `ChangeLog`. What is inserted is told of afterwards, with the section that it stands in.
    ChangeLog& Log() { return m_log; }
    void NoteInserted(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword,
                      Tarn::Fjel::Core::Keywords::SectionType section);
    void NoteRemoval(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    void NoteMove(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);

    /// Refuses an edit of a keyword for which the editor is closed, with its place: `what` can't be done to it.
    [[noreturn]] void RefuseClosed(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, std::string_view what) const;
    /// Refuses an edit of a keyword, with its place.
    [[noreturn]] void Refuse(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, const std::string& reason) const;

    /// Tells what has changed, and commits unless nothing is to be done. Throws `Failure` when that fails, when the
    /// edits have brought an error into the deck, and when some file of it can't be read.
    void Finish(Output& out);

private:
    PlaceIndex& Places(bool all) const;
    template <class Note>
    void InIndices(const Note& note) const;
    const WhereLimits& LimitsOfLine(const Options& options);
    void RequireOne(const Where& where, const std::string& text, const WhereLimits& limits, int index);
    void NoteSections(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    Target TargetAt(PlaceIndex& places, int index, ItemPath items) const;

    DeckSession& m_session;
    const Options& m_options;
    Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& m_editor;
    ChangeLog m_log;
    std::vector<Tarn::Fjel::Core::DeckManager::IKeywordFile*> m_filesBefore; ///< those of the deck as it was opened
    std::map<std::pair<bool, std::string>, WhereLimits> m_limits;            ///< by --all and --at
    int m_errorsBefore = 0;
    int m_line = 0;                               ///< of a script
    std::map<std::pair<bool, int>, int> m_goneAt; ///< the lines that removed keywords, by index with --all or without
    bool m_sectionsChanged = false;               ///< the index doesn't know the sections any more
};

} // namespace Deckman
