#pragma once

#include "text/LineStreamReader.h"

namespace Tarn::Fjel::Core::DeckManager {

/// Reads lines from a file, as bytes: positions are offsets in the file on every platform.
class LineFileReader final : public ILineReader
{
public:
    LineFileReader();
    ~LineFileReader() override;

    /// Closes what was open and opens `fileName`. False if it can't be opened; the reader then has no text.
    bool Open(const std::string& fileName);
    void Close() { m_lines->Close(); }

    int LineNumber() const { return m_lines->LineNumber(); }
    bool IsGood() const { return m_lines->IsGood(); }
    bool IsAtEnd() { return m_lines->IsAtEnd(); }
    bool ClearEof() { return m_lines->ClearEof(); }
    /// Without suppress markers.
    long long ReadChars(std::string& text, long long count) { return m_lines->ReadChars(text, count, true); }

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
    std::unique_ptr<LineStreamReader> m_lines;
};

} // namespace Tarn::Fjel::Core::DeckManager
