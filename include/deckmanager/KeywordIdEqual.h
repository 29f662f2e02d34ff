#pragma once

#include <memory>
#include <string>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class KeywordIdentity;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeyword;

/// Predicate of keyword identity: two keywords with the same name whose identifying items (a well's name, a table's
/// number) agree. Keywords whose syntax knows no identity are the same by name alone.
class KeywordIdEqual
{
public:
    /// `data` is not owned and must outlive the predicate; null: names alone count. With `generatedOnly` only generated
    /// keywords, section keywords, and those that end a deck or a file match. `keywords` gives the data of the keywords
    /// that are compared.
    KeywordIdEqual(const IDeckKeywords& keywords, const std::string& name, const Keywords::IKeywordData* data,
                   bool generatedOnly);
    KeywordIdEqual(const KeywordIdEqual& other);
    KeywordIdEqual& operator=(const KeywordIdEqual&) = delete;
    ~KeywordIdEqual();

    bool operator()(const IKeyword* keyword) const;

private:
    const IDeckKeywords& m_keywords;
    std::string m_name;
    const Keywords::IKeywordData* m_data;
    bool m_generatedOnly;
    /// Made at the first comparison, since many searches end on names alone; shared by copies.
    mutable std::shared_ptr<Keywords::KeywordIdentity> m_identity;
};

} // namespace Tarn::Fjel::Core::DeckManager
