#include "text/LineStringReader.h"

#include <stdexcept>

namespace Tarn::Fjel::Core::DeckManager {

LineStringReader::LineStringReader(std::string text)
    : m_text(std::move(text)), m_lines(std::make_unique<LineStreamReader>())
{
    m_lines->AttachText(m_text);
    if (!m_lines->IsGood()) throw std::invalid_argument("LineStringReader: can not process input string as stream");
}

} // namespace Tarn::Fjel::Core::DeckManager
