#pragma once

#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class IKeyword;

/// Predicate for searching a list of keywords: the name equals the given one, byte for byte.
class KeywordNameEqual
{
public:
    explicit KeywordNameEqual(const std::string& name) : m_name(name) {}

    bool operator()(const IKeyword* keyword) const;

private:
    std::string m_name;
};

} // namespace Tarn::Fjel::Core::DeckManager
