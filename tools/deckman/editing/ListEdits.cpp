// The edits that change which keywords there are, and where.

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include <deckmanager/DeckPositions.h>
#include <deckmanager/DeckUtils.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/SetCommentAbove.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "editing/DataEdits.h"
#include "session/Sections.h"

namespace Deckman {

using DeckManager::DataTextEditor;
using DeckManager::DeckUtils;
using DeckManager::IKeyword;
using DeckManager::IKeywordFile;
using DeckManager::KeywordFileIterator;

namespace {

/// A place between two keywords of a file.
struct Gap
{
    KeywordFileIterator position; ///< what comes goes ahead of it
    SectionType section;
    std::string place;                   ///< for messages
    const IKeyword* neighbour = nullptr; ///< the keyword beside which it was asked for, if so
};

Gap GapBeside(KeywordEdits& run, const Options& options, std::string_view verb)
{
    const KeywordEdits::Target target = run.FindKeyword(options.target, options, verb);
    Gap gap{target.position, run.SectionAt(target, options.after), run.Session().PlaceOf(*target.keyword),
            target.keyword};
    if (options.after) ++gap.position;
    return gap;
}

/// The end of a section: ahead of the next section keyword, or of the deck's end. Where that opens an included file,
/// the place is ahead of the INCLUDE.
Gap GapAtEndOf(KeywordEdits& run, SectionType section)
{
    DeckSession& session = run.Session();
    const DeckManager::IDeckKeywords& keywords = session.Keywords();
    bool existed = false;
    const IKeyword* head = run.Editor().GetOrCreateSection(section, &existed);
    if (head == nullptr) {
        throw Failure(NotThere, fmt::format("The deck has no section {}, and none can be made in it.", NameOf(section)),
                      session.PlaceOf(*keywords.GetDataFile()));
    }
    if (!existed) {
        run.NoteInserted(*head, section);
        KeywordFileIterator position = head->GetFile()->Find(head);
        return {++position, section, session.PlaceOf(*head->GetFile())};
    }
    KeywordFileIterator position = keywords.GetFileIterator(keywords.SectionEnd(section));
    IKeywordFile* file = keywords.GetFileOf(position);
    while (position == file->Begin()) {
        const IKeyword* include = keywords.GetIncludingKeyword(file);
        if (include == nullptr) break;
        file = include->GetFile();
        position = file->Find(include);
    }
    return {position, section, session.PlaceOf(*head)};
}

/// One keyword of a text that is to be inserted.
struct Piece
{
    const Keywords::IKeywordSyntax* syntax;
    std::string name;
    SectionType section;
    std::string above; ///< the comment above it
    std::string text;
};

std::string_view FirstWord(std::string_view text)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        const std::string_view words = Service::TrimmedLeft(line);
        if (!words.empty() && !DeckManager::VeldaneDeckInfo::BeginsWithCommentMarker(words))
            return words.substr(0, words.find_first_of(" \t"));
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return {};
}

/// The keywords of a text, each with the comment above it. A comment at the end stays with the last.
std::vector<Piece> Cut(const std::string& text, const Gap& gap)
{
    const std::vector<DeckUtils::KeywordLine> lines = DeckUtils::findKeywordLines(text, gap.section);
    const std::size_t begin = lines.empty() ? text.size() : lines.front().begin;
    if (const std::string_view word = FirstWord(std::string_view(text).substr(0, begin)); !word.empty())
        throw Failure(NotThere, fmt::format("The text begins with {}, which is no keyword.", word), gap.place);
    if (lines.empty()) throw Failure(WrongUsage, "The text of a keyword is expected, and there is none.");
    std::vector<Piece> pieces;
    std::string above = text.substr(0, begin);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const DeckUtils::KeywordLine& line = lines[i];
        if (line.syntax == nullptr) {
            throw Failure(NotThere, fmt::format("{} may not stand in the section {}.", line.name, NameOf(line.section)),
                          gap.place);
        }
        const bool isLast = i + 1 == lines.size();
        const std::size_t end = isLast ? text.size() : lines[i + 1].begin;
        const DeckManager::KeywordText whole(*line.syntax, line.name, text.substr(line.begin, end - line.begin));
        pieces.push_back(
            {line.syntax, line.name, line.section, std::move(above), isLast ? whole.All() : std::string(whole.Own())});
        above = isLast ? std::string() : std::string(whole.TrailingBlock());
    }
    return pieces;
}

/// A section that is there already would be gone on with, and what stands below be in it.
void RequireNewSections(const KeywordEdits& run, const std::vector<Piece>& pieces, const Gap& gap)
{
    const DeckManager::IDeckKeywords& keywords = run.Session().Keywords();
    for (const Piece& piece : pieces) {
        if (piece.syntax->GetKind() != Keywords::KeywordKind::Section) continue;
        const DeckManager::KeywordIterator& begin = keywords.SectionBegin(piece.section);
        if (begin == keywords.End()) continue;
        const IKeyword& present = **begin;
        const std::string place =
            present.GetLine() > 0 ? run.Session().PlaceOf(present) : run.Session().PlaceOf(*present.GetFile());
        throw Failure(NotThere, fmt::format("The deck has a section {} already, at {}.", piece.name, place), gap.place);
    }
}

void InsertPiece(KeywordEdits& run, Piece piece, const Gap& gap)
{
    const bool isSuppressed =
        Service::TrimmedLeft(piece.text).starts_with(DeckManager::VeldaneDeckInfo::SUPPRESS_MARKER);
    if (isSuppressed) DeckManager::LineReaderUtil::ActivateLines(piece.text);
    const IKeyword* inserted = run.Editor().InsertKeywordText(*piece.syntax, gap.position, piece.text + "\n");
    if (inserted == nullptr) {
        throw Failure(NotThere,
                      fmt::format("{} cannot be inserted here: it is not one keyword and its data, or the place is "
                                  "closed to edits.",
                                  piece.name),
                      gap.place);
    }
    run.NoteInserted(*inserted, piece.section);
    const KeywordFileIterator position = inserted->GetFile()->Find(inserted);
    bool isDone = !isSuppressed || run.Editor().Suppress(position);
    if (!Service::AllBlanks(piece.above)) {
        run.Log().NoteAhead(*inserted, piece.above);
        isDone = DeckManager::SetCommentAbove(run.Editor(), position, piece.above) && isDone;
    }
    if (!isDone) throw Failure(NotThere, fmt::format("{} cannot be inserted here.", piece.name), gap.place);
    try {
        RequireReadable(run, *inserted);
    } catch (const Failure& failure) {
        throw Failure(failure.Status(), failure.what(), gap.place);
    }
    TellWarnings(run, *inserted, gap.place);
}

} // namespace

void EditInsert(KeywordEdits& run, const Options& options)
{
    const std::string text = GivenText(options);
    if (Service::AllBlanks(text)) throw Failure(WrongUsage, "The text of a keyword is expected, and there is none.");
    const Gap gap =
        options.filter.section ? GapAtEndOf(run, *options.filter.section) : GapBeside(run, options, "insert");
    std::vector<Piece> pieces = Cut(text, gap);
    RequireNewSections(run, pieces, gap);
    for (Piece& piece : pieces)
        InsertPiece(run, std::move(piece), gap);
}

namespace {

/// What rm is to take out: a keyword, or an element of one's data.
struct Removal
{
    KeywordEdits::Target target;
    std::vector<int> path;
};

Removal RemovalAt(KeywordEdits& run, const std::string& where, const Options& options)
{
    Removal removal{run.Find(where, options), {}};
    const IKeyword& keyword = *removal.target.keyword;
    if (removal.target.items.IsEmpty()) return removal;
    if (options.withComment) throw Failure(WrongUsage, "--with-comment goes with whole keywords.", where);
    for (const DataTextEditor::Step& step : PathTo(run, removal.target))
        removal.path.push_back(step.index);
    if (removal.path.empty()) run.Refuse(keyword, fmt::format("{} names nothing that can be removed.", where));
    return removal;
}

void RemoveElement(KeywordEdits& run, const Removal& removal)
{
    const IKeyword& keyword = *removal.target.keyword;
    const std::shared_ptr<std::string> text = run.Session().Keywords().GetDataText(&keyword);
    if (!text) run.Refuse(keyword, fmt::format("{} has no data, and so no items.", keyword.GetName()));
    const DataTextEditor::Path path(removal.path.begin(), removal.path.end());
    DataTextEditor::Result result = DataTextEditor::ForKeyword(run.Session().Keywords(), keyword).Remove(*text, path);
    if (result.outcome == DataTextEditor::Outcome::NoSuchItem)
        result.reason += " To leave an item to its default, set it to 1*.";
    TakeText(run, removal.target, result);
}

void RemoveKeyword(KeywordEdits& run, const KeywordEdits::Target& target, bool withComment)
{
    const IKeyword& keyword = *target.keyword;
    bool isDone = true;
    if (withComment && !run.Session().Keywords().GetComment(run.DeckPosition(target), true).empty()) {
        run.Log().TouchAbove(keyword);
        isDone = DeckManager::SetCommentAbove(run.Editor(), target.position, {});
    }
    run.NoteRemoval(keyword);
    // One that can't be removed is still there.
    if (!isDone || !run.Editor().RemoveKeyword(target.position)) run.RefuseClosed(keyword, "removed");
}

} // namespace

void EditRm(KeywordEdits& run, const Options& options)
{
    // All places are those ahead of the first removal.
    std::vector<Removal> removals;
    for (const std::string& where : options.wheres)
        removals.push_back(RemovalAt(run, where, options));
    std::unordered_set<const IKeyword*> whole;
    for (const Removal& removal : removals) {
        if (removal.path.empty()) whole.insert(removal.target.keyword);
    }
    std::stable_sort(removals.begin(), removals.end(),
                     [](const Removal& a, const Removal& b) { return a.path > b.path; });
    std::set<std::pair<const IKeyword*, std::vector<int>>> done;
    for (const Removal& removal : removals) {
        const IKeyword* keyword = removal.target.keyword;
        if (!done.emplace(keyword, removal.path).second) continue;
        if (removal.path.empty())
            RemoveKeyword(run, removal.target, options.withComment);
        else if (whole.count(keyword) == 0)
            RemoveElement(run, removal);
    }
}

void EditMv(KeywordEdits& run, const Options& options)
{
    const KeywordEdits::Target from = run.FindKeyword(options.where, options, "mv");
    const Gap gap = GapBeside(run, options, "mv");
    const IKeyword& keyword = *from.keyword;
    const auto& table = *DeckManager::Environment::Instance().GetSyntaxTable();
    if (gap.section != SectionType::None && table.FindSyntax(keyword.GetName(), gap.section, true) == nullptr)
        run.Refuse(keyword, fmt::format("{} may not stand in the section {}.", keyword.GetName(), NameOf(gap.section)));
    KeywordFileIterator behind = from.position;
    const bool isSameFile = gap.neighbour->GetFile() == keyword.GetFile();
    if (isSameFile && (gap.position == from.position || gap.position == ++behind))
        run.Refuse(keyword, fmt::format("{} stands there already.", keyword.GetName()));
    run.NoteMove(keyword);
    if (!run.Editor().MoveKeyword(from.position, gap.position)) {
        const bool isInclude = keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::Include;
        run.Refuse(keyword, isInclude ? "An INCLUDE cannot go into a file that it brings in, nor into or out of a "
                                        "region that is skipped."
                                      : fmt::format("{} cannot go there: nothing is moved into a region that is "
                                                    "skipped, nor out of one.",
                                                    keyword.GetName()));
    }
}

} // namespace Deckman
