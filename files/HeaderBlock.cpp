#include "files/HeaderBlock.h"

#include <algorithm>
#include <utility>

#include "keywords/CommentText.h"
#include "text/LineSource.h"
#include <deckmanager/Environment.h>
#include <deckmanager/ILineReader.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr std::string_view opening = " [";
constexpr std::string_view closing = " ]";

bool IsMark(std::string_view line, std::string_view ending)
{
    const std::string& tag = Environment::Instance().GetDefaultGeneratedTag();
    return line.starts_with(tag) && line.substr(tag.size()).starts_with(ending);
}

} // namespace

bool HeaderBlock::IsOpening(std::string_view line)
{
    return IsMark(line, opening);
}

bool HeaderBlock::IsClosing(std::string_view line)
{
    return IsMark(line, closing);
}

std::string HeaderBlock::Of(std::string text)
{
    const std::string& tag = Environment::Instance().GetDefaultGeneratedTag();
    if (text.ends_with('\n')) text.pop_back();
    std::string block = tag + std::string(opening) + "\n" + AsComment(std::move(text));
    if (!block.ends_with('\n')) block += '\n';
    return block + tag + std::string(closing) + "\n\n";
}

std::optional<HeaderBlock::Place> HeaderBlock::Find(ILineReader& reader, long long begin, long long end)
{
    if (!reader.Seek(begin, 0)) return std::nullopt;
    LineSource source(reader);
    std::string_view line;
    long long lineBegin = begin;
    const auto next = [&] {
        lineBegin = reader.Tell();
        return lineBegin < end && source.Next(line);
    };
    do {
        if (!next()) return std::nullopt;
        const std::string_view text = Service::TrimmedLeft(line);
        if (!text.empty() && !VeldaneDeckInfo::BeginsWithCommentMarker(text)) return std::nullopt;
    } while (!IsOpening(line));
    const long long blockBegin = lineBegin;
    do {
        if (!next()) return std::nullopt;
    } while (!IsClosing(line));
    while (next() && Service::AllBlanks(line)) {
    }
    // The reader stands behind the line that isn't empty, or at the end.
    return Place{blockBegin, std::min(lineBegin, end)};
}

} // namespace Tarn::Fjel::Core::DeckManager
