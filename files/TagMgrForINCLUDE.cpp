#include "files/TagMgrForINCLUDE.h"

#include "files/KeywordFile.h"
#include "files/KeywordINCLUDE.h"

namespace Tarn::Fjel::Core::DeckManager {

TagMgrForINCLUDE::TagMgrForINCLUDE(const KeywordINCLUDE& keyword) : m_keyword(keyword), m_inner(keyword) {}

bool TagMgrForINCLUDE::IsTagged() const
{
    if (m_inner.IsTagged()) return true;
    const KeywordFile* file = m_keyword.Owner() != nullptr ? m_keyword.IncludedFile() : nullptr;
    if (file == nullptr) return false;
    file->Begin(); // the tag is known once the file has been loaded
    return file->IsFileTagged();
}

} // namespace Tarn::Fjel::Core::DeckManager
