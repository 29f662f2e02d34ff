#include "text/LineEnd.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "text/LineFileReader.h"
#include "text/LineStreamReader.h"
#include <tarn/service/FileStatus.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

std::optional<LineEnd> FindFirstLineEnd(ILineReader& reader)
{
    if (!reader.Seek(0, 0)) return std::nullopt;
    std::array<char, 4096> block;
    char last = 0;
    for (;;) {
        const std::int64_t count = reader.ReadRaw(block.data(), static_cast<std::int64_t>(block.size()));
        if (count <= 0) return std::nullopt;
        const char* const end = block.data() + count;
        const char* const found = std::find(static_cast<const char*>(block.data()), end, '\n');
        if (found != end) {
            if (found != block.data()) last = found[-1];
            return last == '\r' ? LineEnd::CrLf : LineEnd::Lf;
        }
        last = end[-1];
    }
}

} // namespace

LineEnd PlatformLineEnd()
{
#if defined(_WIN32)
    return LineEnd::CrLf;
#else
    return LineEnd::Lf;
#endif
}

std::optional<LineEnd> FirstLineEnd(ILineReader& reader)
{
    LineStreamReader* const lines = reader.Lines();
    if (!lines) return FindFirstLineEnd(reader);
    if (!lines->m_firstLineEnd) lines->m_firstLineEnd = FindFirstLineEnd(reader);
    return *lines->m_firstLineEnd;
}

std::optional<LineEnd> FirstLineEnd(const std::string& fileName)
{
    // To open a pipe would wait for someone who writes to it.
    if (!Service::FileStatus::Of(fileName).IsRegularFile()) return std::nullopt;
    LineFileReader reader;
    if (!reader.Open(fileName)) return std::nullopt;
    return FirstLineEnd(reader);
}

std::size_t LineEndConverter::Convert(std::string_view piece, char* out)
{
    char* to = out;
    const auto copy = [&to](const char* begin, const char* end) {
        std::memcpy(to, begin, static_cast<std::size_t>(end - begin));
        to += end - begin;
    };
    if (piece.empty()) return 0;
    if (m_crHeld && piece.front() != '\n') *to++ = '\r';
    m_crHeld = false;
    const char* at = piece.data();
    const char* end = at + piece.size();
    if (m_loneCr == LoneCr::Keep && end[-1] == '\r') {
        m_crHeld = true;
        --end;
    }
    while (at != end) {
        const std::size_t left = static_cast<std::size_t>(end - at);
        const char* const feed = static_cast<const char*>(std::memchr(at, '\n', left));
        const char* const lineEnd = feed ? feed : end;
        if (m_loneCr == LoneCr::Drop) {
            while (at != lineEnd) {
                const void* const found = std::memchr(at, '\r', static_cast<std::size_t>(lineEnd - at));
                const char* const stop = found ? static_cast<const char*>(found) : lineEnd;
                copy(at, stop);
                at = found ? stop + 1 : lineEnd;
            }
        } else {
            copy(at, feed && lineEnd != at && lineEnd[-1] == '\r' ? lineEnd - 1 : lineEnd);
        }
        if (!feed) break;
        if (m_to == LineEnd::CrLf) *to++ = '\r';
        *to++ = '\n';
        at = feed + 1;
    }
    return static_cast<std::size_t>(to - out);
}

} // namespace Tarn::Fjel::Core::DeckManager
