#include "transfer/ExportRun.h"

#include <exception>
#include <utility>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/MessageCapper.h>

#include "output/Json.h"
#include "output/UnifiedDiff.h"
#include "session/DeckSession.h"
#include "session/DeckWalk.h"

namespace Deckman {

namespace {

using Tarn::Fjel::Core::Keywords::KeywordKind;

std::string WithLineFeeds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

struct KeywordChange
{
    std::string before;
    std::string after;
};

KeywordChange ChangeOf(const DeckManager::ExportReport::Change& change)
{
    const DeckManager::KeywordText text(*change.keyword);
    if (change.text.empty()) return {std::string(text.Own()), {}};
    return {text.All(), WithLineFeeds(change.text)};
}

/// Reads all data as a rewrite would, and tells what of them it could not write again: true when there is any.
bool TellWhatRewriteLoses(DeckSession& session)
{
    bool loses = false;
    bool isReading = false;
    const Messages::Diversion diversion(session.Log(), [&](const Messages::Message& message) {
        // Where a terminator or all data are missing there is nothing to lose.
        if (!isReading || message.text.ends_with("not properly terminated") ||
            (message.text.starts_with("Failed to read data of keyword ") && !message.text.ends_with("enough memory.")))
            return;
        loses = true;
        const std::string place = fmt::format("{}:{}", session.Log().Shown(message.file), message.line);
        session.Log().Error(place, message.text);
    });
    DeckWalk walk(session, true);
    while (walk.Next()) {
        const DeckManager::IKeyword& keyword = walk.Keyword();
        if (keyword.GetSyntax()->GetMetaData() == nullptr || walk.Kind() == KeywordKind::Include) continue;
        isReading = true;
        try {
            DeckManager::KeywordVariables variables;
            DeckManager::ReadKeywordData(session.Keywords(), keyword, &variables);
        } catch (const std::exception& exception) {
            loses = true;
            session.Log().Error(session.PlaceOf(keyword), exception.what());
        }
        isReading = false;
    }
    isReading = true; // what was held back of the last keyword
    Service::MessageCapper::instance().flush();
    return loses;
}

} // namespace

DeckManager::ExportOptions ToExportOptions(const Options& options)
{
    DeckManager::ExportOptions result;
    if (options.simulator) result.simulator = *options.simulator;
    result.forceRewrite = options.rewrite;
    result.planOnly = options.dryRun;
    return result;
}

std::optional<DeckManager::ExportReport> RunExport(DeckSession& session, const Options& options,
                                                   const std::string& target,
                                                   const std::function<bool(DeckManager::ExportReport&)>& write)
{
    if (options.rewrite && TellWhatRewriteLoses(session))
        throw Failure(NotThere, "--rewrite would lose what can't be read of the data.", target);
    DeckManager::ExportReport report;
    bool done = false;
    try {
        done = write(report);
    } catch (const Service::Exception& exception) {
        throw Failure(FileFailure, exception.what(), target);
    }
    if (!done) {
        if (!report.failure.empty()) session.Log().Error(target, report.failure);
        return std::nullopt;
    }
    for (const auto& file : report.files) {
        if (file.action != DeckManager::ExportReport::Action::Missing) continue;
        session.Log().Warning(session.PlaceOf(*file.keyword),
                              file.from.empty()
                                  ? fmt::format("This {} names no file.", file.keyword->GetName())
                                  : fmt::format("The file {} does not exist.", session.Log().Shown(file.from)));
    }
    return report;
}

void PrintChanges(const DeckSession& session, const DeckManager::ExportReport& report, bool json, Output& out)
{
    UnifiedDiff diff(out);
    for (const auto& change : report.changes) {
        const auto [before, after] = ChangeOf(change);
        const DeckManager::IKeywordFile& file = *change.keyword->GetFile();
        if (!json) {
            diff.Add(session.PlaceOf(file), change.keyword->GetLine(), before, after);
            continue;
        }
        out.Append("{\"action\":\"changed\",\"file\":");
        AppendJsonString(out, session.Shown(file.GetFileName()));
        out.Append(fmt::format(",\"line\":{},\"name\":", change.keyword->GetLine()));
        AppendJsonString(out, change.keyword->GetName());
        out.Append(",\"old\":");
        AppendJsonString(out, before);
        out.Append(",\"new\":");
        if (after.empty())
            out.Append("null");
        else
            AppendJsonString(out, after);
        out.Append("}\n");
    }
}

} // namespace Deckman
