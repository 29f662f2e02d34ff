#pragma once

#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// The keywords of a deck that a simulator does not know, in deck order. The keywords are loans.
class DeckInconsistencyInfo
{
public:
    std::vector<const IKeyword*>& Keywords() { return m_keywords; }
    const std::vector<const IKeyword*>& Keywords() const { return m_keywords; }

private:
    std::vector<const IKeyword*> m_keywords;
};

} // namespace Tarn::Fjel::Core::DeckManager
