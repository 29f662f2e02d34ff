#include "checking/GridSizes.h"

#include <exception>
#include <memory>

#include <deckmanager/IKeyword.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/service/LogEnabler.h>
#include <tarn/service/Strings.h>

#include "session/DeckSession.h"

namespace Deckman {

namespace {

namespace Keywords = Tarn::Fjel::Core::Keywords;
using Keywords::IKeywordData;
using Keywords::IKeywordRecordData;
using Keywords::MDType;

const IKeywordRecordData* AsRecord(const IKeywordData* data)
{
    return data != nullptr && data->GetType() == MDType::Record ? static_cast<const IKeywordRecordData*>(data)
                                                                : nullptr;
}

/// The whole number in that item; none where it is left out.
std::optional<long long> NumberIn(const IKeywordRecordData& record, int item)
{
    if (item >= record.GetItemCount() || record.GetRecordMD()->GetItemMD(item)->GetType() != MDType::Integer ||
        !record.GetItem(item).HasValue())
        return std::nullopt;
    return record.GetItem(item).GetInteger();
}

std::string NameIn(const IKeywordRecordData& record)
{
    if (record.GetItemCount() == 0 || record.GetRecordMD()->GetItemMD(0)->GetType() != MDType::String ||
        !record.GetItem(0).HasValue())
        return {};
    return Service::Uppercased(record.GetItem(0).GetString());
}

/// Three numbers above 0, from that item on.
std::optional<std::array<long long, 3>> SizeIn(const IKeywordRecordData& record, int item)
{
    std::array<long long, 3> size;
    for (int i = 0; i < 3; ++i) {
        const auto number = NumberIn(record, item + i);
        if (!number || *number < 1) return std::nullopt;
        size[static_cast<std::size_t>(i)] = *number;
    }
    return size;
}

bool IsRefinement(std::string_view name)
{
    return name == "CARFIN" || name == "RADFIN" || name == "RADFIN4" || name == "REFINE";
}

} // namespace

void GridSizes::Survey(DeckSession& session, const DeckManager::IKeyword& keyword)
{
    const std::string& name = keyword.GetName();
    m_isDual = m_isDual || name == "DUALPORO" || name == "DUALPERM";
    const bool isGrid = name == "DIMENS" || (name == "SPECGRID" && !m_size);
    if (!isGrid && name != "CARFIN") return;
    const Service::LogEnabler silence(false);
    try {
        const std::unique_ptr<IKeywordData> data = DeckManager::ReadKeywordData(session.Keywords(), keyword);
        const IKeywordRecordData* record = AsRecord(data.get());
        if (record == nullptr) return;
        if (isGrid)
            m_size = SizeIn(*record, 0);
        else if (const auto size = SizeIn(*record, 7))
            m_refinements.insert_or_assign(NameIn(*record), *size);
    } catch (const std::exception&) {
        // Told when all data are read.
    }
}

void GridSizes::Pass(const DeckManager::IKeyword& keyword, SectionType section, const IKeywordData* data)
{
    const std::string& name = keyword.GetName();
    if (section != m_section || name == "ENDFIN") {
        m_section = section;
        m_isRefined = false;
        m_box.reset();
        m_isLost = false;
    }
    const IKeywordRecordData* record = AsRecord(data);
    if (IsRefinement(name)) {
        m_isRefined = true;
        m_refinement = record != nullptr ? NameIn(*record) : std::string();
        m_box.reset();
        m_isLost = false;
    } else if (name == "ENDBOX") {
        m_box.reset();
        m_isLost = false;
    } else if (name == "BOX") {
        m_isLost = record == nullptr;
        if (record == nullptr) return;
        // What is left out is that of the whole grid, or refinement.
        const auto refinement = m_refinements.find(m_refinement);
        const std::optional<Size> whole = !m_isRefined                        ? m_size
                                          : refinement != m_refinements.end() ? std::optional(refinement->second)
                                                                              : std::nullopt;
        Box box{};
        for (std::size_t i = 0; i < 3; ++i) {
            const int item = 2 * static_cast<int>(i);
            const auto first = NumberIn(*record, item);
            const auto last = NumberIn(*record, item + 1);
            if (!whole && !last) m_isLost = true;
            box.first[i] = first ? *first : 1;
            box.last[i] = last ? *last : whole ? (*whole)[i] : 0;
            if (box.first[i] < 1 || box.last[i] < box.first[i]) m_isLost = true;
        }
        m_box = box;
    }
}

std::string GridSizes::Complaint(std::string_view expression, long long count) const
{
    if (m_isLost) return {};
    Size size{};
    std::string where;
    if (m_box) {
        for (std::size_t i = 0; i < 3; ++i)
            size[i] = m_box->last[i] - m_box->first[i] + 1;
        where = "the box";
    } else if (m_isRefined) {
        const auto refinement = m_refinements.find(m_refinement);
        if (refinement == m_refinements.end()) return {};
        size = refinement->second;
        where = "the refinement " + m_refinement;
    } else if (m_size) {
        size = *m_size;
        where = "the grid";
    } else {
        return {};
    }
    long long cells = 1;
    for (const long long side : size) {
        if (__builtin_mul_overflow(cells, side, &cells)) return {};
    }
    const auto told = [&](long long number, std::string_view what) {
        return fmt::format("{} has {} {} ({} x {} x {})", where, number, what, size[0], size[1], size[2]);
    };
    // Of a dual medium, half the layers may be given: the others are the other medium's.
    const long long least = m_isDual && !m_box && size[2] % 2 == 0 ? cells / 2 : cells;
    if (expression == "grid:cells") return count == cells || count == least ? std::string() : told(cells, "cells");
    const long long layer = size[0] * size[1];
    if (expression == "grid:columns") {
        return count >= layer && count <= cells ? std::string() : told(layer, "columns");
    }
    if (m_box || m_isDual) return {};
    if (expression == "grid:corners") return count == 8 * cells ? std::string() : told(8 * cells, "corners");
    const long long lines = 6 * (size[0] + 1) * (size[1] + 1);
    if (expression == "grid:lines" && (count == 0 || count % lines != 0))
        return told(lines / 6, "lines of six numbers");
    return {};
}

} // namespace Deckman
