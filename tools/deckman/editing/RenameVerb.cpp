#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/FileRenamePlan.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <fmt/format.h>
#include <unistd.h>

#include "command/Verbs.h"
#include "editing/EditRun.h"
#include "output/Json.h"
#include "output/Nearest.h"
#include "output/Table.h"
#include "output/UnifiedDiff.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace {

using DeckManager::FileRenamePlan;
using DeckManager::IKeyword;
using DeckManager::IKeywordFile;
using Names = std::map<Service::FileName, Service::FileName>;

std::string_view LeafOf(std::string_view path)
{
    return path.substr(path.find_last_of("/\\") + 1);
}

/// One command: what is to be renamed, and what comes of it.
class Renaming
{
public:
    Renaming(DeckSession& session, const Options& options, Output& out)
        : m_session(session), m_options(options), m_out(out)
    {
    }

    void Run()
    {
        TakeNames();
        MakePlan();
        for (const auto& [from, to] : m_options.renames)
            RequireOne(from);
        RequireFree();
        TakeChanges();
        if (m_options.dryRun) {
            Print();
            RequireWritable();
            return;
        }
        EditRun(m_session, m_options, ChangedFiles(), ReplacedFiles()).Finish([this] {
            m_session.Editor().ApplyFileRenames(m_names, false);
        });
        if (m_options.json) Print();
    }

private:
    /// A keyword that names other files than it did. It may be read anew when they are renamed.
    struct Change
    {
        IKeywordFile* owner;
        std::string name;
        std::string file;
        std::string place;
        int line;
        std::string before;
        std::string after;
    };

    void TakeNames()
    {
        for (const auto& [from, to] : m_options.renames) {
            const auto toName = [](const std::string& text) {
                try {
                    return Service::FileName(std::string(LeafOf(text)));
                } catch (const std::exception&) {
                    throw Failure(WrongUsage, "This is no name that a file can have.", text);
                }
            };
            if (LeafOf(to) != to || to == "." || to == "..")
                throw Failure(WrongUsage, fmt::format("{} is no name of a file alone; its folder stays.", to));
            const Service::FileName old = toName(from);
            if (!old.IsSet() || m_names.count(old) > 0)
                throw Failure(WrongUsage, fmt::format("{} is given two names.", from));
            if (LeafOf(from) == to) throw Failure(NotThere, fmt::format("{} has that name already.", from));
            m_names.emplace(old, toName(to));
        }
    }

    void MakePlan()
    {
        try {
            m_plan = FileRenamePlan::Of(m_session.Editor(), m_names, false);
        } catch (const DeckManager::DeckManagerException& exception) {
            throw Failure(NotThere, exception.what(), m_options.deck);
        }
    }

    /// The name must say which file is meant.
    void RequireOne(const std::string& from) const
    {
        std::vector<std::string> found;
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            if (move.from.GetFileName() == LeafOf(from)) found.push_back(m_session.Shown(move.from));
        }
        const auto fits = [&](const std::string& shown) {
            return shown == from || Service::FileName(from) == Service::FileName(shown) ||
                   (shown.ends_with(from) && shown[shown.size() - from.size() - 1] == '/');
        };
        if (found.empty() || std::none_of(found.begin(), found.end(), fits)) {
            std::vector<std::string> files;
            for (const IKeywordFile* file : m_session.FilesInDeckOrder())
                files.push_back(file->GetFileName().GetFileName());
            const std::vector<std::string_view> known(files.begin(), files.end());
            throw Failure(NotThere, fmt::format("The deck has no file {} that could be renamed.{}", from,
                                                NearestHint(LeafOf(from), known)));
        }
        if (found.size() > 1 && !m_options.replace) {
            throw Failure(NotThere,
                          fmt::format("{} may be {} or {}; all files of one name are renamed together, with --replace.",
                                      from, found[0], found[1]));
        }
    }

    /// What stands under the new names, and is none of the files that get another.
    std::vector<Service::FileName> ReplacedFiles() const
    {
        std::vector<Service::FileName> files;
        const auto isRenamed = [this](const Service::FileName& name) {
            return std::any_of(m_plan.moves.begin(), m_plan.moves.end(),
                               [&](const FileRenamePlan::Move& move) { return move.from == name; });
        };
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            if (move.to.FileExists() && !isRenamed(move.to)) files.push_back(move.to);
        }
        return files;
    }

    void RequireFree() const
    {
        if (m_options.replace) return;
        const std::vector<Service::FileName> replaced = ReplacedFiles();
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            if (std::find(replaced.begin(), replaced.end(), move.to) == replaced.end()) continue;
            throw Failure(NotThere, fmt::format("The file {} exists; --replace deletes it.", m_session.Shown(move.to)),
                          m_session.Log().Shown(move.from.GetFullName()));
        }
    }

    /// What a keyword's own text becomes when its data text does: the two differ in one stretch.
    static std::string ChangedText(const DeckManager::KeywordText& text, const FileRenamePlan::Change& change)
    {
        const std::string& before = change.before;
        const std::string& after = change.after;
        const std::size_t both = std::min(before.size(), after.size());
        std::size_t head = 0;
        while (head < both && before[head] == after[head])
            ++head;
        std::size_t tail = 0;
        while (tail < both - head && before[before.size() - 1 - tail] == after[after.size() - 1 - tail])
            ++tail;
        std::string changed(text.Own());
        const std::size_t data = changed.size() - text.Data().size();
        return changed.replace(data + head, before.size() - tail - head, after, head, after.size() - tail - head);
    }

    void TakeChanges()
    {
        const auto files = m_session.FilesInDeckOrder();
        const auto placeOf = [&files](const FileRenamePlan::Change& change) {
            return std::pair(std::find(files.begin(), files.end(), change.keyword->GetFile()),
                             change.keyword->GetLine());
        };
        std::sort(m_plan.changes.begin(), m_plan.changes.end(),
                  [&](const auto& a, const auto& b) { return placeOf(a) < placeOf(b); });
        for (const FileRenamePlan::Change& change : m_plan.changes) {
            const DeckManager::KeywordText text(*change.keyword);
            IKeywordFile& file = *change.keyword->GetFile();
            m_changes.push_back({&file, change.keyword->GetName(), m_session.Shown(file.GetFileName()),
                                 m_session.PlaceOf(file), change.keyword->GetLine(), std::string(text.Own()),
                                 ChangedText(text, change)});
        }
    }

    std::vector<IKeywordFile*> ChangedFiles() const
    {
        std::vector<IKeywordFile*> files;
        for (const Change& change : m_changes) {
            if (std::find(files.begin(), files.end(), change.owner) == files.end()) files.push_back(change.owner);
        }
        return files;
    }

    void RequireWritable() const
    {
        EditRun(m_session, m_options, ChangedFiles(), {}).RequireWritable();
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            if (::access(move.from.GetDirectory().Name().c_str(), W_OK | X_OK) != 0)
                throw Failure(FileFailure, "Nothing could be renamed: no permission to write in the file's folder.",
                              m_session.Log().Shown(move.from.GetFullName()));
        }
    }

    void Print()
    {
        if (m_options.json) {
            PrintJson();
            return;
        }
        Table table({{"from"}, {"to"}});
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            table.Add(m_session.Shown(move.from));
            table.Add(m_session.Shown(move.to));
        }
        table.Print(m_out);
        if (!m_changes.empty()) m_out.Append('\n');
        UnifiedDiff diff(m_out);
        for (const Change& change : m_changes)
            diff.Add(change.place, change.line, change.before, change.after);
    }

    void PrintJson()
    {
        const auto append = [this](std::string_view label, const std::string& text) {
            m_out.Append(label);
            AppendJsonString(m_out, text);
        };
        for (const FileRenamePlan::Move& move : m_plan.moves) {
            append("{\"action\":\"renamed\",\"from\":", m_session.Shown(move.from));
            append(",\"to\":", m_session.Shown(move.to));
            m_out.Append("}\n");
        }
        for (const Change& change : m_changes) {
            append("{\"action\":\"changed\",\"file\":", change.file);
            m_out.Append(fmt::format(",\"line\":{}", change.line));
            append(",\"name\":", change.name);
            append(",\"old\":", change.before);
            append(",\"new\":", change.after);
            m_out.Append("}\n");
        }
    }

    DeckSession& m_session;
    const Options& m_options;
    Output& m_out;
    Names m_names;
    FileRenamePlan m_plan;
    std::vector<Change> m_changes;
};

} // namespace

ExitStatus RunRename(DeckSession& session, const Options& options, Output& out)
{
    Renaming(session, options, out).Run();
    return Done;
}

} // namespace Deckman
