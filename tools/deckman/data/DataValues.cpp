#include "data/DataValues.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <iterator>
#include <optional>

#include <fmt/compile.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListDataVariables.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordMapDataVariables.h>
#include <tarn/keywords/IKeywordRecordDataVariables.h>
#include <tarn/keywords/Metadata.h>
#include <tarn/keywords/UnsetValue.h>

namespace Deckman {

using Keywords::MDType;
using Origin = ValueText::Origin;

namespace {

template <class Number>
std::optional<Number> NumberIn(const std::string& text)
{
    Number value{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

} // namespace

ValueText ValueReader::Real(double value)
{
    m_buffer.clear();
    fmt::format_to(std::back_inserter(m_buffer), FMT_COMPILE("{}"), value);
    if (m_form == Form::People) return {Origin::Deck, false, m_buffer};
    if (!std::isfinite(value)) return {Origin::Deck, true, m_buffer};
    if (m_buffer.find_first_of(".e") == std::string::npos) m_buffer += ".0";
    return {Origin::Deck, false, m_buffer};
}

ValueText ValueReader::Integer(long long value)
{
    const fmt::format_int digits(value);
    m_buffer.assign(digits.data(), digits.size());
    return {Origin::Deck, false, m_buffer};
}

ValueText ValueReader::YesNo(bool value) const
{
    if (m_form == Form::Json) return {Origin::Deck, false, value ? "true" : "false"};
    return {Origin::Deck, false, value ? "YES" : "NO"};
}

ValueText ValueReader::Read(const Keywords::IKeywordData& container, int index)
{
    if (const std::string* reference = VariableAt(container, index)) return {Origin::Variable, true, *reference};
    if (container.GetType() == MDType::Map) {
        const int value = static_cast<const Keywords::IKeywordMapData&>(container).GetEntryValue(index);
        return value == Keywords::UnsetValue::MapEntry ? ValueText() : Integer(value);
    }
    const Keywords::ConstSlot slot(container, index);
    if (slot.HasValue()) return FromSlot(slot);
    return m_reading.fillsDefaults ? FromDefault(static_cast<const Keywords::IKeywordItemMD&>(*slot.GetMD()))
                                   : ValueText();
}

ValueText ValueReader::FromSlot(const Keywords::ConstSlot& slot)
{
    switch (slot.Kind()) {
    case MDType::YesNo:
        return YesNo(slot.GetYesNo() != 0);
    case MDType::Integer:
        return Integer(slot.GetInteger());
    case MDType::Real:
        return Real(slot.GetReal());
    case MDType::Option: {
        const auto& md = static_cast<const Keywords::IKeywordOptionMD&>(*slot.GetMD());
        const int option = slot.GetOption();
        if (option < 0 || option >= md.GetOptionCount()) return {};
        return {Origin::Deck, true, md.GetOptionName(option)};
    }
    default:
        return {Origin::Deck, true, slot.GetString()};
    }
}

ValueText ValueReader::FromDefault(const Keywords::IKeywordItemMD& md)
{
    if (!md.HasDefaultFor(m_reading.simulator)) return {};
    const std::string& text = md.GetDefaultText(m_reading.simulator);
    ValueText value;
    switch (md.GetType()) {
    case MDType::YesNo:
        value = YesNo(text.starts_with('Y') || text.starts_with('y') || text == "true");
        break;
    case MDType::Integer:
        if (const auto number = NumberIn<int>(text)) value = Integer(*number);
        break;
    case MDType::Real:
        if (const auto number = NumberIn<double>(text)) value = Real(*number);
        break;
    default:
        value = {Origin::Default, true, text};
        break;
    }
    if (value.origin != Origin::None) value.origin = Origin::Default;
    return value;
}

bool ValueReader::HasVariables(const Keywords::IKeywordData& container)
{
    if (m_reading.variables == nullptr) return false;
    NoteVariables(container);
    return !m_references.empty();
}

const std::string* ValueReader::VariableAt(const Keywords::IKeywordData& container, int index)
{
    if (!HasVariables(container)) return nullptr;
    const auto found = std::ranges::lower_bound(m_references, index, {}, &Reference::index);
    return found != m_references.end() && found->index == index ? found->text : nullptr;
}

void ValueReader::NoteVariables(const Keywords::IKeywordData& container)
{
    if (m_noted == &container) return;
    m_noted = &container;
    m_references.clear();
    const Keywords::IKeywordDataVariables* const variables = m_reading.variables->GetDataVariables(&container);
    const auto noteAll = [this](const auto& byIndex) {
        for (const int index : byIndex.GetVariableIndices())
            m_references.push_back({index, &byIndex.GetVariable(index).GetString()});
    };
    if (const auto* list = dynamic_cast<const Keywords::IKeywordListDataVariables*>(variables)) {
        noteAll(*list);
    } else if (const auto* record = dynamic_cast<const Keywords::IKeywordRecordDataVariables*>(variables)) {
        noteAll(*record);
    } else if (const auto* map = dynamic_cast<const Keywords::IKeywordMapDataVariables*>(variables)) {
        const auto& md = *static_cast<const Keywords::IKeywordMapData&>(container).GetMapMD();
        for (const std::string& key : map->GetVariableKeys()) {
            if (const int index = md.FindEntry(key); index >= 0)
                m_references.push_back({index, &map->GetVariable(key).GetString()});
        }
        std::ranges::sort(m_references, {}, &Reference::index);
    }
}

} // namespace Deckman
