#pragma once

#include <cstdint>

#include <deckmanager/Environment.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

/// The syntax of a keyword for which the system has rules of its own, found through the syntax table in force and kept
/// until the table changes. Meant to live as long as the process:
///
///     static KnownSyntax paths("PATHS");
///     if (paths.Is(syntax)) ...
class KnownSyntax
{
public:
    explicit constexpr KnownSyntax(const char* name) : m_name(name) {}

    /// Null if the table lacks the keyword.
    const Keywords::IKeywordSyntax* Get()
    {
        if (m_generation != Environment::SyntaxTableGeneration()) Find();
        return m_syntax;
    }
    /// Whether `syntax` is that of the keyword. A null syntax is none, also where the table lacks the keyword.
    bool Is(const Keywords::IKeywordSyntax* syntax) { return syntax && syntax == Get(); }

    const char* Name() const { return m_name; }

private:
    void Find();

    const char* m_name;
    const Keywords::IKeywordSyntax* m_syntax = nullptr;
    std::uint64_t m_generation = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
