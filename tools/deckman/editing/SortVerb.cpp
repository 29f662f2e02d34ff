#include <algorithm>
#include <limits>
#include <string>
#include <unordered_map>
#include <vector>

#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordFileIterator.h>
#include <fmt/format.h>

#include "command/Verbs.h"
#include "editing/EditRun.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace {

using DeckManager::IKeyword;
using DeckManager::IKeywordFile;

/// Where keywords stand, in the lists of their files.
class Places
{
public:
    explicit Places(const std::vector<IKeywordFile*>& files)
    {
        int place = 0;
        for (IKeywordFile* file : files) {
            for (DeckManager::KeywordFileIterator position = file->Begin(); position != file->End(); ++position)
                m_places.emplace(*position, Place{file, place++});
        }
    }

    /// The keywords that have moved since, in the order in which they stand now: those that went to another file, and
    /// those that stand ahead of one that was ahead of them.
    std::vector<const IKeyword*> MovedSince(const std::vector<IKeywordFile*>& files) const
    {
        std::vector<const IKeyword*> moved;
        for (IKeywordFile* file : files) {
            std::vector<const IKeyword*> ofFile;
            for (DeckManager::KeywordFileIterator position = file->Begin(); position != file->End(); ++position)
                ofFile.push_back(*position);
            const auto begin = static_cast<std::ptrdiff_t>(moved.size());
            int leastBehind = std::numeric_limits<int>::max();
            for (auto keyword = ofFile.rbegin(); keyword != ofFile.rend(); ++keyword) {
                const Place& place = m_places.at(*keyword);
                if (place.file != file || place.place > leastBehind) moved.push_back(*keyword);
                if (place.file == file) leastBehind = std::min(leastBehind, place.place);
            }
            std::reverse(moved.begin() + begin, moved.end());
        }
        return moved;
    }

    IKeywordFile& FileOf(const IKeyword& keyword) const { return *m_places.at(&keyword).file; }

private:
    struct Place
    {
        IKeywordFile* file;
        int place;
    };
    std::unordered_map<const IKeyword*, Place> m_places;
};

struct Move
{
    const IKeyword* keyword;
    int line; ///< before
};

void PrintJson(const DeckSession& session, const Places& before, const std::vector<Move>& moves, const EditRun& run,
               Output& out)
{
    for (const Move& move : moves) {
        out.Append("{\"action\":\"moved\",\"name\":");
        AppendJsonString(out, move.keyword->GetName());
        out.Append(",\"file\":");
        AppendJsonString(out, session.Shown(before.FileOf(*move.keyword).GetFileName()));
        out.Append(fmt::format(",\"line\":{},\"newFile\":", move.line));
        AppendJsonString(out, session.Shown(move.keyword->GetFile()->GetFileName()));
        out.Append(fmt::format(",\"newLine\":{}}}\n", run.NewLine(*move.keyword)));
    }
}

void PrintTable(const DeckSession& session, const Places& before, const std::vector<Move>& moves, const EditRun& run,
                Output& out)
{
    Table table({{"keyword"}, {"from", false, {}, Table::Cut::Head}, {"to", false, {}, Table::Cut::Head}});
    for (const Move& move : moves) {
        const auto place = [&](const IKeywordFile& file, int line) {
            return fmt::format("{}:{}", session.Shown(file.GetFileName()), line);
        };
        table.Add(move.keyword->GetName());
        table.Add(place(before.FileOf(*move.keyword), move.line));
        table.Add(place(*move.keyword->GetFile(), run.NewLine(*move.keyword)));
    }
    table.Print(out);
}

} // namespace

ExitStatus RunSort(DeckSession& session, const Options& options, Output& out)
{
    const std::vector<IKeywordFile*> files = session.FilesInDeckOrder();
    const Places before(files);
    session.Editor().SortKeywords();
    std::vector<Move> moves;
    for (const IKeyword* keyword : before.MovedSince(files))
        moves.push_back({keyword, keyword->GetLine()});
    if (moves.empty()) return Done;

    EditRun run(session, options);
    run.Finish();
    if (options.json)
        PrintJson(session, before, moves, run, out);
    else
        PrintTable(session, before, moves, run, out);
    if (options.dryRun && !options.json) {
        out.Append('\n');
        run.PrintDiff(out);
    }
    return Done;
}

} // namespace Deckman
