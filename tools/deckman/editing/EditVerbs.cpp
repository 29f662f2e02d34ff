// The edits of marks, tags and comments.

#include <algorithm>
#include <functional>
#include <sstream>
#include <string>
#include <unordered_set>
#include <vector>

#include <deckmanager/Environment.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/SetCommentAbove.h>
#include <fmt/format.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "editing/DataEdits.h"
#include "session/PlaceIndex.h"

namespace Deckman {

using DeckManager::IKeyword;

namespace {

using Change = std::function<bool(const KeywordEdits::Target&)>;

void ChangeKeyword(KeywordEdits& run, const KeywordEdits::Target& target, const Change& change)
{
    run.Log().Touch(*target.keyword);
    if (!change(target)) run.RefuseClosed(*target.keyword, "edited here");
}

/// All keywords that the options name, each once; without any, where that is allowed, those of the whole deck.
void ChangeKeywords(KeywordEdits& run, const Options& options, std::string_view verb, const Change& change)
{
    std::vector<KeywordEdits::Target> targets;
    for (const std::string& where : options.wheres)
        targets.push_back(run.FindKeyword(where, options, verb));
    if (targets.empty()) targets = run.AllKeywords(options);
    std::unordered_set<const IKeyword*> done;
    for (const KeywordEdits::Target& target : targets) {
        if (done.insert(target.keyword).second) ChangeKeyword(run, target, change);
    }
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

/// The comment above a keyword, from its first line that isn't blank to its last.
std::string LinesAbove(const KeywordEdits& run, const KeywordEdits::Target& target)
{
    std::string text = run.Session().Keywords().GetComment(run.DeckPosition(target), true);
    std::erase(text, '\r');
    while (!text.empty() && Service::AllBlanks(std::string_view(text).substr(0, text.find('\n'))))
        text.erase(0, std::min(text.find('\n'), text.size() - 1) + 1);
    Service::StringTrimRight(text);
    return text;
}

/// What the deck's files keep hidden can't be marked, and is left alone where the whole deck is meant.
bool IsPassedBy(const Options& options, const IKeyword& keyword)
{
    return options.wheres.empty() && keyword.GetSize() == 0 && keyword.GetLine() > 0;
}

} // namespace

void EditCommentOut(KeywordEdits& run, const Options& options)
{
    ChangeKeywords(run, options, "comment-out",
                   [&](const KeywordEdits::Target& target) { return run.Editor().CommentOut(target.position); });
}

void EditSuppress(KeywordEdits& run, const Options& options)
{
    ChangeKeywords(run, options, "suppress",
                   [&](const KeywordEdits::Target& target) { return run.Editor().Suppress(target.position); });
}

void EditUnsuppress(KeywordEdits& run, const Options& options)
{
    ChangeKeywords(run, options, "unsuppress",
                   [&](const KeywordEdits::Target& target) { return run.Editor().Unsuppress(target.position); });
}

void EditTag(KeywordEdits& run, const Options& options)
{
    ChangeKeywords(run, options, "tag", [&](const KeywordEdits::Target& target) {
        if (target.keyword->IsGenerated() || IsPassedBy(options, *target.keyword)) return true;
        run.Editor().TagKeyword(target.keyword);
        return target.keyword->IsGenerated();
    });
}

void EditUntag(KeywordEdits& run, const Options& options)
{
    ChangeKeywords(run, options, "untag", [&](const KeywordEdits::Target& target) {
        const bool isWholeDeck = options.wheres.empty();
        if (target.keyword->IsInGeneratedFile()) {
            if (!isWholeDeck)
                run.Refuse(*target.keyword, "The file is generated as a whole, and each of its keywords with it.");
            run.Session().Log().Warning(run.Session().PlaceOf(*target.keyword->GetFile()),
                                        "The file is generated as a whole, and stays so.");
            return true;
        }
        run.Editor().UntagKeyword(target.keyword);
        const DeckManager::IKeywordFile* file = run.Session().Keywords().GetIncludedFile(target.keyword);
        if (file != nullptr && target.keyword->IsGenerated()) {
            if (isWholeDeck) return true;
            run.Refuse(*target.keyword, fmt::format("{} is generated as a whole, and its INCLUDE with it.",
                                                    run.Session().PlaceOf(*file)));
        }
        return !target.keyword->IsGenerated() || IsPassedBy(options, *target.keyword);
    });
}

void EditNote(KeywordEdits& run, const Options& options)
{
    // A blank at the head of a line is the one behind the marker, as `show` gives it.
    const std::string text = WithLead(GivenText(options), " ", " ");
    const KeywordEdits::Target target = run.FindKeyword(options.where, options, "note");
    const IKeyword& keyword = *target.keyword;
    if (keyword.GetComment() == text) return;
    ChangeKeyword(run, target,
                  [&](const KeywordEdits::Target& at) { return run.Editor().SetComment(at.position, text); });
    if (keyword.GetComment() == text) return;
    const std::shared_ptr<std::string> data = run.Session().Keywords().GetDataText(&keyword);
    if (data && Service::TrimmedLeft(*data).starts_with("--"))
        run.Refuse(keyword, fmt::format("The text that was set for {} begins with its comment: note it ahead of that.",
                                        keyword.GetName()));
    run.Refuse(keyword, fmt::format("What stands below {} is its text, and no comment; above puts one above it.",
                                    keyword.GetName()));
}

void EditAbove(KeywordEdits& run, const Options& options)
{
    const std::string text = WithLead(GivenText(options), "-- ", "--");
    const KeywordEdits::Target target = run.FindKeyword(options.where, options, "above");
    if (LinesAbove(run, target) == text) return;
    run.Log().TouchAbove(*target.keyword);
    if (!DeckManager::SetCommentAbove(run.Editor(), target.position, text)) {
        run.Refuse(*target.keyword, fmt::format("No comment can be put above {} here.", target.keyword->GetName()));
    }
}

void EditHeader(KeywordEdits& run, const Options& options)
{
    DeckSession& session = run.Session();
    const std::string text = GivenText(options);
    if (Service::AllBlanks(text)) throw Failure(WrongUsage, "The text of a header is expected, and there is none.");
    DeckManager::IKeywordFile* file = session.Keywords().GetDataFile();
    if (!options.file.empty()) {
        const int number = Where::FindFile(session, options.file);
        const auto files = session.FilesInDeckOrder();
        const auto found = std::find(files.begin(), files.end(), &session.Places(true).FileAt(number));
        if (found == files.end()) throw Failure(NotThere, "The file is no file of the deck any more.", options.file);
        file = *found;
    }
    const std::string place = session.PlaceOf(*file);
    const DeckManager::Environment& environment = DeckManager::Environment::Instance();
    const std::string& tag = environment.GetDefaultGeneratedTag();
    if (environment.GetFileGeneratedTag() == tag) {
        if (file->HasUserKeywords()) {
            throw Failure(NotThere,
                          fmt::format("A header begins with the tag \"{}\", so the file would read as generated as a "
                                      "whole, and it holds keywords without a tag. --file-tag WORD says by which tag "
                                      "files are known as generated.",
                                      tag),
                          place);
        }
        session.Log().Note(place, fmt::format("The header begins with the tag \"{}\": the file reads as generated as a "
                                              "whole.",
                                              tag));
    }
    run.Log().NoteHeader(*file);
    if (!run.Editor().SetHeaderComment(file, text)) throw Failure(NotThere, "The file cannot be edited.", place);
}

} // namespace Deckman
