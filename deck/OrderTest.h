#pragma once

#include <tarn/keywords/SectionType.h>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// Asks the ordering rules of one section about pairs of keywords. Lasts for one search, which may ask so many times
/// and no more: rules that contradict each other must not keep it going.
class OrderTest
{
public:
    explicit OrderTest(Keywords::SectionType section) : m_section(section) {}

    /// The rules want `first` ahead of `second`. Throws `DeckManagerException` at the 50001st keyword with rules that
    /// is asked about as `second`.
    bool MustPrecede(const IKeyword& first, const IKeyword& second);

    /// Counts tests whose answer is known to be no. Throws as these tests would.
    void Skip(long long tests);

private:
    Keywords::SectionType m_section;
    long long m_tests = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
