#include <map>
#include <set>
#include <string>
#include <string_view>

#include <deckmanager/Environment.h>
#include <deckmanager/ExportReport.h>
#include <deckmanager/Exporter.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordIterator.h>
#include <deckmanager/MergeReport.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Log.h>

#include "command/Verbs.h"
#include "editing/EditRun.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "transfer/ExportRun.h"
#include "transfer/MergedIncludes.h"

namespace Deckman {

namespace {

using Action = DeckManager::MergeReport::Action;
using Entry = DeckManager::MergeReport::Entry;
using Tarn::Fjel::Core::Keywords::KeywordKind;

std::string_view NameOf(Action action)
{
    switch (action) {
    case Action::Replaced:
        return "replaced";
    case Action::Suppressed:
        return "suppressed";
    case Action::Cut:
        return "cut";
    case Action::Refused:
        return "refused";
    case Action::Lost:
        return "lost";
    case Action::Commented:
        return "commented";
    case Action::Missing:
        return "missing";
    default:
        return "carried";
    }
}

bool IsFailure(Action action)
{
    return action == Action::Cut || action == Action::Refused || action == Action::Lost;
}

/// One run of the verb.
class Merge
{
public:
    Merge(Messages& messages, const Options& options)
        : m_options(options), m_session(*new DeckSession(options.newDeck, messages, options.project)),
          m_old(m_session.OpenBeside(options.deck)), m_oldKeywords(*m_old.GetDeckKeywords())
    {
        m_oldFolder = m_oldKeywords.GetDataFile()->GetFileName().Name();
        if (!m_oldFolder.ends_with('/')) m_oldFolder += '/';
    }

    ExitStatus Run(Output& out)
    {
        if (m_oldKeywords.GetDataFile() == m_session.Keywords().GetDataFile())
            throw Failure(WrongUsage, "OLD and NEW are the same deck.", m_options.newDeck);
        CheckDirectory();
        CheckNew();
        TellOfOld();
        const bool isWhole = Carry();
        Print(out);
        if (!isWhole && !m_options.allowTruncated) {
            throw Failure(NotThere,
                          "Not all of the user's work is carried whole, and nothing is written; --allow-truncated "
                          "writes what there is.",
                          m_options.newDeck);
        }
        if (m_options.dryRun)
            Show(out);
        else
            Write();
        if (!m_options.project.empty()) m_session.SaveCache();
        return Done;
    }

    DeckSession& Session() const { return m_session; }

private:
    Messages& Log() const { return m_session.Log(); }

    void CheckDirectory()
    {
        if (m_options.directory.empty()) return;
        if (m_options.backup)
            throw Failure(WrongUsage, "With -o the files of NEW stay as they are; --backup is for those that change.");
        m_directory = ToDirectory(m_options.directory);
        for (const auto* keywords :
             {&m_session.Keywords(), static_cast<const DeckManager::IDeckKeywords*>(&m_oldKeywords)}) {
            if (m_directory == keywords->GetDataFile()->GetFileName().GetDirectory())
                throw Failure(FileFailure, "The directory is that of OLD or NEW.", m_options.directory);
        }
    }

    /// Files that are generated as a whole, and that are included more than once, are named before anything is done.
    void TellOfFiles(const DeckManager::IDeckKeywords& keywords)
    {
        std::map<const DeckManager::IKeywordFile*, int> included;
        for (DeckManager::IKeywordFile* file : keywords.GetFiles()) {
            for (const DeckManager::KeywordFileIterator& include : file->GetINCLUDEKeywords()) {
                if (const auto* below = keywords.GetIncludedFile(*include)) ++included[below];
            }
        }
        std::set<const DeckManager::IKeywordFile*> seen;
        for (DeckManager::KeywordIterator walk = keywords.Begin(); *walk != nullptr; ++walk) {
            const DeckManager::IKeywordFile* file = walk->GetFile();
            if (!seen.insert(file).second) continue;
            if (walk->IsInGeneratedFile()) Log().Note(m_session.PlaceOf(*file), "The file is generated as a whole.");
            if (included[file] > 1) {
                Log().Warning(m_session.PlaceOf(*file),
                              "The file is included more than once; what a user wrote in it is carried once.");
            }
        }
    }

    void CheckNew()
    {
        TellOfFiles(m_session.Keywords());
        if (m_options.intoEdited) return;
        for (DeckManager::KeywordIterator walk = m_session.Keywords().Begin(); *walk != nullptr; ++walk) {
            const int kind = walk->GetSyntax()->GetKind();
            if (walk->IsGenerated() || kind == KeywordKind::Section || kind == KeywordKind::End ||
                kind == KeywordKind::EndInc)
                continue;
            throw Failure(NotThere,
                          fmt::format("NEW holds keywords of a user already, {} here, and a merge would put those of "
                                      "OLD in once more; --into-edited allows it.",
                                      walk->GetName()),
                          m_session.PlaceOf(**walk));
        }
    }

    void TellOfOld()
    {
        TellOfFiles(m_oldKeywords);
        const std::set<DeckManager::IKeywordFile*> newFiles = m_session.Keywords().GetFiles();
        for (const DeckManager::IKeywordFile* file : m_oldKeywords.GetFiles()) {
            if (newFiles.count(const_cast<DeckManager::IKeywordFile*>(file)) > 0)
                Log().Warning(m_session.PlaceOf(*file), "OLD and NEW share the file; nothing is carried from it.");
        }
        bool isGenerated = false;
        for (DeckManager::KeywordIterator walk = m_oldKeywords.Begin(); !isGenerated && *walk != nullptr; ++walk)
            isGenerated = walk->IsGenerated();
        if (!isGenerated) {
            Log().Warning(m_options.deck,
                          fmt::format("Nothing in OLD bears the tag \"{}\": all of it is taken for the user's.",
                                      DeckManager::Environment::Instance().GetKeywordGeneratedTag()));
        }
    }

    std::set<DeckManager::IKeywordFile*> Excluded() const
    {
        std::set<DeckManager::IKeywordFile*> excluded;
        for (const std::string& name : m_options.excluded) {
            const std::string leaf = name.substr(name.find_last_of("/\\") + 1);
            bool isFound = false;
            for (DeckManager::IKeywordFile* file : m_oldKeywords.GetFiles()) {
                if (file->GetFileName().GetFileName() != leaf) continue;
                excluded.insert(file);
                isFound = true;
            }
            if (!isFound) throw Failure(NotThere, "OLD has no file " + leaf + " to exclude.", m_options.deck);
        }
        return excluded;
    }

    bool Carry()
    {
        DeckManager::IDeckKeywordsEditor& editor = *m_session.Manager().GetEditor(&m_session.EditedDeck());
        const std::set<DeckManager::IKeywordFile*> excluded = Excluded();
        std::map<std::string, std::string> names(m_options.fileMap.begin(), m_options.fileMap.end());
        std::set<DeckManager::KeywordIterator> replaced;
        // The file of a user's INCLUDE comes along.
        const Messages::Diversion diversion(Log(), [this](const Messages::Message& message) {
            if (message.text.find(" in the source, finds no file ") != std::string_view::npos) return;
            const std::string place = message.line > 0 ? fmt::format("{}:{}", Log().Shown(message.file), message.line)
                                                       : Log().Shown(message.file);
            if (message.severity >= Service::Log::Error)
                Log().Error(place, message.text);
            else
                Log().Warning(place, message.text);
        });
        const bool isWhole = editor.MergeUserKeywords(m_old, replaced, excluded, names, &m_report);
        if (m_options.comments) editor.MergeComments(m_old, excluded, names, &m_report);
        return isWhole;
    }

    std::string OldName(const Entry& entry) const
    {
        return InOld(entry.source->GetFile()->GetFileName().GetFullName());
    }

    std::string InOld(const std::string& name) const
    {
        return name.starts_with(m_oldFolder) ? name.substr(m_oldFolder.size()) : name;
    }

    void Print(Output& out) const
    {
        if (m_options.json)
            PrintJson(out);
        else
            PrintTable(out);
    }

    void PrintJson(Output& out) const
    {
        for (const Entry& entry : m_report.entries) {
            out.Append(fmt::format("{{\"action\":\"{}\",\"name\":", NameOf(entry.action)));
            AppendJsonString(out, entry.name);
            out.Append(",\"file\":");
            AppendJsonString(out, OldName(entry));
            out.Append(fmt::format(",\"line\":{},\"newFile\":", entry.sourceLine));
            if (entry.targetFile.empty())
                out.Append("null");
            else
                AppendJsonString(out, m_session.ShownName(entry.targetFile));
            out.Append(entry.targetLine > 0 ? fmt::format(",\"newLine\":{},\"text\":", entry.targetLine)
                                            : std::string(",\"newLine\":null,\"text\":"));
            if (entry.text.empty())
                out.Append("null");
            else
                AppendJsonString(out, entry.action == Action::Missing ? InOld(entry.text) : entry.text);
            out.Append("}\n");
        }
    }

    void PrintTable(Output& out) const
    {
        Table table({{""}, {"keyword"}, {"in OLD"}, {"in NEW"}});
        for (const Entry& entry : m_report.entries) {
            const bool isFailure = IsFailure(entry.action);
            table.Add(NameOf(entry.action), isFailure ? Style::Alert : Style::Plain);
            table.Add(entry.action == Action::Lost ? entry.text : entry.name);
            table.Add(fmt::format("{}:{}", OldName(entry), entry.sourceLine));
            if (entry.targetFile.empty())
                table.Add("-", Style::Faint);
            else if (entry.targetLine > 0)
                table.Add(fmt::format("{}:{}", m_session.ShownName(entry.targetFile), entry.targetLine));
            else
                table.Add(fmt::format("{}:end", m_session.ShownName(entry.targetFile)));
        }
        table.Print(out);
    }

    /// What would be written into the files of NEW, or of its copy.
    void Show(Output& out)
    {
        if (m_options.json) return;
        EditRun run(m_session, m_options);
        run.Finish();
        if (run.IsEmpty()) return;
        out.Append('\n');
        run.PrintDiff(out);
    }

    void Write()
    {
        // What the user's INCLUDE keywords name comes along, and is found out while they still stand where they stood.
        const MergedIncludes includes(m_old, m_report);
        Service::Directory directory = m_directory;
        if (m_options.directory.empty()) {
            EditRun(m_session, m_options).Finish();
            directory = m_session.TopFile().GetDirectory();
        } else {
            Export(directory);
        }
        includes.CopyTo(directory, !m_options.directory.empty(), Log());
    }

    void Export(const Service::Directory& directory)
    {
        DeckManager::ExportReport report;
        bool isDone = false;
        try {
            isDone = DeckManager::Exporter::CopyToDirectory(m_session.Keywords(), directory.Name(), {},
                                                            ToExportOptions(m_options), &report);
        } catch (const Service::Exception& exception) {
            report.failure = exception.what();
        }
        if (!isDone) {
            throw Failure(FileFailure,
                          report.failure.empty() ? "The merged deck could not be written." : report.failure,
                          m_options.directory);
        }
        for (const auto& file : report.files) {
            // What was carried stands in no file yet, and its file comes along.
            if (file.action != DeckManager::ExportReport::Action::Missing || file.keyword->GetLine() < 0) continue;
            Log().Warning(m_session.PlaceOf(*file.keyword),
                          fmt::format("The file {} does not exist.", Log().Shown(file.from)));
        }
    }

    const Options& m_options;
    DeckSession& m_session; // the system takes its memory back faster than its destructor does
    DeckManager::IDeck& m_old;
    DeckManager::IDeckKeywords& m_oldKeywords;
    std::string m_oldFolder; // ends in a separator
    Service::Directory m_directory;
    DeckManager::MergeReport m_report;
};

} // namespace

ExitStatus RunMerge(Messages& messages, const Options& options, Output& out)
{
    static Merge& merge = *new Merge(messages, options);
    const ExitStatus status = merge.Run(out);
    return messages.Errors() > 0 && merge.Session().HasUnreadableFile() ? FileFailure : status;
}

} // namespace Deckman
