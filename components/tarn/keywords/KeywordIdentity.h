#pragma once

#include <string>
#include <variant>
#include <vector>

namespace Tarn::Fjel::Core::Keywords {

class IKeywordData;

/// What tells a keyword from others of its name: the values of the items that the catalogue names for that, record
/// by record through the whole tree. The object holds copies and outlives the data.
class KeywordIdentity
{
public:
    explicit KeywordIdentity(const IKeywordData* data);
    explicit KeywordIdentity(const IKeywordData& data);

    /// The data have the same identity: as many records, equal values, strings without regard to case, unset equal
    /// to unset. Null data have no records.
    bool Compare(const IKeywordData* data) const;
    bool Compare(const IKeywordData& data) const { return Compare(&data); }

    /// A text that is equal for equal identities, for tables.
    std::string ToKey() const;

private:
    using Value = std::variant<std::monostate, int, double, std::string>; // monostate: unset

    std::vector<Value> m_values;
};

} // namespace Tarn::Fjel::Core::Keywords
