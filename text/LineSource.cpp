#include "text/LineSource.h"

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

bool LineSource::Next(std::string_view& line, long long* pos)
{
    if (m_lines) {
        if (!m_lines->NextLineView(line, pos)) return false;
        line = VeldaneDeckInfo::SkipSuppressMarker(line);
        return true;
    }
    if (!m_reader.ReadNextLine(m_line, pos, true)) return false;
    line = m_line;
    return true;
}

bool LineSource::NextData(std::string_view& line, long long* pos, bool stripSuppressMarker)
{
    if (m_lines) return m_lines->NextDataLineView(line, pos, stripSuppressMarker);
    if (!m_reader.ReadNextDataLine(m_line, pos, stripSuppressMarker)) return false;
    line = m_line;
    return true;
}

bool LineSource::NextCandidate(std::string_view& line, long long* pos, bool allowIndented)
{
    if (m_lines && !allowIndented) return m_lines->HopToCandidateLine(line, pos);
    while (NextData(line, pos, false)) {
        std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(line);
        if (allowIndented) text = Service::TrimmedLeft(text);
        if (!text.empty() && Service::IsAlpha(text.front())) return true;
    }
    return false;
}

int LineSource::LineNumber() const
{
    return m_lines ? m_lines->LineNumber() : -1;
}

} // namespace Tarn::Fjel::Core::DeckManager
