#include "deck/OrderTest.h"

#include <deckmanager/DeckManagerException.h>
#include <deckmanager/IKeyword.h>
#include <tarn/keywords/IKeywordSyntax.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

constexpr long long mostTests = 50000;

} // namespace

bool OrderTest::MustPrecede(const IKeyword& first, const IKeyword& second)
{
    const Keywords::IKeywordSyntax& syntax = *second.GetSyntax();
    if (!syntax.HasOrderingRules()) return false;
    Skip(1);
    return syntax.GetPredecessors(m_section).contains(first.GetName());
}

void OrderTest::Skip(long long tests)
{
    m_tests += tests;
    if (m_tests > mostTests) {
        throw DeckManagerException("A problem was encountered sorting keywords.  This may be caused by inconsistent "
                                   "ordering rules in the keyword metadata.");
    }
}

} // namespace Tarn::Fjel::Core::DeckManager
