#pragma once

#include <cstring>
#include <istream>
#include <memory>
#include <sstream>
#include <string>

#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/VeldaneDeckInfo.h>

namespace TestText {

/// The rules of line reading, step by step over `std::istream::getline`, with no thought for speed. What the fast
/// readers are held to.
class LiteralLineReader : public Tarn::Fjel::Core::DeckManager::ILineReader
{
    using DeckInfo = Tarn::Fjel::Core::DeckManager::VeldaneDeckInfo;

public:
    explicit LiteralLineReader(const std::string& text) : m_stream(std::make_unique<std::istringstream>(text)) {}
    explicit LiteralLineReader(std::unique_ptr<std::istream> stream) : m_stream(std::move(stream)) {}

    int LineNumber() const { return m_lineNumber; }
    bool IsGood() const { return m_stream->good(); }
    std::istream& Stream() { return *m_stream; }

    bool Seek(long long offset, int origin) override
    {
        const bool flagged = !m_stream->good();
        if (flagged) m_stream->clear();
        long long target = origin == 0 ? offset : origin == 2 ? m_position - offset : m_position + offset;
        if (target >= m_position && target - m_position < 1024 && !flagged && m_moved) {
            for (long long i = m_position; i < target; ++i) {
                if (m_stream->rdbuf()->sbumpc() == std::char_traits<char>::eof()) {
                    m_stream->setstate(std::ios::eofbit);
                    break;
                }
            }
        } else {
            m_stream->seekg(target);
        }
        m_moved = m_stream->good();
        m_position = target;
        m_lineNumber = target <= 0 ? 0 : -1;
        return m_stream->good();
    }

    long long Tell() const override { return m_position; }
    bool Eof() const override { return m_stream->eof(); }

    bool ReadNextLine(std::string& line, long long* pos, bool strip) override
    {
        if (pos) *pos = m_position;
        if (!ReadRawLine()) return false;
        line = m_line;
        if (strip) Strip(line);
        return true;
    }

    bool ReadNextDataLine(std::string& line, long long* pos, bool strip) override
    {
        for (;;) {
            if (pos) *pos = m_position;
            if (!ReadRawLine()) return false;
            if (!IsDataLine()) continue;
            line = m_line;
            if (strip) Strip(line);
            return true;
        }
    }

    void ReadRange(long long first, long long last, std::string& text) override
    {
        text.clear();
        if (first > last) return;
        const long long position = m_position;
        const int lineNumber = m_lineNumber;
        Seek(first, 0);
        char c = 0;
        for (long long i = first; i <= last && m_stream->get(c); ++i) {
            ++m_position;
            if (c != '\r') text += c;
        }
        Seek(position, 0);
        m_lineNumber = lineNumber;
    }

    long long ReadChars(std::string& text, long long count, bool strip)
    {
        text.clear();
        long long done = 0;
        char c = 0;
        while (done < count && m_stream->get(c)) {
            ++done;
            if (c != '\r') text += c;
            if (c == '\n' && m_lineNumber >= 0) ++m_lineNumber;
        }
        m_position += done;
        if (strip) {
            std::size_t found = 0;
            while ((found = text.find("--@@@", found)) != std::string::npos)
                text.erase(found, 5);
        }
        return done;
    }

    std::int64_t ReadRaw(char* buffer, std::int64_t count) override
    {
        std::int64_t done = 0;
        char c = 0;
        while (done < count && m_stream->get(c))
            buffer[done++] = c;
        m_position += done;
        if (done > 0) m_lineNumber = -1;
        return done;
    }

private:
    bool ReadRawLine()
    {
        if (!m_stream->good()) return false;
        char buffer[1025];
        m_stream->getline(buffer, 1025, '\n');
        const long long extracted = m_stream->gcount();
        m_position += extracted;
        const bool failed = m_stream->fail();
        const bool endsWithLineEnd = !failed && !m_stream->eof();
        m_line.assign(buffer, static_cast<std::size_t>(endsWithLineEnd ? extracted - 1 : extracted));
        if (m_lineNumber == 0 && m_line.compare(0, 3, "\xEF\xBB\xBF") == 0) m_line.erase(0, 3);
        if (m_lineNumber >= 0) ++m_lineNumber;
        bool overlong = false;
        if (failed) {
            if (extracted > 0 && extracted != 1024) return false;
            overlong = extracted == 1024;
            m_stream->clear(m_stream->rdstate() & ~std::ios::failbit);
        }
        if (!m_line.empty() && m_line.back() == '\r') m_line.pop_back();
        if (overlong && m_stream->good()) {
            int c = 0;
            do {
                c = m_stream->rdbuf()->sbumpc();
                if (c == std::char_traits<char>::eof()) {
                    m_stream->setstate(std::ios::eofbit);
                    break;
                }
                ++m_position;
            } while (c != '\n');
        }
        return true;
    }

    bool IsDataLine() const
    {
        std::size_t first = 0;
        while (first < m_line.size() && DeckInfo::IsSpace(m_line[first]))
            ++first;
        if (first == m_line.size()) return false;
        std::string rest = m_line.substr(first);
        if (rest.compare(0, 2, "--") != 0) return true;
        if (!Tarn::Fjel::Core::DeckManager::Environment::Instance().KeywordSuppressionEnabled()) return false;
        if (rest.compare(0, 5, "--@@@") != 0) return false;
        Strip(rest);
        return rest.compare(0, 2, "--") != 0;
    }

    static void Strip(std::string& line)
    {
        while (line.compare(0, 5, "--@@@") == 0)
            line.erase(0, 5);
    }

    std::unique_ptr<std::istream> m_stream;
    long long m_position = 0;
    int m_lineNumber = 0;
    bool m_moved = true;
    std::string m_line;
};

} // namespace TestText
