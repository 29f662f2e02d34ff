#include "data/DataHash.h"

#include <cstring>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Strings.h>

#include "data/DataValues.h"

namespace Deckman {

namespace Service = Tarn::Fjel::Core::Service;
using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordMapData;
using Keywords::IKeywordRawTextData;
using Keywords::IKeywordRecordData;
using Keywords::MDType;

void Hash::Add(std::string_view text)
{
    Add(static_cast<std::uint64_t>(text.size()));
    for (; text.size() >= 8; text.remove_prefix(8)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), 8);
        Add(word);
    }
    std::uint64_t rest = 0;
    std::memcpy(&rest, text.data(), text.size());
    Add(rest);
}

namespace {

void AddValue(Hash& hash, const ValueText& value)
{
    if (value.origin == ValueText::Origin::None)
        hash.Add(std::uint64_t(0));
    else
        hash.Add(value.text);
}

void AddAll(Hash& hash, const IKeywordData& data, ValueReader& values);

void AddList(Hash& hash, const IKeywordListData& list, ValueReader& values)
{
    if (!Keywords::KeywordUtils::IsItemMDType(list.GetElementType())) {
        hash.Add(static_cast<std::uint64_t>(list.GetElementCount()));
        for (int i = 0; i < list.GetElementCount(); ++i)
            AddAll(hash, list.GetContainer(i), values);
        return;
    }
    const int count = CountToLastValue(list, values);
    hash.Add(static_cast<std::uint64_t>(count));
    const bool isPlain = !list.HasDefaultedElements() && !values.HasVariables(list);
    if (isPlain && list.GetElementType() == MDType::Real) {
        for (const double value : list.Reals().first(static_cast<std::size_t>(count)))
            hash.Add(std::bit_cast<std::uint64_t>(value == 0.0 ? 0.0 : value)); // minus zero is zero
    } else if (isPlain && list.GetElementType() == MDType::Integer) {
        for (const int value : list.Integers().first(static_cast<std::size_t>(count)))
            hash.Add(static_cast<std::uint64_t>(value));
    } else {
        // The other form of a list of numbers must not look different for a default that changes nothing.
        for (int i = 0; i < count; ++i) {
            const Keywords::ConstSlot slot = list.GetElement(i);
            if (list.GetElementType() == MDType::Real && slot.HasValue())
                hash.Add(std::bit_cast<std::uint64_t>(slot.GetReal() == 0.0 ? 0.0 : slot.GetReal()));
            else if (list.GetElementType() == MDType::Integer && slot.HasValue())
                hash.Add(static_cast<std::uint64_t>(slot.GetInteger()));
            else
                AddValue(hash, values.Read(list, i));
        }
    }
}

void AddAll(Hash& hash, const IKeywordData& data, ValueReader& values)
{
    switch (data.GetType()) {
    case MDType::Record: {
        const auto& record = static_cast<const IKeywordRecordData&>(data);
        for (int i = 0; i < record.GetItemCount(); ++i) {
            if (Keywords::KeywordUtils::IsItemMDType(record.GetRecordMD()->GetItemMD(i)))
                AddValue(hash, values.Read(record, i));
            else
                AddAll(hash, record.GetContainer(i), values);
        }
        break;
    }
    case MDType::List:
        AddList(hash, static_cast<const IKeywordListData&>(data), values);
        break;
    case MDType::Map: {
        const auto& map = static_cast<const IKeywordMapData&>(data);
        for (int i = 0; i < map.GetEntryCount(); ++i)
            AddValue(hash, values.Read(map, i));
        break;
    }
    default:
        hash.Add(static_cast<const IKeywordRawTextData&>(data).GetText());
        break;
    }
}

void AddIdentity(Hash& hash, const IKeywordData& data, ValueReader& values)
{
    if (data.GetType() == MDType::List) {
        const auto& list = static_cast<const IKeywordListData&>(data);
        if (Keywords::KeywordUtils::IsItemMDType(list.GetElementType())) return;
        for (int i = 0; i < list.GetElementCount(); ++i)
            AddIdentity(hash, list.GetContainer(i), values);
    } else if (data.GetType() == MDType::Record) {
        const auto& record = static_cast<const IKeywordRecordData&>(data);
        for (const int index : record.GetRecordMD()->GetIdentityItems()) {
            const ValueText value = values.Read(record, index);
            if (value.isText)
                hash.Add(Service::Uppercased(value.text));
            else
                AddValue(hash, value);
        }
        for (int i = 0; i < record.GetItemCount(); ++i) {
            if (!Keywords::KeywordUtils::IsItemMDType(record.GetRecordMD()->GetItemMD(i)))
                AddIdentity(hash, record.GetContainer(i), values);
        }
    }
}

} // namespace

std::uint64_t ContentHash(const IKeywordData& data, ValueReader& values)
{
    Hash hash;
    AddAll(hash, data, values);
    return hash.Value();
}

std::uint64_t IdentityHash(const IKeywordData& data, ValueReader& values)
{
    Hash hash;
    AddIdentity(hash, data, values);
    return hash.Value();
}

int CountToLastValue(const IKeywordListData& list, ValueReader& values)
{
    int count = list.GetElementCount();
    while (count > 0 && values.Read(list, count - 1).origin == ValueText::Origin::None)
        --count;
    return count;
}

} // namespace Deckman
