// Items: single values of records, and lists of them.

#include "keywords/KeywordDataSerializer.h"

#include <bit>
#include <span>
#include <typeinfo>

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordIntegerMD.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRealMD.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/UnsetValue.h>

#include "text/ILineWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Keywords::UnsetValue;

namespace {

constexpr std::string_view defaultToken = VeldaneDeckInfo::DEFAULT_TOKEN;

[[noreturn]] void ThrowUnhandled(const char* step, const Keywords::IKeywordMD& md)
{
    throw DeckManagerException(fmt::format("DeckManager::KeywordDataSerializer::{}(): unhandled metadata type \"{}\"",
                                           step, typeid(md).name()));
}

std::string_view OptionText(const Keywords::IKeywordOptionMD& md, int value, std::string& scratch)
{
    if (value < 0 || value >= md.GetOptionCount()) return defaultToken;
    return KeywordDataSerializer::QuoteIfNeeded(md.GetOptionName(value), false, scratch);
}

/// The same value, which for a real means the same bits.
template <class Value>
bool IsSame(const Value& a, const Value& b)
{
    return a == b;
}
bool IsSame(double a, double b)
{
    return std::bit_cast<std::uint64_t>(a) == std::bit_cast<std::uint64_t>(b);
}
bool IsSame(const Keywords::CompactString& a, const Keywords::CompactString& b)
{
    return a.HasValue() == b.HasValue() && a.View() == b.View();
}

/// Writes a list of values, of which equal neighbours are turned into text once. `textOf` gives the default token for
/// an unset one.
template <class Value, class TextOf>
void WriteValues(const Keywords::IKeywordListData& list, std::span<const Value> values, ILineWriter& writer,
                 bool indent, TextOf textOf)
{
    const int count = static_cast<int>(values.size());
    const bool hasDefaults = list.HasDefaultedElements();
    const auto isDefaulted = [&](int index) { return hasDefaults && list.IsElementDefaulted(index); };
    for (int begin = 0; begin < count;) {
        const bool defaulted = isDefaulted(begin);
        const Value& value = values[static_cast<std::size_t>(begin)];
        int end = begin + 1;
        while (end < count && isDefaulted(end) == defaulted &&
               (defaulted || IsSame(values[static_cast<std::size_t>(end)], value)))
            ++end;
        writer.WriteRun(defaulted ? defaultToken : textOf(value), indent, end - begin);
        begin = end;
    }
}

} // namespace

void KeywordDataSerializer::SerializeItemList(const Keywords::IKeywordListData& list, const Write& write)
{
    ILineWriter& writer = write.writer;
    const Keywords::IKeywordMD& elementMD = *list.GetListMD()->GetElementMD();
    NumberBuffer buffer;
    std::string scratch;
    switch (elementMD.GetType()) {
    case MDType::YesNo:
        WriteValues(list, list.YesNos(), writer, true, [](signed char value) -> std::string_view {
            return value == UnsetValue::YesNo ? defaultToken : value != 0 ? "YES" : "NO";
        });
        break;
    case MDType::Option:
        WriteValues(list, list.Options(), writer, true, [&](int value) {
            return OptionText(static_cast<const Keywords::IKeywordOptionMD&>(elementMD), value, scratch);
        });
        break;
    case MDType::Integer: {
        const char* const format = static_cast<const Keywords::IKeywordIntegerMD&>(elementMD).GetFormat();
        WriteValues(list, list.Integers(), writer, true, [&](int value) {
            return value == UnsetValue::Integer ? defaultToken : FormatInteger(value, format, buffer);
        });
        break;
    }
    case MDType::RestOfLine:
        WriteValues(list, list.Strings(), writer, false, [](const Keywords::CompactString& value) {
            return value.HasValue() ? value.View() : defaultToken;
        });
        break;
    case MDType::Real: {
        const char* const format = static_cast<const Keywords::IKeywordRealMD&>(elementMD).GetFormat();
        WriteValues(list, list.Reals(), writer, true, [&](double value) {
            return value == UnsetValue::Real ? defaultToken : FormatReal(value, format, buffer);
        });
        break;
    }
    case MDType::String: {
        const bool allowCommas = static_cast<const Keywords::IKeywordStringMD&>(elementMD).AllowsCommas();
        WriteValues(list, list.Strings(), writer, true, [&](const Keywords::CompactString& value) {
            return value.HasValue() ? QuoteIfNeeded(value.View(), allowCommas, scratch) : defaultToken;
        });
        break;
    }
    default:
        ThrowUnhandled("SerializeItemList", elementMD);
    }
}

bool KeywordDataSerializer::IsDefaultItem(const Keywords::ConstSlot& value, const Keywords::IKeywordMD* itemMD)
{
    switch (Keywords::KeywordUtils::GetMDType(itemMD)) {
    case MDType::None:
        return false;
    case MDType::YesNo:
        return value.GetYesNo() < 0;
    case MDType::Option:
        return value.GetOption() == UnsetValue::Option;
    case MDType::Integer:
        return value.GetInteger() == UnsetValue::Integer;
    case MDType::Real:
        return value.GetReal() == UnsetValue::Real;
    case MDType::RestOfLine:
    case MDType::String:
        return !value.HasValue();
    default:
        ThrowUnhandled("IsDefaultItem", *itemMD);
    }
}

void KeywordDataSerializer::SerializeOptionalItem(const Keywords::ConstSlot& value, const Keywords::IKeywordMD* itemMD,
                                                  ILineWriter& writer, bool newLine, bool optional)
{
    if (itemMD == nullptr) return;
    const MDType type = itemMD->GetType();
    if (!Keywords::KeywordUtils::IsItemMDType(type)) ThrowUnhandled("SerializeOptionalItem", *itemMD);
    if (newLine) writer.NewLine();
    if (IsDefaultItem(value, itemMD)) {
        if (!optional) writer.WriteToken(defaultToken, type != MDType::RestOfLine);
        return;
    }
    NumberBuffer buffer;
    thread_local std::string scratch; // kept, so that nothing is allocated for an item
    switch (type) {
    case MDType::YesNo:
        writer.WriteToken(value.GetYesNo() < 1 ? "NO" : "YES", true);
        break;
    case MDType::Option:
        writer.WriteToken(
            OptionText(static_cast<const Keywords::IKeywordOptionMD&>(*itemMD), value.GetOption(), scratch), true);
        break;
    case MDType::Integer:
        writer.WriteToken(FormatInteger(value.GetInteger(),
                                        static_cast<const Keywords::IKeywordIntegerMD&>(*itemMD).GetFormat(), buffer),
                          true);
        break;
    case MDType::Real:
        writer.WriteToken(
            FormatReal(value.GetReal(), static_cast<const Keywords::IKeywordRealMD&>(*itemMD).GetFormat(), buffer),
            true);
        break;
    case MDType::RestOfLine:
        writer.WriteToken(value.GetString(), false);
        break;
    default:
        // A record's reader ends a token at a comma, also where a list's would not.
        writer.WriteToken(QuoteIfNeeded(value.GetString(), false, scratch), true);
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
