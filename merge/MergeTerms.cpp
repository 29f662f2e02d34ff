#include "merge/MergeTerms.h"

#include <algorithm>
#include <array>

#include "deck/Anchors.h"
#include "files/IteratorAccess.h"
#include "files/IteratorPath.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckPositions.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;

bool IsUserKeyword(const IKeyword& keyword)
{
    return !IsAnchor(keyword);
}

bool IsInclude(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetKind() == KeywordKind::Include;
}

bool IsSectionKeyword(const IKeyword& keyword)
{
    return keyword.GetSyntax()->GetKind() == KeywordKind::Section;
}

bool IsTimeKeyword(const IKeyword& keyword)
{
    const std::string& name = keyword.GetName();
    return name == "DATES" || name == "TSTEP" || name == "TIME";
}

bool IsAnchorHead(const IKeyword& keyword)
{
    return keyword.GetSyntax()->IsScopeStart() && IsAnchor(keyword);
}

bool IsRepeatable(std::string_view name)
{
    static constexpr std::array<std::string_view, 28> names = {
        "ECHO",     "NOECHO",   "SKIP",     "SKIP100",  "SKIP300", "ENDSKIP",  "WARN",
        "NOWARN",   "DATES",    "ADD",      "COPY",     "COPYBOX", "EQUALS",   "MAXVALUE",
        "MINVALUE", "MULTIPLY", "OPERATE",  "ADDREG",   "COPYREG", "EQUALREG", "MULTIREG",
        "MULTREGD", "MULTREGH", "MULTREGP", "OPERATER", "EDITNNC", "EDITNNCR", "MULTFLT"};
    return std::find(names.begin(), names.end(), name) != names.end();
}

bool EndsFile(KeywordFileIterator place)
{
    const int kind = place->GetSyntax()->GetKind();
    if (kind == KeywordKind::EndInc) return true;
    if (kind != KeywordKind::End) return false;
    const KeywordFile* file = IteratorAccess::File(place);
    return ++place == file->End();
}

namespace {

/// Whole lines, each with a line end ahead of it, and one behind all.
std::string AsLines(std::string_view text)
{
    std::string lines = "\n" + std::string(text) + "\n";
    Service::StringReplace(lines, "\r\n", "\n");
    return lines;
}

/// Without white space around, but for that ahead of the first line's text.
std::string_view TrimmedLines(std::string_view lines)
{
    lines = Service::TrimmedRight(lines);
    lines.remove_prefix(std::min(lines.find_first_not_of("\r\n"), lines.size()));
    return lines;
}

} // namespace

bool HoldsLines(const std::string& text, const std::string& lines)
{
    const std::string_view wanted = TrimmedLines(lines);
    return wanted.empty() || AsLines(text).find(AsLines(wanted)) != std::string::npos;
}

std::string WithoutLines(const std::string& text, const std::string& lines)
{
    const std::string_view unwanted = TrimmedLines(lines);
    if (unwanted.empty()) return text;
    const std::string asLines = AsLines(unwanted);
    std::string rest = AsLines(text);
    const std::size_t found = rest.find(asLines);
    if (found == std::string::npos) return text;
    rest.erase(found, asLines.size() - 1);
    return rest.size() > 1 ? rest.substr(1, rest.size() - 2) : std::string();
}

KeywordFile* FileOf(const KeywordIterator& position)
{
    return IteratorAccess::CurrentFile(position);
}

std::string LeafName(const IKeywordFile& file)
{
    return file.GetFileName().GetFileName();
}

bool IsAhead(const KeywordIterator& position, const KeywordIterator& other)
{
    return position != other && position < other;
}

KeywordIterator Behind(KeywordIterator position)
{
    if (*position != nullptr) ++position;
    return position;
}

KeywordFileIterator PlaceBehind(const KeywordIterator& position)
{
    KeywordFileIterator place = IteratorAccess::CurrentFileIter(position);
    if (*position != nullptr) ++place;
    return place;
}

bool IsWithin(const KeywordIterator& position, const IKeywordFile& file)
{
    const IteratorPath::Places path = IteratorPath::Of(position);
    return std::any_of(path.begin(), path.end(),
                       [&](const KeywordFileIterator& place) { return IteratorAccess::File(place) == &file; });
}

namespace {

/// The next anchor behind `position` that `ends` accepts, or the end of the walk.
template <class Ends>
KeywordIterator NextAnchor(KeywordIterator position, const Ends& ends)
{
    for (++position; *position != nullptr; ++position) {
        if (IsAnchor(**position) && ends(**position)) break;
    }
    return position;
}

bool EndsTimeStep(const IKeyword& keyword)
{
    return IsTimeKeyword(keyword) || IsSectionKeyword(keyword) ||
           keyword.GetSyntax()->GetKind() == KeywordKind::EndSkip;
}

/// A head has another position for its end than the one behind it only where it opens a scope of its own.
bool IsTimeStep(const IKeyword& keyword)
{
    return IsTimeKeyword(keyword) && !keyword.GetSyntax()->IsScopeStart();
}

} // namespace

KeywordIterator MergeScopeEnd(const KeywordIterator& position, const IDeck& deck)
{
    if (*position != nullptr && IsTimeStep(**position)) return NextAnchor(position, EndsTimeStep);
    KeywordIterator end = ScopeEnd(position, deck, true);
    if (*end == nullptr || IsAhead(position, end)) return end;
    return NextAnchor(position, IsSectionKeyword);
}

KeywordIterator MergeScopeClose(const KeywordIterator& position, const IDeck& deck)
{
    KeywordIterator end = deck.GetDeckKeywords()->GetScopeEnd(position, true);
    if (*end == nullptr || IsAhead(position, end)) return end;
    return NextAnchor(position, IsSectionKeyword);
}

} // namespace Tarn::Fjel::Core::DeckManager
