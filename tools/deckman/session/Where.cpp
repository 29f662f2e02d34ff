#include "session/Where.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <vector>

#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>

#include "output/Nearest.h"
#include "session/DeckSession.h"
#include "session/PlaceIndex.h"
#include "session/Sections.h"

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

std::string_view LeadingDigits(std::string_view text)
{
    std::size_t count = 0;
    while (count < text.size() && Service::IsDigit(text[count]))
        ++count;
    return text.substr(0, count);
}

bool IsKnownName(std::string_view name)
{
    const auto* table = DeckManager::Environment::Instance().GetSyntaxTable();
    return table != nullptr && !table->FindSyntaxes(Service::Uppercased(name)).empty();
}

Failure NoPlace(const std::string& text)
{
    return Failure(WrongUsage, fmt::format("'{}' is no place in a deck. A place is NAME, NAME#3, SECTION/NAME#3, "
                                           "FILE:LINE or @17, with [2].ITEM behind it for an item; keywords and lines "
                                           "count from 1, records and items from 0.",
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
    if (auto byIndex = ParseIndex(text)) return Where(std::move(*byIndex));
    if (auto byLine = ParseLine(text)) return Where(std::move(*byLine));
    if (auto byName = ParseName(text)) return Where(std::move(*byName));
    throw NoPlace(text);
}

std::optional<Where::ByIndex> Where::ParseIndex(std::string_view text)
{
    if (!text.starts_with('@')) return std::nullopt;
    text.remove_prefix(1);
    const std::string_view digits = LeadingDigits(text);
    const std::optional<int> index = ParseCount(digits);
    auto items = ItemPath::Parse(text.substr(digits.size()));
    if (!index || !items) return std::nullopt;
    return ByIndex{*index, std::move(*items)};
}

/// The last colon that makes sense: a record's name may hold one too, but no path goes on behind a number in it.
std::optional<Where::ByLine> Where::ParseLine(std::string_view text)
{
    for (std::size_t colon = text.rfind(':'); colon != std::string_view::npos && colon > 0;
         colon = text.rfind(':', colon - 1))
    {
        const std::string_view rest = text.substr(colon + 1);
        const std::string_view digits = LeadingDigits(rest);
        const std::optional<int> line = ParseCount(digits);
        auto items = ItemPath::Parse(rest.substr(digits.size()));
        if (line && items) return ByLine{std::string(text.substr(0, colon)), *line, std::move(*items)};
    }
    return std::nullopt;
}

std::optional<Where::ByName> Where::ParseName(std::string_view text)
{
    ByName byName;
    // Names of records stand in brackets or quotes, and may hold any character.
    const auto headOf = [](std::string_view whole) { return whole.substr(0, whole.find_first_of("['\"")); };
    if (const std::size_t slash = headOf(text).find('/'); slash != std::string_view::npos) {
        const std::string_view name = text.substr(0, slash);
        const std::optional<SectionType> section = FindSection(name);
        if (!section) {
            throw Failure(WrongUsage, fmt::format("'{}' is not a section.{}", name,
                                                  NearestOrAllHint(name, sectionNames, "The sections")));
        }
        byName.section = *section;
        text.remove_prefix(slash + 1);
    }

    const auto addReading = [&byName](std::string_view name, std::string_view path) {
        if (name.empty() || !Service::IsAlpha(name.front()) ||
            name.find_first_of("/ :#[]'\"") != std::string_view::npos)
            return;
        if (auto items = ItemPath::Parse(path))
            byName.readings.push_back({Service::Uppercased(name), std::move(*items)});
    };
    if (const std::size_t hash = headOf(text).find('#'); hash != std::string_view::npos) {
        const std::string_view rest = text.substr(hash + 1);
        const std::string_view digits = LeadingDigits(rest);
        const std::optional<int> number = ParseCount(digits);
        if (!number) return std::nullopt;
        byName.number = *number;
        byName.isNumbered = true;
        addReading(text.substr(0, hash), rest.substr(digits.size()));
    } else {
        const std::string_view head = headOf(text);
        for (std::size_t end = head.size(); end != std::string_view::npos && end > 0; end = head.rfind('.', end - 1)) {
            const std::string_view name = head.substr(0, end);
            if (name.find('.') == std::string_view::npos || IsKnownName(name)) addReading(name, text.substr(end));
        }
    }
    if (byName.readings.empty()) return std::nullopt;
    return byName;
}

Where::Spot Where::FindSpot(DeckSession& session, const WhereLimits& limits) const
{
    const auto find = [&](bool behindEndToo) {
        WhereLimits asked = limits;
        asked.all = behindEndToo;
        return std::visit([&](const auto& where) { return Locate(where, session, asked); }, m_where);
    };
    try {
        return find(limits.all);
    } catch (const Failure& failure) {
        if (limits.all || failure.Status() != NotThere) throw;
        const std::string hint = HintBehindEnd(find);
        if (hint.empty()) throw;
        throw Failure(NotThere, failure.what() + hint);
    }
}

Where::Place Where::Find(DeckSession& session, const WhereLimits& limits) const
{
    Spot spot = FindSpot(session, limits);
    PlaceIndex& places = session.Places(limits.all);
    return {places.PositionOf(spot.index), places.At(spot.index)->keyword, spot.index, std::move(spot.items)};
}

std::optional<std::string> Where::NameAlone(const std::string& name) const
{
    const auto* byName = std::get_if<ByName>(&m_where);
    if (byName == nullptr || byName->isNumbered) return std::nullopt;
    const std::string section =
        byName->section != SectionType::None ? std::string(NameOf(byName->section)) + "/" : std::string();
    return section + name;
}

Where::Place Where::FindKeyword(DeckSession& session, const WhereLimits& limits, std::string_view verb) const
{
    Place place = Find(session, limits);
    if (!place.items.IsEmpty())
        throw Failure(WrongUsage, fmt::format("{} takes a whole keyword, and no item of one.", verb));
    return place;
}

Where::Spot Where::Locate(const ByName& where, DeckSession& session, const WhereLimits& limits)
{
    PlaceIndex& places = session.Places(limits.all);
    const bool anySection = where.section == SectionType::None;
    const auto isMeant = [&](int index, const PlaceIndex::Entry& entry) {
        return limits.Hold(index) && (anySection || entry.section == where.section);
    };
    const std::string in = (anySection ? "the deck" : fmt::format("section {}", NameOf(where.section))) + limits.said;
    for (const Reading& reading : where.readings) {
        int count = 0;
        int found = 0;
        if (places.IsComplete() && anySection && limits.HoldAll()) {
            std::tie(found, count) = places.Nth(reading.name, where.number);
        } else {
            places.ForEachNamed(reading.name, [&](int index, const PlaceIndex::Entry& entry) {
                if (isMeant(index, entry) && ++count == where.number) found = index;
                return found == 0 && index < limits.last;
            });
        }
        if (found > 0) return {found, reading.items};
        if (count == 0) continue;
        throw Failure(NotThere, fmt::format("There {} {} {} in {}, and no {}#{}.", count == 1 ? "is" : "are", count,
                                            reading.name, in, reading.name, where.number));
    }
    std::set<std::string> names;
    for (int index = 1; const PlaceIndex::Entry* entry = places.At(index); ++index) {
        if (isMeant(index, *entry)) names.insert(places.NameAt(index));
    }
    const std::string& name = where.readings.back().name;
    throw Failure(NotThere, fmt::format("There is no {} in {}.{}", name, in, NearestHint(name, ViewsOf(names))));
}

Where::Spot Where::Locate(const ByIndex& where, DeckSession& session, const WhereLimits& limits)
{
    PlaceIndex& places = session.Places(limits.all);
    const PlaceIndex::Entry* entry = places.At(where.index);
    if (entry == nullptr || entry->file < 0) {
        throw Failure(NotThere, fmt::format("There is no keyword @{}: the deck has {}.", where.index,
                                            Plural(places.Count(), "keyword")));
    }
    if (!limits.Hold(where.index))
        throw Failure(NotThere, fmt::format("There is no keyword @{} in the deck{}.", where.index, limits.said));
    return {where.index, where.items};
}

int Where::FindFile(DeckSession& session, const std::string& typed)
{
    std::optional<Service::FileName> typedFile;
    try {
        typedFile.emplace(typed);
    } catch (const std::exception&) {
        throw Failure(WrongUsage, "This is no name that a file can have.", typed);
    }
    // Behind the end too: a line there must not go to the keyword ahead of it.
    PlaceIndex& places = session.Places(true);
    if (const auto known = places.FilesByTyped().find(typed); known != places.FilesByTyped().end())
        return known->second;
    int best = 0;
    std::vector<int> fitting;
    for (const int file : places.Files()) {
        const int fit = Fit(typed, *typedFile, session.FileShown(file), places.FileAt(file).GetFileName());
        if (fit == 0 || fit < best) continue;
        if (fit > best) fitting.clear();
        best = fit;
        fitting.push_back(file);
    }
    if (fitting.empty()) {
        // Leaf against leaf: the folder is what a user leaves out.
        const auto leafOf = [](std::string_view name) { return name.substr(name.rfind('/') + 1); };
        std::vector<std::string_view> leaves;
        for (const int file : places.Files())
            leaves.push_back(leafOf(session.FileShown(file)));
        throw Failure(NotThere, fmt::format("The deck has no file {} with keywords in it.{}", typed,
                                            NearestHint(leafOf(typed), leaves)));
    }
    if (fitting.size() > 1) {
        throw Failure(NotThere, fmt::format("{} may be {} or {}. Give more of its path.", typed,
                                            session.FileShown(fitting[0]), session.FileShown(fitting[1])));
    }
    places.FilesByTyped().emplace(typed, fitting.front());
    return fitting.front();
}

Where::Spot Where::Locate(const ByLine& where, DeckSession& session, const WhereLimits& limits)
{
    const int file = FindFile(session, where.file);
    const std::string& name = session.FileShown(file);
    PlaceIndex& all = session.Places(true);
    const int found = all.OnLine(file, where.line);
    if (found == 0) {
        throw Failure(NotThere, fmt::format("Line {} of {} stands above its first keyword, which is in line {}.",
                                            where.line, name, all.FirstLineOf(file)));
    }
    if (all.IsBehindLast(file, where.line)) {
        const long long lines = CountLines(all.FileAt(file).GetFileName().GetFullName());
        if (where.line > lines)
            throw Failure(NotThere, fmt::format("There is no line {} in {}: it has {}.", where.line, name,
                                                Plural(lines, "line")));
    }
    PlaceIndex& places = session.Places(limits.all);
    const int index = limits.all ? found : places.OnLine(file, where.line);
    if (index == 0 || places.At(index)->keyword != all.At(found)->keyword)
        throw Failure(NotThere, fmt::format("Line {} of {} lies outside the deck.", where.line, name));
    if (!limits.Hold(index))
        throw Failure(NotThere, fmt::format("Line {} of {} is not in the deck{}.", where.line, name, limits.said));
    return {index, where.items};
}

} // namespace Deckman
