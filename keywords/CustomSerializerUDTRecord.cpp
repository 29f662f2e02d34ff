#include "keywords/CustomSerializerUDTRecord.h"

#include <deckmanager/VeldaneDeckInfo.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>

#include "keywords/CustomDeserializerUDTRecord.h"
#include "keywords/KeywordDataSerializer.h"
#include "keywords/LayoutScope.h"
#include "text/ILineWriter.h"

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::MDType;

namespace {

const Keywords::IKeywordListData& ListOf(const Keywords::IKeywordRecordData& record, int index)
{
    return static_cast<const Keywords::IKeywordListData&>(record.GetContainer(index));
}

const Keywords::IKeywordRecordData& RecordOf(const Keywords::IKeywordListData& list, int index)
{
    return static_cast<const Keywords::IKeywordRecordData&>(list.GetContainer(index));
}

void EndLine(ILineWriter& writer, bool indent)
{
    writer.WriteToken(VeldaneDeckInfo::TERMINATION_TOKEN, indent);
    writer.NewLine();
}

} // namespace

CustomSerializerUDTRecord::CustomSerializerUDTRecord(const Keywords::IKeywordMD* root)
{
    const CustomDeserializerUDTRecord reader(root); // the shape is that of the reader
    m_record = static_cast<const Keywords::IKeywordRecordMD*>(root);
}

bool CustomSerializerUDTRecord::Serialize(const Keywords::IKeywordData& data, ILineWriter& writer,
                                          bool /*useVariables*/)
{
    if (data.GetMetaData() != m_record) return false;
    const auto& record = static_cast<const Keywords::IKeywordRecordData&>(data);
    Counts counts{};
    if (!CheckDimensions(record, counts)) return false;
    const Keywords::IKeywordListData& dimensions = ListOf(record, 1);
    const Keywords::IKeywordListData& rows = ListOf(record, 2);
    if (!CheckRows(rows, counts)) return false;

    const LayoutScope layout(writer, false, 0, 0);
    const auto& header = static_cast<const Keywords::IKeywordRecordData&>(record.GetContainer(0));
    {
        const WholeLineScope wholeLine(writer, true); // the reader takes name and count from one line
        for (const int index : {0, 1}) {
            KeywordDataSerializer::SerializeOptionalItem(header.GetItem(index), header.GetRecordMD()->GetItemMD(index),
                                                         writer, false, false);
        }
        EndLine(writer, false);
    }
    for (int index = 0; index < dimensions.GetElementCount(); ++index)
        WriteDimension(RecordOf(dimensions, index), writer);
    for (int row = 0; row < rows.GetElementCount(); ++row) {
        const Keywords::IKeywordListData& values = ListOf(RecordOf(rows, row), 0);
        for (int index = 0; index < values.GetElementCount(); ++index) {
            KeywordDataSerializer::SerializeOptionalItem(values.GetElement(index), values.GetListMD()->GetElementMD(),
                                                         writer, false, false);
        }
        EndLine(writer, true);
    }
    if (dimensions.GetElementCount() == 1) EndLine(writer, true);
    writer.WriteToken(VeldaneDeckInfo::TERMINATION_TOKEN, true);
    return true;
}

/// Whether the header is whole, and there are as many dimensions as it says. `counts`: how many points each has.
bool CustomSerializerUDTRecord::CheckDimensions(const Keywords::IKeywordRecordData& record, Counts& counts)
{
    const auto& header = static_cast<const Keywords::IKeywordRecordData&>(record.GetContainer(0));
    const Keywords::IKeywordListData& dimensions = ListOf(record, 1);
    const int count = dimensions.GetElementCount();
    if (!header.GetItem(0).HasValue() || !header.GetItem(1).HasValue() || count > maxDimensions ||
        header.GetItem(1).GetInteger() != count)
    {
        return false;
    }
    for (int index = 0; index < count; ++index)
        counts[static_cast<std::size_t>(index)] = ListOf(RecordOf(dimensions, index), 1).GetElementCount();
    return true;
}

/// A block of rows for each value of the dimensions beyond the first; behind the last of a dimension an empty row.
bool CustomSerializerUDTRecord::CheckRows(const Keywords::IKeywordListData& rows, const Counts& counts)
{
    int row = 0;
    for (int outer = 0; outer <= counts[3]; ++outer) {
        if (outer > 0 && outer == counts[3]) {
            if (!CheckRow(rows, row++, 0)) return false;
            continue;
        }
        for (int middle = 0; middle <= counts[2]; ++middle) {
            if (middle > 0 && middle == counts[2]) {
                if (!CheckRow(rows, row++, 0)) return false;
                continue;
            }
            for (int inner = 0; inner <= counts[1]; ++inner) {
                if (!CheckRow(rows, row++, inner > 0 && inner == counts[1] ? 0 : counts[0])) return false;
            }
        }
    }
    return row == rows.GetElementCount();
}

/// There is such a row, of so many reals, none of them unset.
bool CustomSerializerUDTRecord::CheckRow(const Keywords::IKeywordListData& rows, int index, int expected)
{
    if (index >= rows.GetElementCount()) return false;
    const Keywords::IKeywordListData& values = ListOf(RecordOf(rows, index), 0);
    if (values.GetElementType() != MDType::Real || values.GetElementCount() != expected) return false;
    for (int element = 0; element < expected; ++element) {
        if (!values.GetElement(element).HasValue()) return false;
    }
    return true;
}

void CustomSerializerUDTRecord::WriteDimension(const Keywords::IKeywordRecordData& dimension, ILineWriter& writer)
{
    KeywordDataSerializer::SerializeOptionalItem(dimension.GetItem(0), dimension.GetRecordMD()->GetItemMD(0), writer,
                                                 false, false);
    const Keywords::IKeywordListData& points = ListOf(dimension, 1);
    std::string scratch;
    KeywordDataSerializer::NumberBuffer buffer;
    for (int index = 0; index < points.GetElementCount(); ++index) {
        const Keywords::ConstSlot point = points.GetElement(index);
        std::string_view text = VeldaneDeckInfo::DEFAULT_TOKEN;
        if (point.HasValue()) {
            switch (point.Kind()) {
            case MDType::Real:
                text = KeywordDataSerializer::FormatReal(point.GetReal(), nullptr, buffer);
                break;
            case MDType::Integer:
                text = KeywordDataSerializer::FormatInteger(point.GetInteger(), nullptr, buffer);
                break;
            default:
                text = KeywordDataSerializer::QuoteExpressionToken(point.GetString(), false, scratch);
            }
        }
        writer.WriteToken(text, false);
    }
    EndLine(writer, false);
}

} // namespace Tarn::Fjel::Core::DeckManager
