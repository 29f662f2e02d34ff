#pragma once

#include <vector>

#include <deckmanager/KeywordIterator.h>
#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;

/// One walk over the keywords of a deck, in deck order, that knows where it is: it counts, and keeps track of section,
/// file and depth in passing.
///
///     for (DeckWalk walk(session, false); walk.Next();)
///         use(walk.Keyword());
class DeckWalk
{
public:
    /// With `all` the walk goes on behind the deck's end, and behind the end of each file.
    DeckWalk(DeckSession& session, bool all);

    /// To the next keyword, the first one at first. False at the end.
    bool Next();

    const Tarn::Fjel::Core::DeckManager::IKeyword& Keyword() const { return *m_keyword; }
    const Tarn::Fjel::Core::DeckManager::KeywordIterator& Position() const { return m_position; }
    /// From 1: the place in `ls`. After the walk, how many keywords there were.
    int Index() const { return m_index; }
    /// The kind of the keyword (`KeywordKind`).
    int Kind() const { return m_kind; }
    /// The section in force at the keyword.
    Tarn::Fjel::Core::Keywords::SectionType Section() const { return m_section; }
    /// The number of the keyword's file in the session.
    int File() const { return m_files.back().number; }
    /// How many INCLUDEs lie above the keyword.
    int Depth() const { return static_cast<int>(m_files.size()) - 1; }
    /// Changes whenever section or file do.
    int Stretch() const { return m_stretch; }

private:
    struct OpenFile
    {
        Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        int number;
    };

    void EnterFile(Tarn::Fjel::Core::DeckManager::IKeywordFile* file);

    DeckSession& m_session;
    Tarn::Fjel::Core::DeckManager::KeywordIterator m_position;
    const Tarn::Fjel::Core::DeckManager::IKeyword* m_keyword = nullptr;
    bool m_all;
    int m_index = 0;
    int m_kind = 0;
    int m_stretch = 0;
    Tarn::Fjel::Core::Keywords::SectionType m_section = Tarn::Fjel::Core::Keywords::SectionType::None;
    std::vector<OpenFile> m_files; // from the top file to the keyword's own
};

} // namespace Deckman
