#include "session/DeckWalk.h"

#include <algorithm>

#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>

#include "output/Progress.h"
#include "session/DeckSession.h"
#include "session/Sections.h"

namespace Deckman {

namespace Keywords = Tarn::Fjel::Core::Keywords;

DeckWalk::DeckWalk(DeckSession& session, bool all)
    : m_session(session), m_position(session.Keywords().Begin()), m_all(all)
{
    if (all) m_position.SetIgnoreLogicalEnds(true);
}

bool DeckWalk::Next()
{
    if (m_index > 0) ++m_position;
    const DeckManager::IKeyword* keyword = *m_position;
    if (keyword == nullptr) return false;

    m_kind = keyword->GetSyntax()->GetKind();
    if (m_kind == Keywords::KeywordKind::End && !m_all) return false;

    m_keyword = keyword;
    if ((++m_index & 63) == 0) Progress::Tell(m_index, "keywords");
    if (DeckManager::IKeywordFile* file = keyword->GetFile(); m_files.empty() || file != m_files.back().file)
        EnterFile(file);
    if (m_kind == Keywords::KeywordKind::Section) {
        m_section = FindSection(keyword->GetName()).value_or(Keywords::SectionType::None);
        ++m_stretch;
    }
    return true;
}

/// Up into an included file, or down to one that is open already: an INCLUDE shows ahead of what it brings in, and no
/// file lies inside itself.
void DeckWalk::EnterFile(DeckManager::IKeywordFile* file)
{
    const auto open =
        std::find_if(m_files.begin(), m_files.end(), [file](const OpenFile& f) { return f.file == file; });
    if (open != m_files.end())
        m_files.erase(open + 1, m_files.end());
    else
        m_files.push_back({file, m_session.FileNumber(file)});
    ++m_stretch;
}

} // namespace Deckman
