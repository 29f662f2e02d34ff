#include "Where.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <vector>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>

#include "DeckSession.h"
#include "DeckWalk.h"
#include "Nearest.h"
#include "Sections.h"

namespace Deckman {

namespace {

/// Digits alone, and above 0.
std::optional<int> ParseCount(std::string_view text)
{
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (!Service::AllDigits(text) || error != std::errc() || end != text.data() + text.size() || value < 1)
        return std::nullopt;
    return value;
}

Failure NoPlace(const std::string& text)
{
    return Failure(WrongUsage, fmt::format("'{}' is no place in a deck. A place is NAME, NAME#3, SECTION/NAME#3, "
                                           "FILE:LINE or @17; keywords and lines count from 1.",
                                           text));
}

std::string Plural(long long count, std::string_view noun)
{
    return fmt::format("{} {}{}", count, noun, count == 1 ? "" : "s");
}

std::vector<std::string_view> ViewsOf(const std::set<std::string>& names)
{
    return {names.begin(), names.end()};
}

/// What stands behind the deck's end is a place only where that is asked for; empty when it isn't there either.
template <class Find>
std::string HintBehindEnd(const Find& find)
{
    try {
        find(true);
    } catch (const Failure&) {
        return {};
    }
    return " --all finds it, behind the deck's end.";
}

/// How many lines a file has; what stands behind the last line end counts when there is something.
long long CountLines(const std::string& path)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"), &std::fclose);
    if (!file) return 0;
    std::vector<char> buffer(1 << 16);
    long long lines = 0;
    char last = '\n';
    while (const std::size_t count = std::fread(buffer.data(), 1, buffer.size(), file.get())) {
        lines += std::count(buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count), '\n');
        last = buffer[count - 1];
    }
    return last == '\n' ? lines : lines + 1;
}

/// How well a name that a user typed fits a file: 0 not at all, 1 as the end of its path, 2 altogether.
int Fit(std::string_view typed, const Service::FileName& typedFile, std::string_view shown,
        const Service::FileName& file)
{
    if (typed == shown || typed == file.GetFullName() || typedFile == file) return 2;
    if (!shown.ends_with(typed) || typed.empty()) return 0;
    return shown[shown.size() - typed.size() - 1] == '/' ? 1 : 0;
}

} // namespace

Where Where::Parse(const std::string& text)
{
    if (text.starts_with('@')) {
        const std::optional<int> index = ParseCount(std::string_view(text).substr(1));
        if (!index) throw NoPlace(text);
        return Where(ByIndex{*index});
    }
    if (const std::size_t colon = text.rfind(':'); colon != std::string::npos) {
        const std::optional<int> line = ParseCount(std::string_view(text).substr(colon + 1));
        if (!line || colon == 0) throw NoPlace(text);
        return Where(ByLine{text.substr(0, colon), *line});
    }

    ByName byName;
    std::string_view rest = text;
    if (const std::size_t slash = rest.find('/'); slash != std::string_view::npos) {
        const std::string_view name = rest.substr(0, slash);
        const std::optional<SectionType> section = FindSection(name);
        if (!section) {
            throw Failure(WrongUsage, fmt::format("'{}' is not a section.{}", name, NearestHint(name, sectionNames)));
        }
        byName.section = *section;
        rest.remove_prefix(slash + 1);
    }
    if (const std::size_t hash = rest.find('#'); hash != std::string_view::npos) {
        const std::optional<int> number = ParseCount(rest.substr(hash + 1));
        if (!number) throw NoPlace(text);
        byName.number = *number;
        rest = rest.substr(0, hash);
    }
    if (rest.empty() || rest.find_first_of("/ ") != std::string_view::npos) throw NoPlace(text);
    byName.name = Service::Uppercased(rest);
    return Where(std::move(byName));
}

Where::Place Where::Find(DeckSession& session, bool all) const
{
    const auto find = [&](bool behindEndToo) {
        return std::visit([&](const auto& where) { return FindPlace(where, session, behindEndToo); }, m_where);
    };
    try {
        return find(all);
    } catch (const Failure& failure) {
        if (all || failure.Status() != NotThere) throw;
        const std::string hint = HintBehindEnd(find);
        if (hint.empty()) throw;
        throw Failure(NotThere, failure.what() + hint);
    }
}

Where::Place Where::FindPlace(const ByName& where, DeckSession& session, bool all)
{
    const bool anySection = where.section == SectionType::None;
    std::set<std::string> names;
    int found = 0;
    for (DeckWalk walk(session, all); walk.Next();) {
        if (!anySection && walk.Section() != where.section) continue;
        const std::string& name = walk.Keyword().GetName();
        if (name != where.name)
            names.insert(name);
        else if (++found == where.number)
            return {walk.Position(), &walk.Keyword(), walk.Index()};
    }

    const std::string in = anySection ? "the deck" : fmt::format("section {}", NameOf(where.section));
    if (found > 0)
        throw Failure(NotThere, fmt::format("There {} {} {} in {}, and no {}#{}.", found == 1 ? "is" : "are", found,
                                            where.name, in, where.name, where.number));
    throw Failure(NotThere,
                  fmt::format("There is no {} in {}.{}", where.name, in, NearestHint(where.name, ViewsOf(names))));
}

Where::Place Where::FindPlace(const ByIndex& where, DeckSession& session, bool all)
{
    DeckWalk walk(session, all);
    while (walk.Next()) {
        if (walk.Index() == where.index) return {walk.Position(), &walk.Keyword(), walk.Index()};
    }
    throw Failure(NotThere, fmt::format("There is no keyword @{}: the deck has {}.", where.index,
                                        Plural(walk.Index(), "keyword")));
}

Where::Place Where::FindPlace(const ByLine& where, DeckSession& session, bool all)
{
    std::optional<Service::FileName> typed;
    try {
        typed.emplace(where.file);
    } catch (const std::exception&) {
        throw Failure(WrongUsage, "This is no name that a file can have.", where.file);
    }

    // What each file of the deck has to say: how well its name fits, and the keyword that holds the line.
    struct Candidate
    {
        bool seen = false;
        int fit = 0;
        const DeckManager::IKeywordFile* file = nullptr;
        Place place;
        int firstLine = 0;
        bool isLast = true;
    };
    std::vector<Candidate> candidates;
    // Behind the end too: the line must not go to the keyword ahead of it.
    for (DeckWalk walk(session, true); walk.Next();) {
        const auto number = static_cast<std::size_t>(walk.File());
        if (number >= candidates.size()) candidates.resize(number + 1);
        Candidate& candidate = candidates[number];
        const DeckManager::IKeyword& keyword = walk.Keyword();
        if (!candidate.seen) {
            candidate.seen = true;
            candidate.file = keyword.GetFile();
            candidate.firstLine = keyword.GetLine();
            candidate.fit = Fit(where.file, *typed, session.FileShown(walk.File()), candidate.file->GetFileName());
        }
        if (candidate.fit == 0) continue;
        const int line = keyword.GetLine();
        // A skipped keyword has no extent; what a skipped region holds belongs to the keyword ahead of it.
        const bool holds = line == where.line || (line < where.line && keyword.GetSize() > 0);
        // Strictly: a file that is included twice is found where it comes first.
        if (holds && (candidate.place.keyword == nullptr || line > candidate.place.keyword->GetLine()))
            candidate.place = {walk.Position(), &keyword, walk.Index()};
        else if (line > where.line)
            candidate.isLast = false;
    }

    const int best = candidates.empty() ? 0 : std::ranges::max(candidates, {}, &Candidate::fit).fit;
    std::vector<std::size_t> fitting;
    for (std::size_t i = 0; best > 0 && i < candidates.size(); ++i) {
        if (candidates[i].fit == best) fitting.push_back(i);
    }
    const auto shown = [&](std::size_t number) -> const std::string& {
        return session.FileShown(static_cast<int>(number));
    };
    if (fitting.empty()) {
        // Leaf against leaf: the folder is what a user leaves out.
        const auto leafOf = [](std::string_view name) { return name.substr(name.rfind('/') + 1); };
        std::vector<std::string_view> leaves;
        for (std::size_t i = 0; i < candidates.size(); ++i)
            leaves.push_back(leafOf(shown(i)));
        throw Failure(NotThere, fmt::format("The deck has no file {} with keywords in it.{}", where.file,
                                            NearestHint(leafOf(where.file), leaves)));
    }
    if (fitting.size() > 1) {
        throw Failure(NotThere, fmt::format("{} may be {} or {}. Give more of its path.", where.file, shown(fitting[0]),
                                            shown(fitting[1])));
    }

    const Candidate& candidate = candidates[fitting.front()];
    const std::string& name = shown(fitting.front());
    if (candidate.place.keyword == nullptr) {
        throw Failure(NotThere, fmt::format("Line {} of {} stands above its first keyword, which is in line {}.",
                                            where.line, name, candidate.firstLine));
    }
    if (candidate.isLast) {
        const long long lines = CountLines(candidate.file->GetFileName().GetFullName());
        if (where.line > lines)
            throw Failure(NotThere, fmt::format("There is no line {} in {}: it has {}.", where.line, name,
                                                Plural(lines, "line")));
    }
    if (all) return candidate.place;
    for (DeckWalk walk(session, false); walk.Next();) {
        if (&walk.Keyword() == candidate.place.keyword) return {walk.Position(), &walk.Keyword(), walk.Index()};
    }
    throw Failure(NotThere, fmt::format("Line {} of {} lies outside the deck.", where.line, name));
}

} // namespace Deckman
