#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <tuple>
#include <unordered_map>
#include <unordered_set>
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

/// A keyword that has moved. The commit may read its file anew, so that only its name and number tell it from others.
struct Move
{
    std::string name;
    std::string oldFile;
    int oldLine;
    IKeywordFile* file;
    std::size_t number; ///< among those of its name there
};

/// Goes through the keywords of a file, each with its number among those of its name.
template <class Step>
void ForEachNumbered(const IKeywordFile& file, const Step& step)
{
    std::unordered_map<std::string, std::size_t> count;
    for (DeckManager::KeywordFileIterator position = file.Begin(); position != file.End(); ++position)
        step(**position, count[position->GetName()]++);
}

std::vector<Move> MovesSince(const Places& before, const std::vector<IKeywordFile*>& files, const DeckSession& session)
{
    std::unordered_map<const IKeyword*, std::size_t> numbers;
    for (const IKeywordFile* file : files)
        ForEachNumbered(*file, [&](const IKeyword& keyword, std::size_t number) { numbers[&keyword] = number; });
    std::vector<Move> moves;
    for (const IKeyword* keyword : before.MovedSince(files)) {
        moves.push_back({keyword->GetName(), session.Shown(before.FileOf(*keyword).GetFileName()), keyword->GetLine(),
                         keyword->GetFile(), numbers.at(keyword)});
    }
    return moves;
}

/// The line of each in the new text; -1 for one that is none any more.
std::vector<int> NewLines(const std::vector<Move>& moves, const EditRun& run)
{
    std::map<std::tuple<const IKeywordFile*, std::string, std::size_t>, int> lines;
    for (const Move& move : moves)
        lines[{move.file, move.name, move.number}] = -1;
    std::unordered_set<const IKeywordFile*> seen;
    for (const Move& move : moves) {
        if (!seen.insert(move.file).second) continue;
        ForEachNumbered(*move.file, [&](const IKeyword& keyword, std::size_t number) {
            const auto found = lines.find({move.file, keyword.GetName(), number});
            if (found != lines.end()) found->second = run.NewLine(keyword);
        });
    }
    std::vector<int> ofMoves;
    for (const Move& move : moves)
        ofMoves.push_back(lines.at({move.file, move.name, move.number}));
    return ofMoves;
}

void PrintJson(const DeckSession& session, const std::vector<Move>& moves, const std::vector<int>& lines, Output& out)
{
    auto line = lines.begin();
    for (const Move& move : moves) {
        out.Append("{\"action\":\"moved\",\"name\":");
        AppendJsonString(out, move.name);
        out.Append(",\"file\":");
        AppendJsonString(out, move.oldFile);
        out.Append(fmt::format(",\"line\":{},\"newFile\":", move.oldLine));
        AppendJsonString(out, session.Shown(move.file->GetFileName()));
        out.Append(fmt::format(",\"newLine\":{}}}\n", *line++));
    }
}

void PrintTable(const DeckSession& session, const std::vector<Move>& moves, const std::vector<int>& lines, Output& out)
{
    Table table({{"keyword"}, {"from", false, {}, Table::Cut::Head}, {"to", false, {}, Table::Cut::Head}});
    auto line = lines.begin();
    for (const Move& move : moves) {
        table.Add(move.name);
        table.Add(fmt::format("{}:{}", move.oldFile, move.oldLine));
        table.Add(fmt::format("{}:{}", session.Shown(move.file->GetFileName()), *line++));
    }
    table.Print(out);
}

} // namespace

ExitStatus RunSort(DeckSession& session, const Options& options, Output& out)
{
    const std::vector<IKeywordFile*> files = session.FilesInDeckOrder();
    const Places before(files);
    session.Editor().SortKeywords();
    const std::vector<Move> moves = MovesSince(before, files, session);
    if (moves.empty()) return Done;

    EditRun run(session, options);
    run.Finish();
    if (options.json)
        PrintJson(session, moves, NewLines(moves, run), out);
    else
        PrintTable(session, moves, NewLines(moves, run), out);
    if (options.dryRun && !options.json) {
        out.Append('\n');
        run.PrintDiff(out);
    }
    return Done;
}

} // namespace Deckman
