#include <tarn/keywords/detail/KeywordSyntax.h>

#include <algorithm>
#include <bit>

#include <tarn/keywords/detail/MetadataNodes.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

namespace {

constexpr SimulatorType simulatorsOfNote[] = {SimulatorType::S100, SimulatorType::S300, SimulatorType::NoSuppression};

bool Holds(Loader::SimulatorMask mask, SimulatorType simulator)
{
    return simulator == SimulatorType::Any ? mask != 0 : (mask >> static_cast<int>(simulator) & 1) != 0;
}

} // namespace

KeywordSyntax::KeywordSyntax(Loader::KeywordHead head, const Loader::ImageReader& image, std::size_t keyword,
                             const IKeywordSyntaxTable& table)
    : m_head(std::move(head)), m_image(image), m_keyword(keyword), m_table(table)
{
    m_names.reserve(m_head.names.size());
    for (Loader::NameDefinition& name : m_head.names)
        m_names.push_back(std::move(name.name));
}

void KeywordSyntax::GetValidSimulators(std::vector<SimulatorType>& simulators) const
{
    simulators.clear();
    for (const SimulatorType simulator : simulatorsOfNote) {
        if (Holds(m_head.simulators, simulator)) simulators.push_back(simulator);
    }
}

bool KeywordSyntax::IsNameValidForSimulator(SimulatorType simulator, std::string_view name) const noexcept
{
    const auto known = std::find_if(m_names.begin(), m_names.end(), [name](std::string_view candidate) {
        return candidate.ends_with('*') ? name.starts_with(candidate.substr(0, candidate.size() - 1))
                                        : candidate == name;
    });
    if (known == m_names.end()) return Holds(m_head.simulators, simulator);
    return Holds(m_head.names[static_cast<std::size_t>(known - m_names.begin())].simulators, simulator);
}

bool KeywordSyntax::IsSupportedBy(SimulatorType simulator) const noexcept
{
    return Holds(m_head.simulators, simulator);
}

bool KeywordSyntax::IsValidForSection(SectionType section, SimulatorType simulator) const noexcept
{
    return (m_head.sections >> static_cast<int>(section) & 1) != 0 && Holds(m_head.simulators, simulator);
}

void KeywordSyntax::GetValidSections(std::vector<SectionType>& sections) const
{
    sections.clear();
    for (int section = 0; section < SectionCount; ++section) {
        if ((m_head.sections >> section & 1) != 0) sections.push_back(static_cast<SectionType>(section));
    }
}

SectionType KeywordSyntax::GetSection() const noexcept
{
    return std::has_single_bit(m_head.sections) ? static_cast<SectionType>(std::countr_zero(m_head.sections))
                                                : SectionType::None;
}

const std::vector<const IKeywordSyntax*>& KeywordSyntax::GetScopeEndSyntaxes() const
{
    FindScopeEnds();
    return m_scopeEnds;
}

const IKeywordSyntax* KeywordSyntax::GetScopeEndSyntax() const
{
    FindScopeEnds();
    return m_scopeEnd;
}

const IKeywordMD* KeywordSyntax::GetMetaData() const
{
    if (!m_metaData && m_image.HasData(m_keyword)) m_metaData = BuildMetadata(m_image.ReadData(m_keyword), *this);
    return m_metaData.get();
}

const std::set<std::string, std::less<>>& KeywordSyntax::GetPredecessors(SectionType section) const
{
    static const std::set<std::string, std::less<>> none;
    if (m_predecessors.empty()) {
        for (const auto& [number, names] : m_head.predecessors) {
            m_predecessors.emplace_back(number, std::set<std::string, std::less<>>(names.begin(), names.end()));
        }
    }
    for (const auto& [number, names] : m_predecessors) {
        if (number == static_cast<int>(section)) return names;
    }
    return none;
}

std::string_view KeywordSyntax::GetConfidence() const noexcept
{
    constexpr std::string_view words[] = {"low", "medium", "high"};
    return words[m_head.confidence];
}

const Loader::KeywordTexts& KeywordSyntax::Texts() const
{
    if (!m_texts) m_texts = m_image.ReadTexts(m_keyword);
    return *m_texts;
}

void KeywordSyntax::FindScopeEnds() const
{
    if (m_scopeEndsFound) return;
    for (const std::string& name : m_head.closedBy) {
        const SyntaxList closers = m_table.FindSyntaxes(name);
        m_scopeEnds.insert(m_scopeEnds.end(), closers.begin(), closers.end());
    }
    if (!m_head.closingKeyword.empty()) m_scopeEnd = m_table.FindSyntax(m_head.closingKeyword, true);
    m_scopeEndsFound = true;
}

} // namespace Tarn::Fjel::Core::Keywords::Detail
