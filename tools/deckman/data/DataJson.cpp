#include "data/DataJson.h"

#include <algorithm>
#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordMapData.h>
#include <tarn/keywords/IKeywordRawTextData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/keywords/UnsetValue.h>

#include "output/Json.h"

namespace Deckman {

namespace {

using Keywords::IKeywordData;
using Keywords::IKeywordListData;
using Keywords::IKeywordMapData;
using Keywords::IKeywordRawTextData;
using Keywords::IKeywordRecordData;
using Keywords::IKeywordRecordMD;
using Keywords::MDType;

class JsonWriter
{
public:
    JsonWriter(Output& out, const DataReading& reading) : m_out(out), m_values(reading, ValueReader::Form::Json) {}

    void Write(const IKeywordData& data)
    {
        switch (data.GetType()) {
        case MDType::Record:
            WriteRecord(static_cast<const IKeywordRecordData&>(data));
            break;
        case MDType::List:
            WriteList(static_cast<const IKeywordListData&>(data));
            break;
        case MDType::Map:
            WriteMap(static_cast<const IKeywordMapData&>(data));
            break;
        default:
            AppendJsonString(m_out, static_cast<const IKeywordRawTextData&>(data).GetText());
            break;
        }
    }

    void WriteItem(const IKeywordData& container, int index) { WriteValue(m_values.Read(container, index)); }

private:
    void WriteValue(const ValueText& value)
    {
        if (value.origin == ValueText::Origin::None)
            m_out.Append("null");
        else if (value.isText)
            AppendJsonString(m_out, value.text);
        else
            m_out.Append(value.text);
    }

    void WriteRecord(const IKeywordRecordData& record)
    {
        const std::vector<std::string>& keys = KeysOf(*record.GetRecordMD());
        m_out.Append('{');
        for (int i = 0; i < record.GetItemCount(); ++i) {
            m_out.Append(keys[static_cast<std::size_t>(i)]);
            if (Keywords::KeywordUtils::IsItemMDType(record.GetRecordMD()->GetItemMD(i)))
                WriteItem(record, i);
            else
                Write(record.GetContainer(i));
        }
        m_out.Append('}');
    }

    void WriteList(const IKeywordListData& list)
    {
        m_out.Append('[');
        const bool isPlain = !list.HasDefaultedElements() && !m_values.HasVariables(list);
        if (list.GetElementType() == MDType::Real && isPlain) {
            WriteAll(list.Reals(), [this, &list](double value, int index) {
                WriteValue(value == Keywords::UnsetValue::Real ? m_values.Read(list, index) : m_values.Real(value));
            });
        } else if (list.GetElementType() == MDType::Integer && isPlain) {
            WriteAll(list.Integers(), [this, &list](int value, int index) {
                WriteValue(value == Keywords::UnsetValue::Integer ? m_values.Read(list, index)
                                                                  : m_values.Integer(value));
            });
        } else {
            const bool isOfItems = Keywords::KeywordUtils::IsItemMDType(list.GetElementType());
            for (int i = 0; i < list.GetElementCount() && !m_out.Closed(); ++i) {
                if (i > 0) m_out.Append(',');
                if (isOfItems)
                    WriteItem(list, i);
                else
                    Write(list.GetContainer(i));
            }
        }
        m_out.Append(']');
    }

    template <class Values, class WriteOne>
    void WriteAll(const Values& values, const WriteOne& writeOne)
    {
        int index = 0;
        for (const auto value : values) {
            if (index > 0) m_out.Append(',');
            writeOne(value, index++);
            if (m_out.Closed()) return;
        }
    }

    void WriteMap(const IKeywordMapData& map)
    {
        m_out.Append('{');
        for (int i = 0; i < map.GetEntryCount(); ++i) {
            if (i > 0) m_out.Append(',');
            AppendJsonString(m_out, map.GetEntryMD(i)->GetName());
            m_out.Append(':');
            WriteItem(map, i);
        }
        m_out.Append('}');
    }

    /// The keys of a record, with what stands around them.
    const std::vector<std::string>& KeysOf(const IKeywordRecordMD& md)
    {
        const auto [entry, isNew] = m_keys.try_emplace(&md);
        if (!isNew) return entry->second;
        std::vector<std::string_view> names;
        for (int i = 0; i < md.GetItemCount(); ++i) {
            const std::string& name = md.GetItemName(i);
            const bool isTaken = name.empty() || std::ranges::find(names, name) != names.end();
            names.push_back(name);
            entry->second.push_back((i > 0 ? "," : "") + JsonString(isTaken ? std::to_string(i) : name) + ":");
        }
        return entry->second;
    }

    Output& m_out;
    ValueReader m_values;
    std::unordered_map<const IKeywordRecordMD*, std::vector<std::string>> m_keys;
};

} // namespace

void WriteJson(Output& out, const ItemPath::Item& item, const DataReading& reading)
{
    JsonWriter writer(out, reading);
    if (item.IsContainer())
        writer.Write(*item.container);
    else
        writer.WriteItem(*item.container, item.index);
}

} // namespace Deckman
