// Reads any text as a deck file: the scan for keywords, the step over their data, and the looks into each extent.

#include <cstdint>
#include <cstdlib>
#include <sstream>
#include <string>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/ISectionContextQuery.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/SectionType.h>

#include "text/LineStreamReader.h"
#include "text/LineStringReader.h"
#include "text/ScannedKeyword.h"
#include "text/SectionNames.h"

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

namespace {

class SectionSoFar : public ISectionContextQuery
{
public:
    Keywords::SectionType GetSection() const override { return section; }
    Keywords::SectionType section = Keywords::SectionType::None;
};

void Require(bool condition)
{
    if (!condition) std::abort();
}

/// The keywords' places as one number, so that two scans can be compared.
std::uint64_t Scan(ILineReader& reader, bool allowIndented, long long size)
{
    SectionSoFar query;
    ScannedKeyword found;
    std::uint64_t places = 0;
    long long last = -1;
    while (LineReaderUtil::FindNextKeywordSyntax(reader, query, allowIndented, nullptr, found)) {
        Require(found.pos > last && found.pos < size && reader.Tell() <= size);
        last = found.pos;
        places = places * 31 + static_cast<std::uint64_t>(found.pos) + found.name.size();
        FindSection(found.name, query.section);
        try {
            LineReaderUtil::ConsumeDataLines(found.syntax, reader);
        } catch (const DeckManagerException&) {
            places = places * 31 + 7;
        }
    }
    return places;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size == 0) return 0;
    // The first byte chooses the settings.
    const unsigned settings = data[0];
    Environment& environment = Environment::Instance();
    environment.EnableKeywordSuppression((settings & 1) == 0);
    environment.SetPATHSSupport((settings & 2) != 0);
    const bool allowIndented = (settings & 4) != 0;
    const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
    const auto length = static_cast<long long>(text.size());

    LineStringReader reader(text);
    const std::uint64_t places = Scan(reader, allowIndented, length);
    std::istringstream stream(text);
    LineStreamReader fromStream;
    fromStream.Attach(&stream);
    Require(Scan(fromStream, allowIndented, length) == places);

    // Any extent, also one that isn't a keyword's.
    const long long pos = settings * 7 % (length + 1);
    std::string comment;
    bool sawTag = false;
    LineReaderUtil::ExtractComment(&reader, pos, length - pos, comment);
    LineReaderUtil::AdvanceToNonTagLine(&reader, pos, length - pos, &sawTag, (settings & 8) != 0);
    LineReaderUtil::AdvanceToDataLine(&reader, pos, length - pos);
    LineReaderUtil::NextLineIsSuppressed(&reader, pos);
    reader.Seek(pos, 0);
    long long dataPos = 0;
    LineReaderUtil::CheckForCommentIssues(reader, comment, dataPos);
    Require(reader.Tell() == pos);

    std::string lines = text;
    LineReaderUtil::ActivateLines(lines);
    const std::string active = lines;
    LineReaderUtil::SuppressLines(lines);
    LineReaderUtil::ActivateLines(lines);
    Require(lines == active);
    return 0;
}
