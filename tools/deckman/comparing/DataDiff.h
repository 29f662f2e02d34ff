#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "comparing/DiffReport.h"
#include "data/DataValues.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordListData;
class IKeywordRecordData;
} // namespace Tarn::Fjel::Core::Keywords

namespace Deckman {

/// Compares the data of one keyword with those of its counterpart, item by item, and tells each difference with its
/// path. Records of a list are matched by the items that identify them, else by what they hold and by their order;
/// elements of a list by their place, or, when there are more or fewer, by what stayed in order. Of a long row of
/// changed values the first few are told, and how many more there are.
class DataDiff
{
public:
    /// Both trees are of one metadata. `where` is the keyword's place as a user would write it.
    DataDiff(const DiffReport::Side& oldSide, const DiffReport::Side& newSide, DiffReport& report)
        : m_oldSide(oldSide), m_newSide(newSide), m_report(report)
    {
    }

    void Compare(const Keywords::IKeywordData& oldData, const Keywords::IKeywordData& newData,
                 const std::string& where);

private:
    void CompareItem(const Keywords::IKeywordData& oldData, const Keywords::IKeywordData& newData, int index,
                     const std::string& where);
    void CompareRecords(const Keywords::IKeywordRecordData& oldData, const Keywords::IKeywordRecordData& newData,
                        const std::string& where);
    void CompareLists(const Keywords::IKeywordListData& oldData, const Keywords::IKeywordListData& newData,
                      const std::string& where);
    void CompareValues(const Keywords::IKeywordListData& oldData, const Keywords::IKeywordListData& newData,
                       const std::string& where);
    void AlignValues(const Keywords::IKeywordListData& oldData, const Keywords::IKeywordListData& newData, int oldCount,
                     int newCount, const std::string& where);
    void AlignRecords(const Keywords::IKeywordListData& oldData, const Keywords::IKeywordListData& newData,
                      const std::string& where);
    bool SameValue(const Keywords::IKeywordData& oldData, int oldIndex, const Keywords::IKeywordData& newData,
                   int newIndex) const;

    const DiffReport::Side& m_oldSide;
    const DiffReport::Side& m_newSide;
    DiffReport& m_report;
};

} // namespace Deckman
