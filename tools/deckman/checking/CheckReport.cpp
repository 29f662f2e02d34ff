#include "checking/CheckReport.h"

#include <algorithm>
#include <functional>
#include <span>
#include <utility>
#include <vector>

#include <fmt/format.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "output/Json.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace {

using Service::Log;

std::string_view NameOfSeverity(int severity)
{
    return severity >= Log::Error ? "error" : severity == Log::Warning ? "warning" : "note";
}

/// The word `name` stands in `text`.
bool Names(std::string_view text, std::string_view name)
{
    for (std::size_t at = text.find(name); at != std::string_view::npos; at = text.find(name, at + 1)) {
        const std::size_t end = at + name.size();
        const bool begins = at == 0 || !Service::IsAlnum(text[at - 1]);
        if (begins && (end == text.size() || !Service::IsAlnum(text[end]))) return true;
    }
    return false;
}

std::string Counted(long long count, std::string_view thing)
{
    return fmt::format("{} {}{}", count, thing, count == 1 ? "" : "s");
}

std::string CountedOrNo(long long count, std::string_view thing)
{
    return count == 0 ? fmt::format("no {}s", thing) : Counted(count, thing);
}

} // namespace

void CheckReport::Add(const Finding& finding)
{
    const std::string identity = fmt::format("{}:{}:{}:{}", finding.file, finding.line, finding.severity, finding.text);
    if (!m_told.insert(std::hash<std::string>()(identity)).second) return;
    if (finding.severity >= Log::Error)
        ++m_errors;
    else if (finding.severity == Log::Warning)
        ++m_warnings;

    if (m_json)
        AddJson(finding);
    else
        AddToGroup(finding);
}

void CheckReport::AddJson(const Finding& finding)
{
    const auto orNull = [this](std::string_view text) {
        if (text.empty())
            m_out.Append("null");
        else
            AppendJsonString(m_out, text);
    };
    m_out.Append("{\"file\":");
    orNull(finding.file.empty() ? std::string() : m_session.ShownName(finding.file));
    m_out.Append(",\"line\":");
    if (finding.line > 0)
        m_out.AppendNumber(finding.line);
    else
        m_out.Append("null");
    m_out.Append(",\"keyword\":");
    orNull(finding.keyword);
    m_out.Append(",\"severity\":");
    AppendJsonString(m_out, NameOfSeverity(finding.severity));
    m_out.Append(",\"text\":");
    AppendJsonString(m_out, Service::TrimmedRight(finding.text));
    m_out.Append("}\n");
}

void CheckReport::AddToGroup(const Finding& finding)
{
    std::string text(Service::TrimmedRight(finding.text));
    if (!finding.keyword.empty() && !Names(text, finding.keyword)) text += fmt::format(" ({})", finding.keyword);

    auto& known = m_groupOf[finding.severity];
    auto found = known.find(text);
    if (found == known.end()) {
        Group& added = m_groups.emplace_back(Group{finding.severity, std::move(text), {}});
        found = known.emplace(added.text, &added).first;
    }
    Group& group = *found->second;
    if (group.count < static_cast<long long>(shownPlaces)) {
        const auto file = m_fileOrder.try_emplace(std::string(finding.file), unnamed).first;
        group.places[static_cast<std::size_t>(group.count)] = {&file->first, finding.line};
    }
    ++group.count;
}

void CheckReport::Print(const Group& group)
{
    const std::string_view severity = NameOfSeverity(group.severity);
    std::string text = group.text;
    Messages::MakeHarmless(text);
    Service::StringReplace(text, "\n", "\n    ");
    const auto shownCount = static_cast<std::size_t>(std::min<long long>(group.count, shownPlaces));
    for (const Place& place : std::span(group.places).first(shownCount)) {
        std::string shown = place.file->empty() ? "deckman" : m_session.Log().Shown(*place.file);
        Messages::MakeHarmless(shown);
        m_out.Append(shown);
        if (place.line > 0) m_out.Append(fmt::format(":{}", place.line));
        m_out.Append(": ");
        m_out.Append(severity, group.severity >= Log::Error ? Style::Alert : Style::Strong);
        m_out.Append(": ");
        m_out.Append(text);
        m_out.Append('\n');
    }
    const long long more = group.count - static_cast<long long>(shownCount);
    if (more > 0) m_out.Append(fmt::format("    ... and {} more\n", more), Style::Faint);
}

void CheckReport::Finish(long long keywords, long long files)
{
    if (m_json) return;
    const auto place = [this](const Group& group) {
        const Place& first = group.places.front();
        return std::pair(m_fileOrder.at(*first.file), first.line);
    };
    using Ranked = std::pair<std::pair<std::size_t, int>, const Group*>;
    std::vector<Ranked> ranked;
    ranked.reserve(m_groups.size());
    for (const Group& group : m_groups)
        ranked.emplace_back(place(group), &group);
    std::stable_sort(ranked.begin(), ranked.end(),
                     [](const Ranked& left, const Ranked& right) { return left.first < right.first; });
    for (const auto& [rank, group] : ranked)
        Print(*group);
    m_out.Append(fmt::format("{} in {}: {}, {}.\n", Counted(keywords, "keyword"), Counted(files, "file"),
                             CountedOrNo(m_errors, "error"), CountedOrNo(m_warnings, "warning")));
}

} // namespace Deckman
