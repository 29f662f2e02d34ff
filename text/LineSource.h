#pragma once

#include <string>
#include <string_view>

#include <deckmanager/ILineReader.h>

namespace Tarn::Fjel::Core::DeckManager {

class LineStreamReader;

/// Reads lines of any `ILineReader` as views: straight from the reader's window where it has one, else through a string
/// of its own. A view is good until the next read.
class LineSource
{
public:
    explicit LineSource(ILineReader& reader) : m_reader(reader), m_lines(reader.Lines()) {}

    /// The next line, without suppress markers at its head.
    bool Next(std::string_view& line, long long* pos = nullptr);

    /// The next data line, with or without its suppress markers.
    bool NextData(std::string_view& line, long long* pos, bool stripSuppressMarker);

    /// The next line that can be a keyword line, as it stands: suppress markers aside its first character is a letter,
    /// or, if `allowIndented`, its first one that isn't white space.
    bool NextCandidate(std::string_view& line, long long* pos, bool allowIndented);

    /// The number of lines read so far; -1 if the reader doesn't know it.
    int LineNumber() const;

    LineStreamReader* Lines() const { return m_lines; }

private:
    ILineReader& m_reader;
    LineStreamReader* m_lines;
    std::string m_line;
};

} // namespace Tarn::Fjel::Core::DeckManager
