#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <tarn/keywords/IKeywordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/loader/CatalogueImage.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

/// A keyword of a catalogue image. What few callers ask for (metadata, closing keywords) is made at the first call.
class KeywordSyntax final : public IKeywordSyntax
{
public:
    /// image, keyword: where the definition lies; table: where the closing keywords are found. Both must outlive the
    /// syntax.
    KeywordSyntax(Loader::KeywordHead head, const Loader::ImageReader& image, std::size_t keyword,
                  const IKeywordSyntaxTable& table);

    const std::string& GetName() const noexcept override { return m_names.front(); }
    bool AcceptsAnyName() const noexcept override { return m_head.acceptsAnyName; }
    bool KeepsLongName() const noexcept override { return m_head.keepsLongName; }
    int GetKind() const noexcept override { return m_head.kind; }
    void GetValidSimulators(std::vector<SimulatorType>& simulators) const override;
    bool IsNameValidForSimulator(SimulatorType simulator, std::string_view name) const noexcept override;
    bool IsSupportedBy(SimulatorType simulator) const noexcept override;
    bool IsValidForSection(SectionType section, SimulatorType simulator) const noexcept override;
    void GetValidSections(std::vector<SectionType>& sections) const override;
    SectionType GetSection() const noexcept override;
    bool IsScopeStart() const noexcept override { return m_head.isScope; }
    const std::vector<const IKeywordSyntax*>& GetScopeEndSyntaxes() const override;
    const IKeywordSyntax* GetScopeEndSyntax() const override;
    const IKeywordMD* GetMetaData() const override;
    bool HasIdentity() const noexcept override { return m_head.hasIdentity; }
    bool HasOrderingRules() const noexcept override { return !m_head.predecessors.empty(); }
    const std::set<std::string, std::less<>>& GetPredecessors(SectionType section) const override;
    std::span<const std::string> GetNames() const noexcept override { return m_names; }
    std::string_view GetSummary() const override { return Texts().summary; }
    std::string_view GetExampleText() const override { return Texts().example; }
    std::string_view GetConfidence() const noexcept override;

private:
    const Loader::KeywordTexts& Texts() const;
    void FindScopeEnds() const;

    Loader::KeywordHead m_head; // its names are moved to m_names
    std::vector<std::string> m_names;
    const Loader::ImageReader& m_image;
    std::size_t m_keyword;
    const IKeywordSyntaxTable& m_table;

    mutable std::optional<Loader::KeywordTexts> m_texts;
    mutable std::unique_ptr<IKeywordMD> m_metaData;
    mutable bool m_scopeEndsFound = false;
    mutable std::vector<const IKeywordSyntax*> m_scopeEnds;
    mutable const IKeywordSyntax* m_scopeEnd = nullptr;
    mutable std::vector<std::pair<int, std::set<std::string, std::less<>>>> m_predecessors;
};

} // namespace Tarn::Fjel::Core::Keywords::Detail
