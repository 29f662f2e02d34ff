#pragma once

#include <memory>
#include <string>

#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/KeywordDataFactory.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

namespace Tarn::Fjel::Core::Keywords {

/// A table of one keyword and an unset tree of its data. shape: the "data" of the definition.
class SmallTree
{
public:
    explicit SmallTree(const std::string& shape, const std::string& name = "MYKEY")
        : m_table(KeywordSyntaxTable::FromText(R"([{"name": ")" + name + R"(", "sections": "all", "data": )" + shape +
                                               "}]")),
          m_syntax(m_table->FindSyntax(name, true)), m_data(Make())
    {
    }

    std::unique_ptr<IKeywordData> Make() const { return KeywordDataFactory::Instance().ConstructSafely(m_syntax); }
    IKeywordData& Data() { return *m_data; }
    IKeywordListData& List() { return static_cast<IKeywordListData&>(*m_data); }
    IKeywordRecordData& Record() { return static_cast<IKeywordRecordData&>(*m_data); }

private:
    std::unique_ptr<KeywordSyntaxTable> m_table;
    const IKeywordSyntax* m_syntax;
    std::unique_ptr<IKeywordData> m_data;
};

inline IKeywordListData& AsList(IKeywordData& data)
{
    return static_cast<IKeywordListData&>(data);
}
inline const IKeywordListData& AsList(const IKeywordData& data)
{
    return static_cast<const IKeywordListData&>(data);
}
inline IKeywordRecordData& AsRecord(IKeywordData& data)
{
    return static_cast<IKeywordRecordData&>(data);
}
inline const IKeywordRecordData& AsRecord(const IKeywordData& data)
{
    return static_cast<const IKeywordRecordData&>(data);
}

} // namespace Tarn::Fjel::Core::Keywords
