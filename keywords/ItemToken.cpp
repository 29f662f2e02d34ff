#include "keywords/ItemToken.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>

#include <deckmanager/Environment.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordStringMD.h>
#include <tarn/keywords/UnsetValue.h>
#include <tarn/keywords/VariablesString.h>
#include <tarn/service/Strings.h>

#include "keywords/KeywordDataSerializer.h"
#include "keywords/ValueConversions.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;
using Kind = DataTextEditor::Value::Kind;

namespace {

std::string Shown(const DataTextEditor::Value& value)
{
    switch (value.GetKind()) {
    case Kind::Default:
        return VeldaneDeckInfo::DEFAULT_TOKEN;
    case Kind::YesNo:
        return value.GetInteger() != 0 ? "YES" : "NO";
    case Kind::Integer:
        return fmt::format("{}", value.GetInteger());
    case Kind::Real:
        return fmt::format("{}", value.GetReal());
    default:
        return value.GetString();
    }
}

bool Refuse(const DataTextEditor::Value& value, std::string_view why, std::string& reason)
{
    reason = fmt::format("The value \"{}\" is not valid. {}.", Shown(value), why);
    return false;
}

bool IsTextual(Kind kind)
{
    return kind == Kind::String || kind == Kind::Text;
}

/// A token of digits, letters and signs alone, which needs no second look.
bool IsNumberLike(std::string_view text)
{
    for (const char c : text) {
        if (!Service::IsDigit(c) && !Service::IsAlpha(c) && c != '+' && c != '-' && c != '.') return false;
    }
    return !text.empty() && text.find(VeldaneDeckInfo::COMMENT_MARKER) == std::string_view::npos;
}

bool IsInQuotes(std::string_view text)
{
    return text.size() >= 2 && text.front() == VeldaneDeckInfo::QUOTE && text.back() == VeldaneDeckInfo::QUOTE &&
           text.substr(1, text.size() - 2).find(VeldaneDeckInfo::QUOTE) == std::string_view::npos;
}

/// At most 15 digits where these give the value again, else as many as do.
std::string TextOfReal(double value)
{
    KeywordDataSerializer::NumberBuffer buffer;
    const std::string_view usual = KeywordDataSerializer::FormatReal(value, nullptr, buffer);
    double read = 0.0;
    if (ValueConversions::ToReal(usual, read) && read == value) return std::string(usual);
    std::array<char, 64> exact;
    const auto end = std::to_chars(exact.data(), exact.data() + exact.size(), value).ptr;
    return std::string(exact.data(), end);
}

} // namespace

std::string ItemToken::Quoted() const
{
    if (m_isDefault || (!m_isVariable && m_kind != MDType::String && m_kind != MDType::Option)) return m_text;
    std::string scratch;
    return std::string(KeywordDataSerializer::Quote(m_text, scratch));
}

bool ItemToken::MakeEntry(const DataTextEditor::Value& value, ItemToken& token, std::string& reason)
{
    token = ItemToken();
    token.m_kind = MDType::Integer;
    if (value.GetKind() == Kind::Default ||
        (value.GetKind() == Kind::Text && Service::Trimmed(value.GetString()) == VeldaneDeckInfo::DEFAULT_TOKEN))
    {
        token.m_isDefault = true;
        token.m_text = VeldaneDeckInfo::DEFAULT_TOKEN;
        return true;
    }
    return token.MakeNumber(value, Service::Trimmed(value.GetString()), reason);
}

bool ItemToken::MakeNumber(const DataTextEditor::Value& value, std::string_view text, std::string& reason)
{
    const Kind kind = value.GetKind();
    if (m_kind == MDType::Integer) {
        m_integer = value.GetInteger();
        if (kind == Kind::Text) {
            if (!ValueConversions::ToWholeInteger(text, m_integer))
                return Refuse(value, "Must be a whole number", reason);
            // The reader holds what is too large at the largest.
            std::int64_t exact = 0;
            const std::string_view digits = text.starts_with('+') ? text.substr(1) : text;
            const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), exact);
            if (error != std::errc() || end != digits.data() + digits.size() || exact != m_integer)
                return Refuse(value, "Must be between -2147483647 and 2147483647", reason);
            m_text = text;
            return true;
        }
        if (kind != Kind::Integer) return Refuse(value, "Must be a whole number", reason);
        if (m_integer == Keywords::UnsetValue::Integer)
            return Refuse(value, "Must be between -2147483647 and 2147483647", reason);
        m_text = fmt::format("{}", m_integer);
        return true;
    }
    if (kind == Kind::Text) {
        if (!IsNumberLike(text) || !ValueConversions::ToReal(text, m_real) || std::isnan(m_real))
            return Refuse(value, "Must be a real number", reason);
        m_text = text;
    } else if (kind == Kind::Integer) {
        m_real = value.GetInteger();
        m_text = fmt::format("{}", value.GetInteger());
    } else if (kind == Kind::Real && !std::isnan(value.GetReal())) {
        m_real = value.GetReal();
        m_text = TextOfReal(m_real);
    } else {
        return Refuse(value, "Must be a real number", reason);
    }
    if (m_real == Keywords::UnsetValue::Real) return Refuse(value, "It stands for a missing number", reason);
    return true;
}

bool ItemToken::MakeWord(std::string_view word, const Surroundings& surroundings, bool quoted)
{
    std::string scratch;
    if (surroundings.isExpression)
        m_text = KeywordDataSerializer::QuoteExpressionToken(word, true, scratch);
    else
        m_text = KeywordDataSerializer::QuoteIfNeeded(word, surroundings.allowsCommas, scratch);
    if (quoted) m_text = Quoted();
    return true;
}

bool ItemToken::Make(const DataTextEditor::Value& value, const Keywords::IKeywordMD& md,
                     const Surroundings& surroundings, ItemToken& token, std::string& reason)
{
    token = ItemToken();
    token.m_kind = md.GetType();
    const Kind kind = value.GetKind();
    const bool isLine = token.m_kind == MDType::RestOfLine;
    if (IsTextual(kind) && value.GetString().find_first_of("\r\n") != std::string::npos)
        return Refuse(value, "Must stand on one line", reason);
    if (isLine) {
        if (!IsTextual(kind)) return Refuse(value, "Must be a line of text", reason);
        token.m_text = token.m_string = value.GetString();
        return true;
    }
    std::string_view text = value.GetString();
    bool quoted = false;
    if (kind == Kind::Text) {
        text = Service::Trimmed(text);
        quoted = IsInQuotes(text);
        if (quoted) text = Service::Trimmed(text.substr(1, text.size() - 2));
    }
    if (kind == Kind::Default || (kind == Kind::Text && !quoted && text == VeldaneDeckInfo::DEFAULT_TOKEN)) {
        token.m_isDefault = true;
        token.m_text = VeldaneDeckInfo::DEFAULT_TOKEN;
        return true;
    }
    if (kind == Kind::Text && surroundings.allowsVariables && Keywords::VariablesString::ContainsVariables(text)) {
        if (text.find(VeldaneDeckInfo::QUOTE) != std::string_view::npos)
            return Refuse(value, "A reference can not hold a quote", reason);
        token.m_isVariable = true;
        token.m_string = text;
        return token.MakeWord(text, surroundings, quoted);
    }
    switch (token.m_kind) {
    case MDType::YesNo: {
        signed char yes = value.GetInteger() != 0 ? 1 : 0;
        if (kind == Kind::Text ? !ValueConversions::ConvertYesNo(text, yes) : kind != Kind::YesNo)
            return Refuse(value, "Must be either YES or NO", reason);
        token.m_integer = yes;
        token.m_text = kind == Kind::Text ? std::string(text) : yes != 0 ? "YES" : "NO";
        return true;
    }
    case MDType::Option: {
        const auto& option = static_cast<const Keywords::IKeywordOptionMD&>(md);
        const std::string number = kind == Kind::Integer ? fmt::format("{}", value.GetInteger()) : std::string();
        if (kind == Kind::Integer) text = number;
        if (!IsTextual(kind) && kind != Kind::Integer) return Refuse(value, "Must be the name of an option", reason);
        std::string why;
        token.m_integer = option.FindOption(text, why);
        if (token.m_integer < 0) return Refuse(value, why, reason);
        // Digits stand bare among options; what looks like a repeat doesn't.
        if (!quoted && IsNumberLike(text)) {
            token.m_text = text;
            return true;
        }
        return token.MakeWord(text, surroundings, quoted);
    }
    case MDType::Integer:
    case MDType::Real:
        return token.MakeNumber(value, text, reason);
    case MDType::String: {
        if (!IsTextual(kind)) return Refuse(value, "Must be a string", reason);
        if (text.find(VeldaneDeckInfo::QUOTE) != std::string_view::npos)
            return Refuse(value, "A string can not hold a quote", reason);
        const auto& string = static_cast<const Keywords::IKeywordStringMD&>(md);
        token.m_foldsCase = Environment::Instance().GetUppercaseKeywordStringsOnRead() && !string.PreservesCase();
        if (Environment::Instance().LimitStringLengthOnRead() && string.GetMaxLength() > 0 &&
            text.size() > static_cast<std::size_t>(string.GetMaxLength()))
        {
            return Refuse(value, fmt::format("Must have at most {} characters", string.GetMaxLength()), reason);
        }
        token.m_string = text;
        return token.MakeWord(text, surroundings, quoted);
    }
    default:
        return Refuse(value, "A single value can not stand for a list or a record", reason);
    }
}

bool ItemToken::IsHeldBy(const Keywords::ConstSlot& slot) const
{
    if (m_isDefault || m_isVariable) return !slot.HasValue();
    if (!slot.HasValue() || slot.Kind() != m_kind) return false;
    switch (m_kind) {
    case MDType::YesNo:
        return slot.GetYesNo() == m_integer;
    case MDType::Option:
        return slot.GetOption() == m_integer;
    case MDType::Integer:
        return slot.GetInteger() == m_integer;
    case MDType::Real:
        return std::bit_cast<std::uint64_t>(slot.GetReal()) == std::bit_cast<std::uint64_t>(m_real);
    default:
        return m_foldsCase ? Service::NoCaseStringEqual(slot.GetString(), m_string) : slot.GetString() == m_string;
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
