#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <deckmanager/DataTextEditor.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordFileIterator.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/SetCommentAbove.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "DeckSession.h"
#include "InputText.h"
#include "KeywordEdits.h"
#include "Sections.h"
#include "Verbs.h"

namespace Deckman {

namespace {

using DeckManager::DataTextEditor;
using DeckManager::KeywordFileIterator;
using Keywords::MDType;
using Outcome = DataTextEditor::Outcome;

/// Takes nothing back: whoever fails leaves without a commit.
[[noreturn]] void Refuse(DeckSession& session, const DeckManager::IKeyword& keyword, const std::string& reason)
{
    throw Failure(NotThere, reason, session.PlaceOf(keyword));
}

/// Makes one change of one keyword.
ExitStatus ChangeKeyword(DeckSession& session, const Options& options, Output& out, std::string_view verb,
                         const std::function<bool(KeywordEdits&, const Where::Place&)>& change)
{
    KeywordEdits run(session, options);
    const Where::Place place = run.FindKeyword(options.where, verb);
    const DeckManager::IKeyword& keyword = *place.keyword;
    const std::string before = DeckManager::KeywordText(keyword).All();
    const int line = keyword.GetLine();
    if (!change(run, place)) Refuse(session, keyword, fmt::format("{} cannot be edited here.", keyword.GetName()));
    const std::string after = DeckManager::KeywordText(keyword).All();
    if (after != before) run.Add({keyword.GetFile(), line, keyword.GetName(), before, after});
    run.Finish(out);
    return Done;
}

std::string GivenText(const Options& options)
{
    std::string text = options.text == "-" ? ReadInputText("-") : options.text;
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

/// Each line with `lead` ahead, unless it is blank or begins with `marker`.
std::string WithLead(const std::string& text, std::string_view lead, std::string_view marker)
{
    std::string lines;
    std::istringstream rest(text);
    for (std::string line; std::getline(rest, line);) {
        if (!lines.empty()) lines += '\n';
        const bool isPlain = Service::AllBlanks(line) || (!marker.empty() && line.starts_with(marker));
        if (!isPlain) lines += lead;
        lines += line;
    }
    return lines;
}

/// The way to the item, in numbers. A value of a list is found without reading the others.
DataTextEditor::Path PathTo(DeckSession& session, const Where::Place& place)
{
    const Keywords::IKeywordMD* metadata = place.keyword->GetSyntax()->GetMetaData();
    const std::optional<int> number = place.items.AsNumber();
    if (number && Keywords::KeywordUtils::GetMDType(metadata) == MDType::List) return {*number};
    const Keywords::IKeywordData* data = nullptr;
    try {
        data = session.Keywords().GetKeywordData(place.keyword);
    } catch (const Service::Exception& exception) {
        Refuse(session, *place.keyword, exception.what());
    }
    if (data == nullptr)
        Refuse(session, *place.keyword, fmt::format("{} has no data, and so no items.", place.keyword->GetName()));
    DataTextEditor::Path path;
    for (const int step : place.items.Numbers(*data, place.keyword->GetName()))
        path.emplace_back(step);
    return path;
}

/// Ahead of the keyword, or behind it in the same file.
KeywordFileIterator PlaceBeside(DeckSession& session, const Where::Place& place, bool after)
{
    KeywordFileIterator position = session.Keywords().GetFileIterator(place.position);
    if (after) ++position;
    return position;
}

/// The line at which what stands at a place begins; behind the last keyword, that of the keyword.
int LineOf(const DeckManager::IKeywordFile& file, const KeywordFileIterator& position,
           const DeckManager::IKeyword& beside)
{
    return position != file.End() ? (*position)->GetLine() : beside.GetLine();
}

std::string_view FirstWord(std::string_view text)
{
    text = Service::TrimmedLeft(text);
    return text.substr(0, text.find_first_of(" \t\r\n"));
}

/// The keyword's first line in the text, behind blank lines and comments.
std::string_view KeywordName(std::string_view text)
{
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find('\n'));
        if (!Service::AllBlanks(line) && !Service::TrimmedLeft(line).starts_with("--")) return FirstWord(line);
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    return {};
}

const Keywords::IKeywordSyntax& SyntaxFor(const std::string& name, SectionType section, const std::string& where)
{
    const auto& table = *DeckManager::Environment::Instance().GetSyntaxTable();
    if (const auto* syntax = table.FindSyntax(name, section, true)) return *syntax;
    if (table.FindSyntax(name, true) == nullptr)
        throw Failure(NotThere, fmt::format("The text begins with {}, which is no keyword.", name), where);
    throw Failure(NotThere, fmt::format("{} may not stand in the section {}.", name, NameOf(section)), where);
}

} // namespace

ExitStatus RunSet(DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    const Where::Place place = run.Find(options.where);
    const DeckManager::IKeyword& keyword = *place.keyword;
    if (place.items.IsEmpty()) throw Failure(WrongUsage, "WHERE names no item; TABDIMS.3 does.", options.where);
    const DataTextEditor::Path path = PathTo(session, place);
    const std::shared_ptr<std::string> text = session.Keywords().GetDataText(&keyword);
    if (!text) Refuse(session, keyword, fmt::format("{} has no data, and so no items.", keyword.GetName()));
    const DataTextEditor::Result result = DataTextEditor::ForKeyword(session.Keywords(), keyword)
                                              .Set(*text, path, DataTextEditor::Value::Text(options.value));
    if (!result.IsDone()) Refuse(session, keyword, result.reason);
    if (result.outcome == Outcome::Done) {
        const std::string before = DeckManager::KeywordText(keyword).All();
        const int line = keyword.GetLine();
        if (!run.Editor().SetDataText(place.position, result.text))
            Refuse(session, keyword, fmt::format("{} cannot be edited here.", keyword.GetName()));
        run.Add({keyword.GetFile(), line, keyword.GetName(), before, DeckManager::KeywordText(keyword).All()});
    }
    run.Finish(out);
    return Done;
}

ExitStatus RunInsert(DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    const Where::Place place = run.FindKeyword(options.where, "insert");
    const std::string text = GivenText(options);
    const std::string name = Service::Uppercased(std::string(KeywordName(text)));
    if (name.empty()) throw Failure(WrongUsage, "The text of a keyword is expected, and there is none.");
    const KeywordFileIterator position = PlaceBeside(session, place, options.after);
    const auto section = session.Keywords().SectionOf(place.position);
    const Keywords::IKeywordSyntax& syntax = SyntaxFor(name, section, session.PlaceOf(*place.keyword));
    DeckManager::IKeywordFile& file = *place.keyword->GetFile();
    const int line = LineOf(file, position, *place.keyword);
    const DeckManager::IKeyword* inserted = run.Editor().InsertKeywordText(syntax, position, text + "\n");
    if (inserted == nullptr)
        Refuse(session, *place.keyword,
               fmt::format("{} cannot be inserted here: it is not one keyword and its data, "
                           "or the place is closed to edits.",
                           name));
    run.Add({&file, line, inserted->GetName(), {}, DeckManager::KeywordText(*inserted).All()});
    run.Finish(out);
    return Done;
}

ExitStatus RunRm(DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    const Where::Place place = run.FindKeyword(options.where, "rm");
    const DeckManager::IKeyword& keyword = *place.keyword;
    DeckManager::IKeywordFile& file = *keyword.GetFile();
    const std::string before(DeckManager::KeywordText(keyword).Own());
    const std::string name = keyword.GetName();
    const int line = keyword.GetLine();
    const std::string shownPlace = session.PlaceOf(keyword);
    const std::string comment =
        options.withComment ? session.Keywords().GetComment(place.position, true) : std::string();
    const bool isDone = (comment.empty() || DeckManager::SetCommentAbove(run.Editor(), place.position, {})) &&
                        run.Editor().RemoveKeyword(place.position);
    if (!isDone) throw Failure(NotThere, fmt::format("{} cannot be removed.", name), shownPlace);
    run.Add({&file, line, name, before, {}});
    run.Finish(out);
    return Done;
}

ExitStatus RunMv(DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    const Where::Place from = run.FindKeyword(options.where, "mv");
    const Where::Place to = run.FindKeyword(options.target, "mv");
    const DeckManager::IKeyword& keyword = *from.keyword;
    DeckManager::IKeywordFile& oldFile = *keyword.GetFile();
    const int oldLine = keyword.GetLine();
    const std::string text(DeckManager::KeywordText(keyword).Own());
    const KeywordFileIterator position = PlaceBeside(session, to, options.after);
    DeckManager::IKeywordFile& file = *to.keyword->GetFile();
    const int line = LineOf(file, position, *to.keyword);
    if (!run.Editor().MoveKeyword(session.Keywords().GetFileIterator(from.position), position))
        Refuse(session, keyword, fmt::format("{} stands there already, or cannot go there.", keyword.GetName()));
    KeywordEdits::Change leaves{&oldFile, oldLine, keyword.GetName(), text, {}};
    KeywordEdits::Change arrives{&file, line, keyword.GetName(), {}, text};
    // A diff tells changes in the order of the lines.
    if (&file == &oldFile && line < oldLine) std::swap(leaves, arrives);
    run.Add(std::move(leaves));
    run.Add(std::move(arrives));
    run.Finish(out);
    return Done;
}

ExitStatus RunCommentOut(DeckSession& session, const Options& options, Output& out)
{
    return ChangeKeyword(session, options, out, "comment-out", [](KeywordEdits& run, const Where::Place& place) {
        return run.Editor().CommentOut(place.position);
    });
}

ExitStatus RunSuppress(DeckSession& session, const Options& options, Output& out)
{
    return ChangeKeyword(session, options, out, "suppress", [](KeywordEdits& run, const Where::Place& place) {
        return run.Editor().Suppress(place.position);
    });
}

ExitStatus RunUnsuppress(DeckSession& session, const Options& options, Output& out)
{
    return ChangeKeyword(session, options, out, "unsuppress", [](KeywordEdits& run, const Where::Place& place) {
        return run.Editor().Unsuppress(place.position);
    });
}

ExitStatus RunTag(DeckSession& session, const Options& options, Output& out)
{
    return ChangeKeyword(session, options, out, "tag", [](KeywordEdits& run, const Where::Place& place) {
        run.Editor().TagKeyword(place.keyword);
        return place.keyword->IsGenerated();
    });
}

ExitStatus RunUntag(DeckSession& session, const Options& options, Output& out)
{
    return ChangeKeyword(session, options, out, "untag", [&](KeywordEdits& run, const Where::Place& place) {
        run.Editor().UntagKeyword(place.keyword);
        if (place.keyword->IsInGeneratedFile())
            Refuse(session, *place.keyword, "The file is generated as a whole, and each of its keywords with it.");
        return true;
    });
}

ExitStatus RunNote(DeckSession& session, const Options& options, Output& out)
{
    const std::string text = WithLead(GivenText(options), " ", {});
    return ChangeKeyword(session, options, out, "note", [&](KeywordEdits& run, const Where::Place& place) {
        return run.Editor().SetComment(place.position, text) && (text.empty() || place.keyword->GetComment() == text);
    });
}

ExitStatus RunAbove(DeckSession& session, const Options& options, Output& out)
{
    KeywordEdits run(session, options);
    const Where::Place place = run.FindKeyword(options.where, "above");
    const DeckManager::IKeyword& keyword = *place.keyword;
    const std::string before = session.Keywords().GetComment(place.position, true);
    if (!DeckManager::SetCommentAbove(run.Editor(), place.position, WithLead(GivenText(options), "-- ", "--")))
        Refuse(session, keyword, fmt::format("No comment can be put above {} here.", keyword.GetName()));
    const std::string after = session.Keywords().GetComment(place.position, true);
    const auto lines = static_cast<int>(std::count(before.begin(), before.end(), '\n'));
    run.Add({keyword.GetFile(), std::max(1, keyword.GetLine() - lines), keyword.GetName(), before, after});
    run.Finish(out);
    return Done;
}

} // namespace Deckman
