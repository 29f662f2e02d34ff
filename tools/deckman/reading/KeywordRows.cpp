#include "reading/KeywordRows.h"

#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <fnmatch.h>
#include <tarn/keywords/KeywordKind.h>

#include "output/Json.h"
#include "session/DeckSession.h"
#include "session/Sections.h"

namespace Deckman {

using Tarn::Fjel::Core::Keywords::KeywordKind;

bool Passes(const KeywordFilter& filter, const DeckWalk& walk)
{
    if (filter.section && walk.Section() != *filter.section) return false;
    const DeckManager::IKeyword& keyword = walk.Keyword();
    if (!filter.nameGlob.empty() && ::fnmatch(filter.nameGlob.c_str(), keyword.GetName().c_str(), 0) != 0) return false;
    if (filter.userOnly && keyword.IsGenerated()) return false;
    return !filter.generatedOnly || keyword.IsGenerated();
}

KeywordRows::KeywordRows(const DeckSession& session, Output& out, bool json)
    : m_session(session), m_out(out), m_json(json)
{
    if (!json) {
        m_table.emplace(std::vector<Table::Column>{{"index", true},
                                                   {"keyword"},
                                                   {"section"},
                                                   {"bytes", true},
                                                   {"marks"},
                                                   {"place", false, {}, Table::Cut::Head}});
    }
}

void KeywordRows::Add(const DeckWalk& walk)
{
    if (m_json)
        AddJson(walk);
    else
        AddRow(walk);
}

void KeywordRows::Finish()
{
    if (m_table) m_table->Print(m_out);
}

void KeywordRows::AddJson(const DeckWalk& walk)
{
    if (m_stretch != walk.Stretch()) {
        m_stretch = walk.Stretch();
        const std::string_view section = NameOf(walk.Section());
        m_middle = fmt::format(",\"section\":{},\"file\":{},\"line\":", section.empty() ? "null" : JsonString(section),
                               JsonString(m_session.FileShown(walk.File())));
    }
    const DeckManager::IKeyword& keyword = walk.Keyword();
    const auto number = [this](std::string_view field, long long value) {
        m_out.Append(field);
        m_out.AppendNumber(value);
    };
    number("{\"index\":", walk.Index());
    m_out.Append(",\"name\":");
    AppendJsonString(m_out, keyword.GetName());
    number(m_middle, keyword.GetLine());
    number(",\"position\":", keyword.GetPosition());
    number(",\"size\":", keyword.GetSize());
    number(",\"depth\":", walk.Depth());
    m_out.Append(keyword.IsGenerated() ? ",\"generated\":true" : ",\"generated\":false");
    m_out.Append(keyword.IsSuppressed() ? ",\"suppressed\":true}\n" : ",\"suppressed\":false}\n");
}

void KeywordRows::AddRow(const DeckWalk& walk)
{
    const DeckManager::IKeyword& keyword = walk.Keyword();
    const bool generated = keyword.IsGenerated();
    const bool suppressed = keyword.IsSuppressed();

    m_table->Add(walk.Index());
    const Style style = walk.Kind() == KeywordKind::Section ? Style::Strong
                        : suppressed                        ? Style::Alert
                        : generated                         ? Style::Faint
                                                            : Style::Plain;
    m_table->Add(Table::Indent(walk.Depth()) + keyword.GetName(), style);
    m_table->Add(NameOf(walk.Section()));
    m_table->Add(keyword.GetSize());
    m_table->Add(generated && suppressed ? "generated, suppressed"
                 : generated             ? "generated"
                 : suppressed            ? "suppressed"
                                         : "");
    m_table->Add(fmt::format("{}:{}", m_session.FileShown(walk.File()), keyword.GetLine()));
}

} // namespace Deckman
