#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <tarn/keywords/IKeywordSyntaxTable.h>

namespace Tarn::Fjel::Core::Keywords {

/// The syntax table made from catalogue definitions: those built into the library, or a host's own.
class KeywordSyntaxTable : public IKeywordSyntaxTable
{
public:
    /// The table of the built-in catalogue; made at the first call, alive until the process ends.
    /// sureOnly leaves out the definitions whose confidence is low; withPatterns false leaves out the syntaxes whose
    /// name ends in "*". Each pair of values has a table, and syntaxes, of its own; this library asks for
    /// Instance(false, true).
    static const KeywordSyntaxTable* Instance(bool sureOnly, bool withPatterns);

    /// A table of a host's own, from a catalogue file or text (JSON; docs/catalogue.md). A broken definition throws
    /// KeywordException, which names the file (or origin), the keyword and the field.
    static std::unique_ptr<KeywordSyntaxTable> FromFile(const std::string& path);
    static std::unique_ptr<KeywordSyntaxTable> FromText(std::string_view json, const std::string& origin = "text");

    ~KeywordSyntaxTable() override;

    const IKeywordSyntax* FindSyntax(std::string_view name, SectionType section, bool anySimulator) const override;
    const IKeywordSyntax* FindSyntax(std::string_view name, bool anySimulator) const override;
    SyntaxList FindSyntaxes(std::string_view name) const override;
    SyntaxList GetSyntaxes() const override;

private:
    class Impl;
    explicit KeywordSyntaxTable(std::unique_ptr<Impl> impl);

    std::unique_ptr<Impl> m_impl;
};

} // namespace Tarn::Fjel::Core::Keywords
