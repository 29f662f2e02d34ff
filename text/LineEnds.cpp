#include <deckmanager/LineEnds.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

LineEnds::Policy policyInForce = LineEnds::Policy::CrLf;

} // namespace

void LineEnds::SetPolicy(Policy policy)
{
    policyInForce = policy;
}

LineEnds::Policy LineEnds::GetPolicy()
{
    return policyInForce;
}

} // namespace Tarn::Fjel::Core::DeckManager
