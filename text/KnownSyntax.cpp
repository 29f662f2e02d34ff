#include "text/KnownSyntax.h"

#include <tarn/keywords/IKeywordSyntaxTable.h>

namespace Tarn::Fjel::Core::DeckManager {

void KnownSyntax::Find()
{
    m_syntax = Environment::Instance().GetSyntaxTable()->FindSyntax(m_name, true);
    m_generation = Environment::SyntaxTableGeneration();
}

} // namespace Tarn::Fjel::Core::DeckManager
