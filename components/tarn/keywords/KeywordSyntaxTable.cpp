#include <tarn/keywords/KeywordSyntaxTable.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <deque>
#include <optional>
#include <vector>

#include <tarn/keywords/detail/KeywordSyntax.h>
#include <tarn/keywords/loader/BuiltInCatalogue.h>
#include <tarn/keywords/loader/CatalogueReader.h>

namespace Tarn::Fjel::Core::Keywords {

namespace {

/// Names are short and differ near their ends, so two overlapping words hold all there is of most of them.
inline std::uint32_t HashName(std::string_view name) noexcept
{
    const std::size_t size = name.size();
    std::uint64_t head = 0;
    std::uint64_t tail = 0;
    if (size >= 8) {
        std::memcpy(&head, name.data(), 8);
        std::memcpy(&tail, name.data() + size - 8, 8);
    } else if (size >= 4) {
        std::uint32_t word;
        std::memcpy(&word, name.data(), 4);
        head = word;
        std::memcpy(&word, name.data() + size - 4, 4);
        tail = word;
    } else if (size > 0) {
        head = static_cast<unsigned char>(name[0]);
        tail = static_cast<std::uint64_t>(static_cast<unsigned char>(name[size / 2])) << 8 |
               static_cast<unsigned char>(name[size - 1]);
    }
    std::uint64_t hash = (head ^ (size << 56)) * 0x9E3779B97F4A7C15u;
    hash = (hash ^ (hash >> 29) ^ tail) * 0xBF58476D1CE4E5B9u;
    return static_cast<std::uint32_t>(hash >> 32) | 1u << 31; // never 0
}

std::size_t LetterOf(char c)
{
    return c >= 'A' && c <= 'Z' ? static_cast<std::size_t>(c - 'A') : 26;
}

} // namespace

class KeywordSyntaxTable::Impl
{
public:
    Impl(Loader::OwnedImage owned) : m_owned(std::move(owned)), m_image(m_owned->View()) {}
    explicit Impl(const Loader::CatalogueImage& image) : m_image(image) {}

    void Build(const IKeywordSyntaxTable& table, bool sureOnly, bool withPatterns);
    SyntaxList Find(std::string_view name) const noexcept;
    SyntaxList All() const noexcept { return m_all; }

private:
    struct Entry
    {
        std::string_view name;
        std::uint32_t first = 0;
        std::uint32_t count = 0;
    };
    struct Named
    {
        std::string_view name; // of a pattern: without the star
        const IKeywordSyntax* syntax;
    };
    struct Pattern
    {
        std::string_view stem;
        std::uint32_t first;
        std::uint32_t count;
    };

    void AppendPatterns(std::string_view name, const std::vector<Named>& patterns);
    void BuildPatterns(const std::vector<Named>& patterns);
    void BuildNames(std::vector<Named> names, const std::vector<Named>& patterns);
    void Enter(std::string_view name, std::size_t first);

    std::optional<Loader::OwnedImage> m_owned;
    Loader::ImageReader m_image;
    std::deque<Detail::KeywordSyntax> m_syntaxes;
    std::vector<const IKeywordSyntax*> m_all;
    std::vector<const IKeywordSyntax*> m_found; // the results of all look-ups, one behind the other
    // The hash table: a name's hash, 0 where it is free, and apart from it, for hits only, what the name gives.
    std::vector<std::uint32_t> m_hashes;
    std::vector<Entry> m_entries;
    std::array<std::vector<Pattern>, 27> m_patterns; // by first letter, the longest stem first
};

void KeywordSyntaxTable::Impl::Build(const IKeywordSyntaxTable& table, bool sureOnly, bool withPatterns)
{
    std::vector<Named> names;
    std::vector<Named> patterns;
    const std::size_t count = m_image.KeywordCount();
    for (std::size_t i = 0; i < count; ++i) {
        Loader::KeywordHead head = m_image.ReadHead(i);
        const bool isPattern = head.names.front().name.ends_with('*');
        if ((sureOnly && head.confidence == 0) || (!withPatterns && isPattern)) continue;
        const Detail::KeywordSyntax& syntax = m_syntaxes.emplace_back(std::move(head), m_image, i, table);
        m_all.push_back(&syntax);
        for (const std::string& name : syntax.GetNames()) {
            const std::string_view view = name;
            if (view.ends_with('*')) {
                patterns.push_back({view.substr(0, view.size() - 1), &syntax});
            } else {
                names.push_back({view, &syntax});
            }
        }
    }
    BuildPatterns(patterns);
    BuildNames(std::move(names), patterns);
}

void KeywordSyntaxTable::Impl::AppendPatterns(std::string_view name, const std::vector<Named>& patterns)
{
    for (const Named& pattern : patterns) {
        if (name.starts_with(pattern.name)) m_found.push_back(pattern.syntax);
    }
}

void KeywordSyntaxTable::Impl::BuildPatterns(const std::vector<Named>& patterns)
{
    // A name that a stem begins is begun by every shorter stem that begins this one, so that the longest stem that
    // fits tells the whole result.
    for (const Named& pattern : patterns) {
        const std::size_t first = m_found.size();
        AppendPatterns(pattern.name, patterns);
        m_patterns[LetterOf(pattern.name.front())].push_back(
            {pattern.name, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(m_found.size() - first)});
    }
    for (std::vector<Pattern>& ofLetter : m_patterns) {
        std::stable_sort(ofLetter.begin(), ofLetter.end(),
                         [](const Pattern& a, const Pattern& b) { return a.stem.size() > b.stem.size(); });
    }
}

void KeywordSyntaxTable::Impl::BuildNames(std::vector<Named> names, const std::vector<Named>& patterns)
{
    std::size_t size = 64;
    while (size < 3 * names.size())
        size *= 2;
    m_hashes.assign(size, 0);
    m_entries.assign(size, Entry());
    std::stable_sort(names.begin(), names.end(), [](const Named& a, const Named& b) { return a.name < b.name; });
    for (std::size_t i = 0; i < names.size();) {
        const std::size_t first = m_found.size();
        const std::string_view name = names[i].name;
        for (; i < names.size() && names[i].name == name; ++i)
            m_found.push_back(names[i].syntax);
        AppendPatterns(name, patterns);
        Enter(name, first);
    }
}

void KeywordSyntaxTable::Impl::Enter(std::string_view name, std::size_t first)
{
    const std::uint32_t hash = HashName(name);
    const std::size_t mask = m_hashes.size() - 1;
    std::size_t at = hash & mask;
    while (m_hashes[at] != 0)
        at = (at + 1) & mask;
    m_hashes[at] = hash;
    m_entries[at] = {name, static_cast<std::uint32_t>(first), static_cast<std::uint32_t>(m_found.size() - first)};
}

SyntaxList KeywordSyntaxTable::Impl::Find(std::string_view name) const noexcept
{
    if (name.empty()) return {};
    const std::uint32_t hash = HashName(name);
    const std::size_t mask = m_hashes.size() - 1;
    for (std::size_t at = hash & mask; m_hashes[at] != 0; at = (at + 1) & mask) {
        if (m_hashes[at] != hash || m_entries[at].name != name) continue;
        return SyntaxList(m_found).subspan(m_entries[at].first, m_entries[at].count);
    }
    for (const Pattern& pattern : m_patterns[LetterOf(name.front())]) {
        if (name.starts_with(pattern.stem)) return SyntaxList(m_found).subspan(pattern.first, pattern.count);
    }
    return {};
}

KeywordSyntaxTable::KeywordSyntaxTable(std::unique_ptr<Impl> impl) : m_impl(std::move(impl)) {}

KeywordSyntaxTable::~KeywordSyntaxTable() = default;

const KeywordSyntaxTable* KeywordSyntaxTable::Instance(bool sureOnly, bool withPatterns)
{
    // Never destroyed: data trees that live to the very end of the process still need their metadata.
    static std::array<KeywordSyntaxTable*, 4> tables{};
    KeywordSyntaxTable*& table = tables[(sureOnly ? 2u : 0u) + (withPatterns ? 1u : 0u)];
    if (!table) {
        auto impl = std::make_unique<Impl>(Loader::BuiltInCatalogue());
        std::unique_ptr<KeywordSyntaxTable> made(new KeywordSyntaxTable(std::move(impl)));
        made->m_impl->Build(*made, sureOnly, withPatterns);
        table = made.release();
    }
    return table;
}

namespace {

Loader::OwnedImage MakeImage(const Loader::CatalogueReader& reader)
{
    reader.CheckWhole();
    return Loader::WriteImage(reader.Keywords());
}

} // namespace

std::unique_ptr<KeywordSyntaxTable> KeywordSyntaxTable::FromFile(const std::string& path)
{
    Loader::CatalogueReader reader;
    reader.AddFile(path);
    std::unique_ptr<KeywordSyntaxTable> table(new KeywordSyntaxTable(std::make_unique<Impl>(MakeImage(reader))));
    table->m_impl->Build(*table, false, true);
    return table;
}

std::unique_ptr<KeywordSyntaxTable> KeywordSyntaxTable::FromText(std::string_view json, const std::string& origin)
{
    Loader::CatalogueReader reader;
    reader.Add(json, origin);
    std::unique_ptr<KeywordSyntaxTable> table(new KeywordSyntaxTable(std::make_unique<Impl>(MakeImage(reader))));
    table->m_impl->Build(*table, false, true);
    return table;
}

const IKeywordSyntax* KeywordSyntaxTable::FindSyntax(std::string_view name, SectionType section,
                                                     bool anySimulator) const
{
    for (const IKeywordSyntax* syntax : m_impl->Find(name)) {
        if (!syntax->IsValidForSection(section, SimulatorType::Any)) continue;
        if (anySimulator || (syntax->IsSupportedBy(SimulatorType::S100) && syntax->IsSupportedBy(SimulatorType::S300)))
        {
            return syntax;
        }
    }
    return nullptr;
}

const IKeywordSyntax* KeywordSyntaxTable::FindSyntax(std::string_view name, bool anySimulator) const
{
    for (const IKeywordSyntax* syntax : m_impl->Find(name)) {
        if (anySimulator || (syntax->IsSupportedBy(SimulatorType::S100) && syntax->IsSupportedBy(SimulatorType::S300)))
        {
            return syntax;
        }
    }
    return nullptr;
}

SyntaxList KeywordSyntaxTable::FindSyntaxes(std::string_view name) const
{
    return m_impl->Find(name);
}

SyntaxList KeywordSyntaxTable::GetSyntaxes() const
{
    return m_impl->All();
}

} // namespace Tarn::Fjel::Core::Keywords
