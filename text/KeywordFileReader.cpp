#include "text/KeywordFileReader.h"

#include <algorithm>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/FileSystem.h>
#include <tarn/service/Strings.h>

#include "text/LineFileReader.h"

namespace Tarn::Fjel::Core::DeckManager {

void KeywordFileReader::SetPath(const std::string& path)
{
    m_file = path;
    if (path == m_path) return;
    m_path = path;
    m_lineStarts.reset();
}

std::unique_ptr<ILineReader> KeywordFileReader::OpenLineReader(bool required) const
{
    if (m_path.empty()) return nullptr;
    auto reader = std::make_unique<LineFileReader>();
    if (reader->Open(m_path)) return reader;
    if (required) {
        Service::FileSystem::ErrorCode error;
        const Service::FileStatus status = Service::FileSystem::Instance().Status(m_path, true, error);
        if (!status.IsRegularFile())
            throw DeckManagerException("KeywordFileReader::LineReader: file does not exist: " + m_path);
    }
    return nullptr;
}

void KeywordFileReader::ReadLineStarts()
{
    m_lineStarts = std::make_unique<std::vector<LineStart>>();
    const std::unique_ptr<ILineReader> reader = OpenLineReader(false);
    LineStreamReader* lines = reader ? reader->Lines() : nullptr;
    if (!lines) return;
    // Behind a byte order mark the first line begins where its text does: there its keyword stands.
    const long long textBegin = LineStreamReader::MarkSize(*lines);
    std::string_view line;
    long long position = 0;
    while (lines->NextLineView(line, &position)) {
        // A suppressed line counts by what stands behind its marker, as the scan takes it.
        const std::string_view text = Service::TrimmedLeft(VeldaneDeckInfo::SkipSuppressMarker(line));
        if (text.empty() || !Service::IsAlpha(text.front())) continue;
        m_lineStarts->push_back({std::max(position, textBegin), lines->LineNumber()});
    }
}

int KeywordFileReader::LineNumberAt(long long position)
{
    if (!m_lineStarts) ReadLineStarts();
    const auto found =
        std::lower_bound(m_lineStarts->begin(), m_lineStarts->end(), position,
                         [](const LineStart& start, long long sought) { return start.position < sought; });
    return found == m_lineStarts->end() ? -1 : found->number;
}

} // namespace Tarn::Fjel::Core::DeckManager
