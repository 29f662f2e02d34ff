#include "files/KeywordFileEventArgs.h"

namespace Tarn::Fjel::Core::DeckManager {

KeywordFileEventArgs::KeywordFileEventArgs(KeywordFile& file, Kind kind, Keyword* keyword)
    : m_file(&file), m_kind(kind), m_keyword(keyword)
{
    static unsigned long long serial = 0;
    m_serial = ++serial;
}

} // namespace Tarn::Fjel::Core::DeckManager
