// The verbs that write a deck out of its files: flatten, copy and clone.

#include <functional>
#include <optional>
#include <set>
#include <string>

#include <deckmanager/Exporter.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordIterator.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/Where.h"
#include "transfer/ExportRun.h"

namespace Deckman {

namespace {

using Action = DeckManager::ExportReport::Action;
using Tarn::Fjel::Core::Keywords::KeywordKind;

std::string_view NameOf(Action action)
{
    switch (action) {
    case Action::Kept:
        return "kept";
    case Action::Missing:
        return "missing";
    default:
        return "written";
    }
}

void PrintJson(const DeckSession& session, const DeckManager::ExportReport& report, Output& out)
{
    for (const auto& file : report.files) {
        out.Append(fmt::format("{{\"action\":\"{}\",\"from\":", NameOf(file.action)));
        AppendJsonString(out, session.ShownName(file.from));
        out.Append(",\"to\":");
        if (file.to.empty())
            out.Append("null");
        else
            AppendJsonString(out, file.to);
        out.Append("}\n");
    }
}

std::string LeafOf(const std::string& name)
{
    return name.substr(name.rfind('/') + 1);
}

/// A file may get another name than it had, or than the verb gives to the others: the user has to know.
std::string RemarkOn(const DeckManager::ExportReport::File& file, bool keepsLeaves)
{
    if (file.action == Action::Kept) return "kept: a file stands there";
    if (file.action == Action::Missing) return "missing";
    if (keepsLeaves && LeafOf(file.from) != LeafOf(file.to)) return "another file has its name";
    return {};
}

void PrintTable(const DeckSession& session, const DeckManager::ExportReport& report, bool keepsLeaves, Output& out)
{
    Table table({{"file", false, {}, Table::Cut::Head}, {"written to", false, {}, Table::Cut::Head}, {"remark"}});
    bool isTop = true;
    for (const auto& file : report.files) {
        const bool isMissing = file.action == Action::Missing;
        table.Add(session.Log().Shown(file.from), isMissing ? Style::Alert : Style::Plain);
        table.Add(file.to.empty() ? std::string() : session.Log().Shown(file.to));
        table.Add(RemarkOn(file, keepsLeaves && !isTop), isMissing ? Style::Alert : Style::Faint);
        isTop = false;
    }
    table.Print(out);
}

/// Does an export and tells what it did.
ExitStatus Export(DeckSession& session, const Options& options, bool keepsLeaves, const std::string& target,
                  const std::function<bool(DeckManager::ExportReport&)>& write, Output& out)
{
    const std::optional<DeckManager::ExportReport> report = RunExport(session, options, target, write);
    if (!report) return FileFailure;
    if (options.json)
        PrintJson(session, *report, out);
    else
        PrintTable(session, *report, keepsLeaves, out);
    if (options.dryRun) {
        if (!options.json && !report->changes.empty()) out.Append('\n');
        PrintChanges(session, *report, options.json, out);
    }
    return Done;
}

/// The files from the top file down to that of a keyword.
std::set<DeckManager::IKeywordFile*> FilesAround(const DeckSession& session, const DeckManager::IKeyword& keyword)
{
    std::set<DeckManager::IKeywordFile*> files;
    const DeckManager::IKeyword* level = &keyword;
    while (level != nullptr && files.insert(level->GetFile()).second)
        level = session.Keywords().GetIncludingKeyword(level->GetFile());
    return files;
}

/// Behind a keyword, and behind all that it includes.
DeckManager::KeywordIterator Behind(const DeckSession& session, const Where::Place& place)
{
    DeckManager::KeywordIterator end = place.position;
    ++end;
    if (place.keyword->GetSyntax()->GetKind() != KeywordKind::Include) return end;
    const std::set<DeckManager::IKeywordFile*> around = FilesAround(session, *place.keyword);
    while (*end != nullptr && around.count(end->GetFile()) == 0)
        ++end;
    return end;
}

} // namespace

namespace {

/// A grid file is looked for in the folder of the deck, and the flat file may lie elsewhere.
void TellOfGridFile(const DeckSession& session, const std::string& target)
{
    const DeckManager::IDeckKeywords& keywords = session.Keywords();
    const DeckManager::KeywordIterator grid = keywords.FindGridKeyword();
    if (*grid == nullptr) return;
    using Tarn::Fjel::Core::Keywords::DataAccessUtils;
    const auto* data = keywords.GetKeywordData(*grid);
    const auto name =
        grid->GetName() == "GDFILE" ? DataAccessUtils::GetGDFILEName(data) : DataAccessUtils::GetORDGRIDName(data);
    Service::FileName flat(target);
    flat.MakeComplete(Service::Directory::Current());
    if (!name || Service::FileName(*name).IsComplete() || flat.GetDirectory() == session.TopFile().GetDirectory())
        return;
    session.Log().Warning(
        session.PlaceOf(**grid),
        fmt::format("{} names a file beside the deck, and {} lies in another directory.", grid->GetName(), target));
}

} // namespace

ExitStatus RunFlatten(DeckSession& session, const Options& options, Output& out)
{
    const DeckManager::IDeckKeywords& keywords = session.Keywords();
    if (options.output.empty() || options.output.ends_with('/') || options.output == "-")
        throw Failure(WrongUsage, "-o takes the name of a file.");
    DeckManager::KeywordIterator begin = keywords.Begin();
    DeckManager::KeywordIterator end = keywords.PhysicalEnd();
    int first = 1;
    if (!options.from.empty()) {
        const Where::Place place = Where::Parse(options.from).FindKeyword(session, {options.all}, "flatten");
        begin = place.position;
        first = place.index;
    }
    if (!options.to.empty()) {
        const Where::Place place = Where::Parse(options.to).FindKeyword(session, {options.all}, "flatten");
        if (place.index < first) {
            throw Failure(WrongUsage, fmt::format("{} stands ahead of {}.", options.to,
                                                  options.from.empty() ? "the first keyword" : options.from));
        }
        end = Behind(session, place);
    }
    const auto write = [&](DeckManager::ExportReport& report) {
        return DeckManager::Exporter::ExportToSingleFile(keywords, begin, end, options.output, ToExportOptions(options),
                                                         &report);
    };
    const ExitStatus status = Export(session, options, false, options.output, write, out);
    if (status == Done && options.from.empty()) TellOfGridFile(session, options.output);
    return status;
}

ExitStatus RunCopy(DeckSession& session, const Options& options, Output& out)
{
    Service::Directory directory(options.directory);
    if (!directory.IsSet()) throw Failure(WrongUsage, "DIR takes the name of a directory.");
    directory.MakeComplete(Service::Directory::Current());
    if (directory == session.TopFile().GetDirectory())
        throw Failure(FileFailure, "A deck is not copied into its own directory.", options.directory);
    const auto write = [&](DeckManager::ExportReport& report) {
        return DeckManager::Exporter::CopyToDirectory(session.Keywords(), directory.Name(), {},
                                                      ToExportOptions(options), &report);
    };
    return Export(session, options, true, options.directory, write, out);
}

ExitStatus RunClone(DeckSession& session, const Options& options, Output& out)
{
    if (options.suffix.find_first_of("/\\") != std::string::npos)
        throw Failure(WrongUsage, "--suffix takes a part of a file's name.");
    const auto write = [&](DeckManager::ExportReport& report) {
        return !DeckManager::Exporter::CopyToSameDir(session.Keywords(), options.suffix, ToExportOptions(options),
                                                     &report)
                    .empty();
    };
    return Export(session, options, false, session.PlaceOf(*session.Keywords().GetDataFile()), write, out);
}

} // namespace Deckman
