#pragma once

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Reads lines from a copy of a text, by the same rules as from a file.
class LineStringReader final : public ILineReader
{
public:
    explicit LineStringReader(std::string text);

    bool Seek(long long offset, int origin) override { return m_lines->Seek(offset, origin); }
    long long Tell() const override { return m_lines->Tell(); }
    bool Eof() const override { return m_lines->Eof(); }
    bool ReadNextDataLine(std::string& line, long long* pos, bool stripSuppressMarker) override
    {
        return m_lines->ReadNextDataLine(line, pos, stripSuppressMarker);
    }
    bool ReadNextLine(std::string& line, long long* pos, bool stripSuppressMarker) override
    {
        return m_lines->ReadNextLine(line, pos, stripSuppressMarker);
    }
    void ReadRange(long long first, long long last, std::string& text) override
    {
        m_lines->ReadRange(first, last, text);
    }
    std::int64_t ReadRaw(char* buffer, std::int64_t count) override { return m_lines->ReadRaw(buffer, count); }
    LineStreamReader* Lines() override { return m_lines.get(); }

private:
    std::string m_text;
    std::unique_ptr<LineStreamReader> m_lines;
};

} // namespace Tarn::Fjel::Core::DeckManager
