#include <string>
#include <utility>
#include <vector>

#include "command/Verbs.h"
#include "output/Json.h"
#include "output/Table.h"
#include "session/DeckSession.h"
#include "session/FileTree.h"

namespace Deckman {

namespace {

/// A file on the way from the top file to the one that is printed, and which of its links comes next.
struct Level
{
    const FileContents* contents;
    std::size_t next = 0;
};

const FileContents noContents;

const FileContents& ContentsOf(FileTree& tree, const FileLink& link)
{
    return link.file != nullptr ? tree.ContentsOf(link.file) : noContents;
}

void PrintJsonHead(const FileLink& link, const FileContents& contents, Output& out)
{
    out.Append("{\"file\":");
    AppendJsonString(out, link.shown);
    out.Append(link.exists ? ",\"exists\":true,\"keywords\":" : ",\"exists\":false,\"keywords\":");
    // A grid file holds no keywords, and an INCLUDE that was refused brings none in: that is not the same as 0.
    if (link.kind == FileLink::Kind::Include)
        out.AppendNumber(contents.keywords);
    else
        out.Append("null");
    out.Append(",\"bytes\":");
    out.AppendNumber(link.bytes);
    out.Append(",\"includes\":[");
}

/// Without recursion: a chain of includes may be as long as it likes.
void PrintJson(FileTree& tree, Output& out)
{
    std::vector<Level> levels;
    const auto enter = [&](const FileLink& link) {
        const FileContents& contents = ContentsOf(tree, link);
        PrintJsonHead(link, contents, out);
        levels.push_back({&contents});
    };
    enter(tree.Top());
    while (!levels.empty() && !out.Closed()) {
        Level& level = levels.back();
        if (level.next == level.contents->links.size()) {
            out.Append("]}");
            levels.pop_back();
            continue;
        }
        if (level.next > 0) out.Append(',');
        enter(level.contents->links[level.next++]);
    }
    out.Append('\n');
}

std::string_view RemarkOn(const FileLink& link)
{
    if (link.kind == FileLink::Kind::Refused) return link.exists ? "not included" : "missing, not included";
    if (!link.exists) return link.kind == FileLink::Kind::Grid ? "missing grid file" : "missing";
    return link.kind == FileLink::Kind::Grid ? "grid file" : "";
}

void PrintTable(FileTree& tree, Output& out)
{
    Table table({{"file"}, {"keywords", true}, {"bytes", true}, {"remark", false, {}, Table::Cut::Tail}});
    std::vector<Level> levels;
    std::string stem; // what stands ahead of a file's name: "|   " for each level that goes on, else blanks
    const auto enter = [&](const FileLink& link, std::string_view branch) {
        const FileContents& contents = ContentsOf(tree, link);
        const std::string_view remark = RemarkOn(link);
        const bool trouble = !link.exists || link.kind == FileLink::Kind::Refused;
        table.Add(stem + std::string(branch) + link.shown, trouble ? Style::Alert : Style::Plain);
        if (link.kind == FileLink::Kind::Include && link.exists)
            table.Add(contents.keywords);
        else
            table.Add("");
        if (link.exists)
            table.Add(link.bytes);
        else
            table.Add("");
        table.Add(remark, trouble ? Style::Alert : Style::Faint);
        levels.push_back({&contents});
    };
    enter(tree.Top(), "");
    while (!levels.empty()) {
        Level& level = levels.back();
        if (level.next == level.contents->links.size()) {
            levels.pop_back();
            if (stem.size() >= 4) stem.resize(stem.size() - 4);
            continue;
        }
        const FileLink& link = level.contents->links[level.next++];
        const bool isLast = level.next == level.contents->links.size();
        enter(link, isLast ? "`-- " : "|-- ");
        stem += isLast ? "    " : "|   ";
    }
    table.Print(out);
}

} // namespace

ExitStatus RunTree(DeckSession& session, const Options& options, Output& out)
{
    FileTree tree(session);
    if (options.json)
        PrintJson(tree, out);
    else
        PrintTable(tree, out);
    return Done;
}

} // namespace Deckman
