#include "keywords/KeywordStretches.h"

#include <algorithm>

#include "keywords/DataLine.h"
#include "text/TagRecognisers.h"
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

/// What stands behind the tag on a tag line.
std::string_view BehindTag(std::string_view line)
{
    const Environment& environment = Environment::Instance();
    const std::string_view text = Service::Trimmed(line);
    std::size_t size = 0;
    for (const std::string_view tag : {OldGeneratedTag, std::string_view(environment.GetKeywordGeneratedTag()),
                                       std::string_view(environment.GetFileGeneratedTag())})
    {
        if (text.starts_with(tag)) size = std::max(size, tag.size());
    }
    return Service::TrimmedLeft(text.substr(size));
}

} // namespace

KeywordStretches::KeywordStretches(ILineReader& reader, long long position, long long size, bool hasComment)
    : begin(position), behindLine(position), head(position), comment{position, position}, data(position),
      end(position + size)
{
    reader.Seek(begin, 0);
    reader.ReadNextLine(line, nullptr, false);
    behindLine = std::min(reader.Tell(), end);
    if (behindLine - begin > static_cast<long long>(line.size() + 2)) {
        // Longer than a reader of lines takes it.
        reader.ReadRange(begin, behindLine - 1, line);
        Service::StringTrimRight(line);
    }
    FindHead(reader);
    comment = {head, head};
    data = head;
    if (hasComment) FindComment(reader);
}

bool KeywordStretches::NextLine(ILineReader& reader, std::string& text, long long& position) const
{
    position = reader.Tell();
    return position < end && reader.ReadNextLine(text, nullptr, false);
}

void KeywordStretches::FindHead(ILineReader& reader)
{
    head = behindLine;
    reader.Seek(behindLine, 0);
    std::string text;
    bool seenTag = false;
    for (long long at = 0; NextLine(reader, text, at);) {
        const std::string_view plain = VeldaneDeckInfo::SkipSuppressMarker(std::string_view(text));
        if (IsKeywordTagLine(plain) || IsFileTagLine(plain)) {
            seenTag = true;
            head = std::min(reader.Tell(), end);
            if (const std::string_view words = BehindTag(plain); !words.empty())
                behindTags.append(behindTags.empty() ? "" : " ").append(words);
        } else if (seenTag || !Service::AllBlanks(plain)) {
            break;
        }
    }
}

void KeywordStretches::FindComment(ILineReader& reader)
{
    data = end;
    reader.Seek(head, 0);
    std::string text;
    bool beginsAtOnce = false;
    bool found = false;
    bool paragraphEnded = false;
    for (long long at = 0; NextLine(reader, text, at);) {
        if (IsDataLine(text)) {
            data = at;
            break;
        }
        const bool blank = Service::AllBlanks(text);
        if (at == head) beginsAtOnce = VeldaneDeckInfo::BeginsWithCommentMarker(std::string_view(text));
        if (blank) {
            paragraphEnded = found;
        } else if (!paragraphEnded) {
            if (!found) comment.begin = at;
            comment.end = std::min(reader.Tell(), end);
            found = true;
        }
    }
    // Without data, only what begins straight below is the keyword's and not the block above the next one.
    if (data == end && !beginsAtOnce) comment = {head, head};
}

long long KeywordStretches::BehindLeftOverData(ILineReader& reader, long long from) const
{
    reader.Seek(from, 0);
    std::string text;
    for (long long at = 0; NextLine(reader, text, at);) {
        if (!IsDataLine(text)) continue;
        if (Service::IsAlpha(VeldaneDeckInfo::SkipSuppressMarker(std::string_view(text)).front())) break;
        from = std::min(reader.Tell(), end);
    }
    return from;
}

long long KeywordStretches::BehindLastDataLine(ILineReader& reader, long long from) const
{
    reader.Seek(from, 0);
    std::string text;
    for (long long at = 0; NextLine(reader, text, at);) {
        if (IsDataLine(text)) from = std::min(reader.Tell(), end);
    }
    return from;
}

long long KeywordStretches::BehindLineAt(ILineReader& reader, long long from) const
{
    reader.Seek(from, 0);
    std::string text;
    long long at = 0;
    return NextLine(reader, text, at) ? std::min(reader.Tell(), end) : from;
}

} // namespace Tarn::Fjel::Core::DeckManager
