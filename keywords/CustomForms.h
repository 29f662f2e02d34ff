#pragma once

#include <cstdint>
#include <memory>
#include <unordered_map>

#include <deckmanager/Environment.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// Which metadata nodes of a syntax table have a reader, or a writer, of their own: what those tables have in common. A
/// keyword that the syntax table lacks has none.
template <class Form>
class CustomForms
{
public:
    /// What takes the place of the generic one for the data that `node` describes; null for the generic one.
    Form* Find(const Keywords::IKeywordMD* node) const
    {
        const auto found = m_forms.find(node);
        return found == m_forms.end() ? nullptr : found->second.get();
    }

protected:
    /// The one `Forms` of the process, built when a syntax table is first met. `make` makes it from the table; where it
    /// throws, the next call tries again.
    template <class Forms, class Make>
    static const Forms& OfTableInForce(const Make& make)
    {
        static std::unique_ptr<const Forms> forms;
        static std::uint64_t generation = 0;
        if (!forms || generation != Environment::SyntaxTableGeneration()) {
            forms.reset(make(*Environment::Instance().GetSyntaxTable()));
            generation = Environment::SyntaxTableGeneration();
        }
        return *forms;
    }

    std::unordered_map<const Keywords::IKeywordMD*, std::shared_ptr<Form>> m_forms;
};

} // namespace Tarn::Fjel::Core::DeckManager
