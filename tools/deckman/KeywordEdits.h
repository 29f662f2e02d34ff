#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Where.h"

namespace Tarn::Fjel::Core::DeckManager {
class IDeckKeywordsEditor;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;
class Output;
struct Options;

/// The edits of one command: made in memory, and then shown or brought to the disk.
class KeywordEdits
{
public:
    KeywordEdits(DeckSession& session, const Options& options);

    Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& Editor() const { return m_editor; }

    /// The one keyword at a place, with the path behind it. Throws `Failure` when there is none, and when a name alone
    /// doesn't say which of several is meant.
    Where::Place Find(const std::string& where) const;
    /// The same, without a path.
    Where::Place FindKeyword(const std::string& where, std::string_view verb) const;

    /// A keyword's text was, and is. Empty: there was no such keyword, or there is none any more.
    struct Change
    {
        const Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        int line; ///< as the file stands on the disk
        std::string name;
        std::string before;
        std::string after;
    };
    void Add(Change change) { m_changes.push_back(std::move(change)); }

    /// Tells what has changed, and commits unless nothing is to be done. Throws `Failure` when that fails.
    void Finish(Output& out);

private:
    void RequireOne(const std::string& where, const Where::Place& place) const;
    void Print(Output& out) const;

    DeckSession& m_session;
    const Options& m_options;
    Tarn::Fjel::Core::DeckManager::IDeckKeywordsEditor& m_editor;
    std::vector<Change> m_changes;
};

} // namespace Deckman
