#include <tarn/keywords/detail/MetadataNodes.h>

#include <algorithm>

#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordException.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

namespace {

[[noreturn]] void FailIndex(const char* what, int index, const IKeywordMD& md)
{
    throw KeywordException("There is no " + std::string(what) + " " + std::to_string(index) + " in the metadata of " +
                           md.GetSyntax()->GetName());
}

bool InRange(int index, std::size_t count)
{
    return index >= 0 && static_cast<std::size_t>(index) < count;
}

bool IsNumber(std::string_view token)
{
    std::size_t at = token.starts_with('-') || token.starts_with('+') ? 1 : 0;
    if (at < token.size() && token[at] == '.') ++at;
    return at < token.size() && Service::IsDigit(token[at]);
}

bool IdentityBelow(const IKeywordMD* md)
{
    if (md->GetType() == MDType::Record) return static_cast<const RecordMD*>(md)->HasIdentityBelow();
    return md->GetType() == MDType::List && static_cast<const ListMD*>(md)->HasIdentityBelow();
}

bool FitsPattern(std::string_view name, std::string_view pattern)
{
    return pattern.ends_with('*') && name.size() + 1 >= pattern.size() &&
           Service::NoCaseStringEqual(name.substr(0, pattern.size() - 1), pattern.substr(0, pattern.size() - 1));
}

} // namespace

int OptionMD::GetOptionIndex(std::string_view name) const noexcept
{
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        if (m_options[i].name == name) return static_cast<int>(i);
    }
    return -1;
}

int OptionMD::FindOption(std::string_view token, std::string& reason) const
{
    const auto equals = [token](const std::string& name) { return Service::NoCaseStringEqual(name, token); };
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        const Loader::OptionDefinition& option = m_options[i];
        if (equals(option.name) || std::any_of(option.aliases.begin(), option.aliases.end(), equals)) {
            return static_cast<int>(i);
        }
    }
    reason = m_options.size() == 1 ? "Must be " : "Must be one of ";
    for (std::size_t i = 0; i < m_options.size(); ++i) {
        reason.append(i == 0 ? "" : ", ").append(m_options[i].name);
    }
    return -1;
}

const std::string& OptionMD::GetOptionName(int index) const
{
    if (!InRange(index, m_options.size())) FailIndex("option", index, *this);
    return m_options[static_cast<std::size_t>(index)].name;
}

IntegerMD::IntegerMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
    : ItemNode(shape, syntax), m_format(shape.format)
{
    if (shape.min) m_min = static_cast<int>(*shape.min);
    if (shape.max) m_max = static_cast<int>(*shape.max);
}

bool ListEndDetector::IsEnd(std::string_view token, bool& consume) const
{
    consume = false;
    const bool isToken = std::any_of(m_tokens.begin(), m_tokens.end(), [token](const std::string& end) {
        return Service::NoCaseStringEqual(end, token);
    });
    const bool isEnd = isToken || (m_at == 1 && IsNumber(token)) || (m_at == 2 && !IsNumber(token));
    if (isEnd) consume = m_consumes;
    return isEnd;
}

ListMD::ListMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
    : Node(MDType::List, shape, syntax), m_element(BuildMetadata(shape.children.front(), syntax)), m_size(shape.size),
      m_termination(static_cast<Termination>(shape.termination)),
      m_startsOnNewLine(static_cast<signed char>(shape.startsOnNewLine)),
      m_terminatorOnNewLine(static_cast<signed char>(shape.terminatorOnNewLine)),
      m_elementsDefaultable(shape.elementsDefaultable), m_autoFill(shape.autoFill),
      m_identityBelow(IdentityBelow(m_element.get()))
{
    if (!shape.endTokens.empty() || shape.endAt != 0) m_end = std::make_unique<ListEndDetector>(shape);
}

RecordMD::RecordMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
    : Node(MDType::Record, shape, syntax), m_identity(shape.identity),
      m_termination(static_cast<Termination>(shape.termination)), m_identityBelow(!shape.identity.empty())
{
    m_items.reserve(shape.children.size());
    for (const Loader::ShapeDefinition& child : shape.children) {
        m_items.push_back({BuildMetadata(child, syntax), child.defaultable || !child.defaults.empty(),
                           child.optionalOnRead, child.optionalOnWrite});
        m_hasOptional = m_hasOptional || child.optionalOnRead || child.optionalOnWrite;
        m_identityBelow = m_identityBelow || IdentityBelow(m_items.back().md.get());
    }
    MakeLayout();
}

int RecordMD::FindItem(std::string_view name) const noexcept
{
    if (name.empty()) return -1;
    for (std::size_t i = 0; i < m_items.size(); ++i) {
        if (Service::NoCaseStringEqual(m_items[i].md->GetName(), name)) return static_cast<int>(i);
    }
    return -1;
}

bool RecordMD::IsOptionalOnRead(int index) const noexcept
{
    return InRange(index, m_items.size()) && m_items[static_cast<std::size_t>(index)].optionalOnRead;
}

bool RecordMD::IsOptionalOnWrite(int index) const noexcept
{
    return InRange(index, m_items.size()) && m_items[static_cast<std::size_t>(index)].optionalOnWrite;
}

const RecordMD::Item& RecordMD::At(int index) const
{
    if (!InRange(index, m_items.size())) FailIndex("item", index, *this);
    return m_items[static_cast<std::size_t>(index)];
}

bool MapEntryMD::IsSupportedBy(SimulatorType simulator) const noexcept
{
    return simulator == SimulatorType::Any || (m_definition.simulators >> static_cast<int>(simulator) & 1) != 0;
}

const std::vector<std::string>& MapEntryMD::GetEntryNames(int value) const noexcept
{
    for (const auto& [ofValue, names] : m_definition.valueNames) {
        if (ofValue == value) return names;
    }
    return m_definition.names;
}

MapMD::MapMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
    : Node(MDType::Map, shape, syntax), m_entries(shape.entries.begin(), shape.entries.end()),
      m_termination(static_cast<Termination>(shape.termination))
{
}

const IKeywordMapEntryMD* MapMD::GetEntryMD(int index) const
{
    if (!InRange(index, m_entries.size())) FailIndex("entry", index, *this);
    return &m_entries[static_cast<std::size_t>(index)];
}

int MapMD::FindEntry(std::string_view name) const noexcept
{
    std::optional<int> ownValue;
    return FindEntry(name, ownValue);
}

int MapMD::FindEntry(std::string_view name, std::optional<int>& ownValue) const noexcept
{
    ownValue.reset();
    const auto find = [&](const auto& matches) {
        for (std::size_t i = 0; i < m_entries.size(); ++i) {
            const Loader::MapEntryDefinition& entry = m_entries[i].Definition();
            if (std::any_of(entry.names.begin(), entry.names.end(), matches)) return static_cast<int>(i);
            for (const auto& [value, names] : entry.valueNames) {
                if (!std::any_of(names.begin(), names.end(), matches)) continue;
                ownValue = value;
                return static_cast<int>(i);
            }
        }
        return -1;
    };
    const int exact = find([name](const std::string& known) { return Service::NoCaseStringEqual(known, name); });
    return exact >= 0 ? exact : find([name](const std::string& known) { return FitsPattern(name, known); });
}

std::unique_ptr<IKeywordMD> BuildMetadata(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
{
    switch (shape.type) {
    case MDType::YesNo:
        return std::make_unique<YesNoMD>(shape, syntax);
    case MDType::Option:
        return std::make_unique<OptionMD>(shape, syntax);
    case MDType::Integer:
        return std::make_unique<IntegerMD>(shape, syntax);
    case MDType::RestOfLine:
        return std::make_unique<RestOfLineMD>(shape, syntax);
    case MDType::List:
        return std::make_unique<ListMD>(shape, syntax);
    case MDType::Map:
        return std::make_unique<MapMD>(shape, syntax);
    case MDType::RawText:
        return std::make_unique<RawTextMD>(shape, syntax);
    case MDType::Real:
        return std::make_unique<RealMD>(shape, syntax);
    case MDType::Record:
        return std::make_unique<RecordMD>(shape, syntax);
    case MDType::String:
        return std::make_unique<StringMD>(shape, syntax);
    case MDType::None:
        break;
    }
    throw KeywordException("The definition of " + syntax.GetName() + " holds a node of no kind");
}

} // namespace Tarn::Fjel::Core::Keywords::Detail
