#include "text/LineStreamReader.h"

#include <algorithm>
#include <fstream>
#include <limits>

#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/FileStream.h>
#include <tarn/service/Strings.h>

#include "text/LineScan.h"

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// What is read first, behind a jump, and what a read grows to. Who begins at the beginning reads on, mostly, and most
/// files of a deck are small.
constexpr std::size_t FirstFill = 64 * 1024;
constexpr std::size_t SmallestFill = 4096;
constexpr std::size_t LargestFill = 256 * 1024;

/// Moves shorter than this step over the bytes, where the text is no further away.
constexpr long long ShortMove = 1024;

/// Texts longer than this grow as they are read, whatever length was asked for.
constexpr long long LargestReserve = 1 << 20;

/// `a + b`, held within the range of positions.
long long AddSaturated(long long a, long long b)
{
    constexpr long long least = std::numeric_limits<long long>::min();
    constexpr long long most = std::numeric_limits<long long>::max();
    if (b > 0 && a > most - b) return most;
    if (b < 0 && a < least - b) return least;
    return a + b;
}

void AppendWithoutCR(std::string& text, const char* bytes, std::size_t count)
{
    const char* const end = bytes + count;
    while (bytes < end) {
        const void* found = std::memchr(bytes, '\r', static_cast<std::size_t>(end - bytes));
        const char* stop = found ? static_cast<const char*>(found) : end;
        text.append(bytes, stop);
        bytes = found ? stop + 1 : end;
    }
}

} // namespace

LineStreamReader::~LineStreamReader()
{
    LeaveStream();
}

/// Gives a borrowed stream back at the place where the reader stands.
void LineStreamReader::LeaveStream()
{
    if (!m_stream || m_owned || m_next == m_end) return;
    try {
        if (std::streambuf* buffer = m_stream->rdbuf()) buffer->pubseekoff(m_next - m_end, std::ios::cur, std::ios::in);
    } catch (...) {
    }
}

void LineStreamReader::PointAt(const char* begin, const char* next, const char* end)
{
    m_begin = begin;
    m_next = next;
    m_end = end;
}

void LineStreamReader::Reset(std::istream* stream)
{
    m_stream = stream;
    m_text = {};
    m_attached = stream != nullptr;
    m_startsAtZero = false;
    m_firstLineEnd.reset();
    m_positionTrue = true;
    m_flags = 0;
    m_lineNumber = 0;
    m_windowPos = 0;
    m_fillSize = FirstFill;
    PointAt(m_lineBuffer, m_lineBuffer, m_lineBuffer);
    m_exhausted = true;
    if (!stream) return;

    if (stream->eof()) m_flags |= EofFlag;
    if (stream->bad())
        m_flags |= BadFlag;
    else if (stream->fail())
        m_flags |= FailFlag;
    if (std::streambuf* buffer = stream->rdbuf()) {
        m_exhausted = false;
        m_startsAtZero = buffer->pubseekoff(0, std::ios::cur, std::ios::in) == std::streampos(0);
    }
}

void LineStreamReader::Attach(std::istream* stream)
{
    LeaveStream();
    m_owned.reset();
    Reset(stream);
}

void LineStreamReader::Attach(std::unique_ptr<std::istream>& stream)
{
    LeaveStream();
    m_owned = std::move(stream);
    Reset(m_owned.get());
}

void LineStreamReader::AttachText(std::string_view text)
{
    Attach(nullptr);
    m_text = text.data() ? text : std::string_view(m_lineBuffer, 0);
    m_attached = true;
    PointAt(m_text.data(), m_text.data(), m_text.data() + m_text.size());
}

void LineStreamReader::Close()
{
    LeaveStream();
    if (m_stream) {
        if (auto* file = dynamic_cast<Service::FileInputStream*>(m_stream)) {
            file->Close();
        } else if (auto* buffer = dynamic_cast<std::filebuf*>(m_stream->rdbuf())) {
            if (buffer->is_open() && !buffer->close()) m_stream->setstate(std::ios::failbit);
        }
    }
    m_owned.reset();
    Reset(nullptr);
}

Service::FileInputStream* LineStreamReader::File() const
{
    auto* const file = m_startsAtZero ? dynamic_cast<Service::FileInputStream*>(m_stream) : nullptr;
    return file && file->Status().IsRegularFile() ? file : nullptr;
}

/// Reads on behind the window, in which only the bytes ahead of the position stay. False if nothing came.
bool LineStreamReader::Fill()
{
    if (m_exhausted) return false;
    const auto kept = static_cast<std::size_t>(m_end - m_next);
    if (kept + m_fillSize > m_capacity) {
        const std::size_t capacity = kept + m_fillSize + MaxLineLength;
        auto larger = std::make_unique_for_overwrite<char[]>(capacity);
        std::memcpy(larger.get(), m_next, kept);
        m_window = std::move(larger);
        m_capacity = capacity;
    } else {
        std::memmove(m_window.get(), m_next, kept);
    }
    m_windowPos += m_next - m_begin;
    PointAt(m_window.get(), m_window.get(), m_window.get() + kept);

    std::streamsize read = 0;
    try {
        read = m_stream->rdbuf()->sgetn(m_window.get() + kept, static_cast<std::streamsize>(m_fillSize));
    } catch (...) {
        m_flags |= BadFlag;
        m_positionTrue = false;
        return false;
    }
    read = std::max<std::streamsize>(read, 0);
    m_exhausted = static_cast<std::size_t>(read) < m_fillSize;
    m_fillSize = std::min(2 * m_fillSize, LargestFill);
    m_end += read;
    return read > 0;
}

bool LineStreamReader::NextLineAcrossWindow(std::string_view& line)
{
    if (!IsGood()) return false;

    const void* found = nullptr;
    std::size_t searched = 0;
    std::size_t available = 0;
    do {
        available = static_cast<std::size_t>(m_end - m_next);
        found = std::memchr(m_next + searched, '\n', available - searched);
        searched = available;
    } while (!found && available <= MaxLineLength && Fill());

    const char* const begin = m_next;
    const char* const lineEnd = static_cast<const char*>(found);
    std::size_t size = found ? static_cast<std::size_t>(lineEnd - begin) : available;
    if (size <= MaxLineLength) {
        if (!found) {
            m_next = m_end;
            if ((m_flags & BadFlag) != 0) return false;
            m_flags |= EofFlag;
        } else {
            m_next = lineEnd + 1;
        }
        line = std::string_view(begin, size);
    } else {
        line = std::string_view(begin, MaxLineLength);
        if (found) {
            m_next = lineEnd + 1;
        } else {
            std::memcpy(m_lineBuffer, begin, MaxLineLength);
            line = std::string_view(m_lineBuffer, MaxLineLength);
            DropRestOfLine();
        }
    }

    if (m_lineNumber == 0 && line.starts_with(ByteOrderMark)) line.remove_prefix(ByteOrderMark.size());
    if (m_lineNumber >= 0) ++m_lineNumber;
    if (line.ends_with('\r')) line.remove_suffix(1);
    return true;
}

/// Passes over bytes through the next line end. REQUIRES: the window holds none behind the position.
void LineStreamReader::DropRestOfLine()
{
    for (;;) {
        m_next = m_end;
        if (!Fill()) {
            if ((m_flags & BadFlag) == 0) m_flags |= EofFlag;
            return;
        }
        if (const void* found = std::memchr(m_next, '\n', static_cast<std::size_t>(m_end - m_next))) {
            m_next = static_cast<const char*>(found) + 1;
            return;
        }
    }
}

bool LineStreamReader::NextDataLineView(std::string_view& line, long long* pos, bool stripSuppressMarker)
{
    std::string_view candidate;
    while (NextLineView(candidate, pos)) {
        const std::string_view text = Service::TrimmedLeft(candidate);
        if (text.empty()) continue;
        if (VeldaneDeckInfo::BeginsWithCommentMarker(text)) {
            if (!VeldaneDeckInfo::BeginsWithSuppressMarker(text)) continue;
            if (!Environment::Instance().KeywordSuppressionEnabled()) continue;
            if (VeldaneDeckInfo::BeginsWithCommentMarker(VeldaneDeckInfo::SkipSuppressMarker(text))) continue;
            if (stripSuppressMarker) candidate = VeldaneDeckInfo::SkipSuppressMarker(candidate);
        }
        line = candidate;
        return true;
    }
    return false;
}

bool LineStreamReader::HopToCandidateLine(std::string_view& line, long long* pos)
{
    const bool suppression = Environment::Instance().KeywordSuppressionEnabled();
    for (;;) {
        // The first line may begin with a byte order mark: it goes the long way.
        if (m_flags == 0 && m_lineNumber != 0) {
            const LineScan scan = FindLineHead(m_next, m_end);
            m_next = scan.lineStart;
            if (m_lineNumber > 0) m_lineNumber += scan.lines;
        }
        std::string_view candidate;
        if (!NextLineView(candidate, pos)) return false;
        if (candidate.empty()) continue;
        if (suppression && candidate.front() == VeldaneDeckInfo::DASH) {
            const std::string_view text = VeldaneDeckInfo::SkipSuppressMarker(candidate);
            if (text.empty() || !Service::IsAlpha(text.front())) continue;
        } else if (!Service::IsAlpha(candidate.front())) {
            continue;
        }
        line = candidate;
        return true;
    }
}

std::string_view LineStreamReader::Ahead(bool& whole)
{
    while (static_cast<std::size_t>(m_end - m_next) < MaxLineLength && Fill()) {
    }
    whole = m_exhausted;
    return std::string_view(m_next, static_cast<std::size_t>(m_end - m_next));
}

bool LineStreamReader::ReadNextDataLine(std::string& line, long long* pos, bool stripSuppressMarker)
{
    std::string_view view;
    if (!NextDataLineView(view, pos, stripSuppressMarker)) return false;
    line.assign(view);
    return true;
}

bool LineStreamReader::ReadNextLine(std::string& line, long long* pos, bool stripSuppressMarker)
{
    std::string_view view;
    if (!NextLineView(view, pos)) return false;
    if (stripSuppressMarker) view = VeldaneDeckInfo::SkipSuppressMarker(view);
    line.assign(view);
    return true;
}

bool LineStreamReader::IsAtEnd()
{
    if (!m_attached) return false;
    if (ClearEof()) return true;
    if (m_flags != 0 || m_next != m_end || Fill()) return false;
    if ((m_flags & BadFlag) != 0) return false;
    m_exhausted = !m_stream;
    return true;
}

bool LineStreamReader::ClearEof()
{
    if (!Eof()) return false;
    m_flags &= ~static_cast<unsigned>(EofFlag);
    m_exhausted = !m_stream;
    return true;
}

bool LineStreamReader::Seek(long long offset, int origin)
{
    if (!m_attached) return false;
    const bool flagged = m_flags != 0;
    m_flags = 0;

    const long long position = Tell();
    long long target = offset;
    if (origin == 2)
        target = offset == std::numeric_limits<long long>::min() ? std::numeric_limits<long long>::max()
                                                                 : AddSaturated(position, -offset);
    else if (origin != 0)
        target = AddSaturated(position, offset);

    if (!flagged && m_positionTrue && target >= position && target - position < ShortMove)
        SkipAhead(target - position);
    else
        Jump(target);
    m_lineNumber = target <= 0 ? 0 : -1;
    return IsGood();
}

/// Steps over bytes. Where the text ends before, the position is the target all the same.
void LineStreamReader::SkipAhead(long long distance)
{
    const long long target = Tell() + distance;
    while (m_end - m_next < distance) {
        if (Fill()) continue;
        if ((m_flags & BadFlag) == 0) m_flags |= EofFlag;
        m_positionTrue = false;
        PointAt(m_lineBuffer, m_lineBuffer, m_lineBuffer);
        m_windowPos = target;
        return;
    }
    m_next += distance;
}

void LineStreamReader::Jump(long long target)
{
    const bool known = m_positionTrue;
    m_positionTrue = true;
    if (!m_stream) {
        if (target >= 0 && target <= static_cast<long long>(m_text.size())) {
            m_windowPos = 0;
            PointAt(m_text.data(), m_text.data() + target, m_text.data() + m_text.size());
            return;
        }
    } else {
        if (known && m_startsAtZero && target >= m_windowPos && target <= m_windowPos + (m_end - m_begin)) {
            m_next = m_begin + (target - m_windowPos);
            return;
        }
        m_fillSize = SmallestFill;
        m_exhausted = false;
        bool moved = false;
        try {
            moved = target >= 0 && m_stream->rdbuf() &&
                    m_stream->rdbuf()->pubseekpos(target, std::ios::in) != std::streampos(std::streamoff(-1));
        } catch (...) {
            m_flags |= BadFlag;
        }
        if (moved) {
            PointAt(m_lineBuffer, m_lineBuffer, m_lineBuffer);
            m_windowPos = target;
            return;
        }
    }
    m_flags |= FailFlag;
    m_positionTrue = false;
    PointAt(m_lineBuffer, m_lineBuffer, m_lineBuffer);
    m_windowPos = target;
}

/// Hands up to `count` bytes to `sink`, in pieces. A text that ends before sets the flags that a read of one byte there
/// sets.
template <class Sink>
long long LineStreamReader::Extract(long long count, Sink sink)
{
    if (count > 0 && !IsGood()) {
        m_flags |= FailFlag;
        return 0;
    }
    long long done = 0;
    while (done < count) {
        if (m_next == m_end && !Fill()) {
            m_flags |= (m_flags & BadFlag) != 0 ? FailFlag : EofFlag | FailFlag;
            break;
        }
        const auto piece = static_cast<std::size_t>(std::min<long long>(count - done, m_end - m_next));
        sink(m_next, piece);
        m_next += piece;
        done += static_cast<long long>(piece);
    }
    return done;
}

std::int64_t LineStreamReader::MarkSize(ILineReader& reader)
{
    constexpr auto size = static_cast<std::int64_t>(ByteOrderMark.size());
    std::string head;
    reader.ReadRange(0, size - 1, head);
    return head == ByteOrderMark ? size : 0;
}

void LineStreamReader::ReadRange(long long first, long long last, std::string& text)
{
    text.clear();
    if (first > last) return;
    const long long savedPosition = Tell();
    const std::int64_t savedLineNumber = m_lineNumber;
    Seek(first, 0);
    const long long count = AddSaturated(AddSaturated(last, -std::max<long long>(first, 0)), 1);
    text.reserve(static_cast<std::size_t>(std::clamp<long long>(count, 0, LargestReserve)));
    Extract(count, [&text](const char* bytes, std::size_t size) { AppendWithoutCR(text, bytes, size); });
    Seek(savedPosition, 0);
    m_lineNumber = savedLineNumber;
}

long long LineStreamReader::ReadChars(std::string& text, long long count, bool stripSuppressMarker)
{
    text.clear();
    text.reserve(static_cast<std::size_t>(std::clamp<long long>(count, 0, LargestReserve)));
    const long long done = Extract(count, [this, &text](const char* bytes, std::size_t size) {
        AppendWithoutCR(text, bytes, size);
        if (m_lineNumber >= 0) m_lineNumber += std::count(bytes, bytes + size, '\n');
    });
    if (stripSuppressMarker) Service::StringReplace(text, VeldaneDeckInfo::SuppressMarker(), "");
    return done;
}

std::int64_t LineStreamReader::ReadRaw(char* buffer, std::int64_t count)
{
    if (count <= 0) return 0;
    if (!IsGood()) {
        m_flags |= FailFlag;
        return 0;
    }
    const std::int64_t held = std::min<std::int64_t>(count, m_end - m_next);
    std::memcpy(buffer, m_next, static_cast<std::size_t>(held));
    m_next += held;
    std::int64_t done = held;
    if (done < count && !m_exhausted && count - done >= static_cast<std::int64_t>(m_fillSize)) {
        // Straight into the caller's memory.
        m_windowPos = Tell();
        PointAt(m_lineBuffer, m_lineBuffer, m_lineBuffer);
        try {
            const std::streamsize read =
                std::max<std::streamsize>(m_stream->rdbuf()->sgetn(buffer + done, count - done), 0);
            done += read;
            m_windowPos += read;
            m_exhausted = done < count;
        } catch (...) {
            m_flags |= BadFlag | FailFlag;
            m_positionTrue = false;
            return done;
        }
    }
    done += Extract(count - done, [target = buffer + done](const char* bytes, std::size_t size) mutable {
        std::memcpy(target, bytes, size);
        target += size;
    });
    if (done > 0) m_lineNumber = -1;
    return done;
}

} // namespace Tarn::Fjel::Core::DeckManager
