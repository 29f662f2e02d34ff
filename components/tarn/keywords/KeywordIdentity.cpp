#include <tarn/keywords/KeywordIdentity.h>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/detail/MetadataNodes.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

/// Hands each value of the identity to take, in order, until take returns false; false then.
template <class Take>
bool Walk(const IKeywordData& data, const Take& take)
{
    if (data.GetType() == MDType::List) {
        const auto& list = static_cast<const IKeywordListData&>(data);
        if (!static_cast<const Detail::ListMD*>(list.GetListMD())->HasIdentityBelow()) return true;
        for (int i = 0; i < list.GetElementCount(); ++i) {
            if (!Walk(list.GetContainer(i), take)) return false;
        }
        return true;
    }
    if (data.GetType() != MDType::Record) return true;
    const auto& record = static_cast<const IKeywordRecordData&>(data);
    const auto& md = *static_cast<const Detail::RecordMD*>(record.GetRecordMD());
    if (!md.HasIdentityBelow()) return true;
    for (const int index : md.GetIdentityItems()) {
        if (!take(record.GetItem(index))) return false;
    }
    for (const int index : md.Layout().containers) {
        if (!Walk(record.GetContainer(index), take)) return false;
    }
    return true;
}

} // namespace

KeywordIdentity::KeywordIdentity(const IKeywordData* data)
{
    if (!data) return;
    Walk(*data, [this](const ConstSlot& slot) {
        Value& value = m_values.emplace_back();
        if (!slot.HasValue()) return true;
        switch (slot.Kind()) {
        case MDType::YesNo:
            value = static_cast<int>(slot.GetYesNo());
            break;
        case MDType::Option:
            value = slot.GetOption();
            break;
        case MDType::Integer:
            value = slot.GetInteger();
            break;
        case MDType::Real:
            value = slot.GetReal();
            break;
        default:
            value = Service::Uppercased(slot.GetString());
            break;
        }
        return true;
    });
}

KeywordIdentity::KeywordIdentity(const IKeywordData& data) : KeywordIdentity(&data) {}

bool KeywordIdentity::Compare(const IKeywordData* data) const
{
    std::size_t at = 0;
    const bool same = !data || Walk(*data, [&](const ConstSlot& slot) {
        if (at == m_values.size()) return false;
        const Value& value = m_values[at++];
        if (!slot.HasValue()) return std::holds_alternative<std::monostate>(value);
        const int* integer = std::get_if<int>(&value);
        const double* real = std::get_if<double>(&value);
        const std::string* text = std::get_if<std::string>(&value);
        switch (slot.Kind()) {
        case MDType::YesNo:
            return integer && *integer == slot.GetYesNo();
        case MDType::Option:
            return integer && *integer == slot.GetOption();
        case MDType::Integer:
            return integer && *integer == slot.GetInteger();
        case MDType::Real:
            return real && *real == slot.GetReal();
        default:
            return text && Service::NoCaseStringEqual(*text, slot.GetString());
        }
    });
    return same && at == m_values.size();
}

std::string KeywordIdentity::ToKey() const
{
    std::string key;
    for (const Value& value : m_values) {
        if (const int* integer = std::get_if<int>(&value)) {
            key.append("i").append(std::to_string(*integer));
        } else if (const double* real = std::get_if<double>(&value)) {
            // The two zeros are equal.
            const double number = *real == 0 ? 0 : *real;
            key.append("r").append(reinterpret_cast<const char*>(&number), sizeof number);
        } else if (const std::string* text = std::get_if<std::string>(&value)) {
            key.append("s").append(std::to_string(text->size())).append(":").append(*text);
        } else {
            key += 'u';
        }
    }
    return key;
}

} // namespace Tarn::Fjel::Core::Keywords
