#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <tarn/keywords/Metadata.h>
#include <tarn/keywords/loader/KeywordDefinition.h>

namespace Tarn::Fjel::Core::Keywords::Detail {

/// The metadata classes behind the interfaces. All data trees of the library rest on them.

/// Adds to one of the metadata interfaces what every node has: its name and its keyword.
template <class Interface>
class Node : public Interface
{
public:
    const std::string& GetName() const noexcept override { return m_name; }
    const IKeywordSyntax* GetSyntax() const noexcept override { return m_syntax; }

protected:
    Node(MDType type, const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : Interface(type), m_name(shape.name), m_syntax(&syntax)
    {
    }

private:
    std::string m_name;
    const IKeywordSyntax* m_syntax;
};

/// Adds what every item has.
template <class Interface>
class ItemNode : public Node<Interface>
{
public:
    ItemNode(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : Node<Interface>(shape.type, shape, syntax), m_defaults(shape.defaults), m_unit(shape.unit)
    {
    }

    bool HasDefaultFor(SimulatorType simulator) const noexcept override { return DefaultFor(simulator) != nullptr; }

    const std::string& GetDefaultText(SimulatorType simulator) const noexcept override
    {
        static const std::string none;
        const Loader::DefaultDefinition* found = DefaultFor(simulator);
        return found ? found->text : none;
    }

    const std::string& GetUnitDimension() const noexcept override { return m_unit; }

private:
    const Loader::DefaultDefinition* DefaultFor(SimulatorType simulator) const noexcept
    {
        for (const Loader::DefaultDefinition& candidate : m_defaults) {
            if (simulator == SimulatorType::Any || (candidate.simulators >> static_cast<int>(simulator) & 1) != 0) {
                return &candidate;
            }
        }
        return nullptr;
    }

    std::vector<Loader::DefaultDefinition> m_defaults;
    std::string m_unit;
};

using YesNoMD = ItemNode<IKeywordYesNoMD>;
using RestOfLineMD = ItemNode<IKeywordRestOfLineMD>;

class StringMD final : public ItemNode<IKeywordStringMD>
{
public:
    StringMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : ItemNode(shape, syntax), m_preservesCase(shape.preservesCase), m_allowsCommas(shape.allowsCommas),
          m_maxLength(shape.maxLength)
    {
    }

    bool PreservesCase() const noexcept override { return m_preservesCase; }
    int GetMaxLength() const noexcept override { return m_maxLength; }
    bool AllowsCommas() const noexcept override { return m_allowsCommas; }

private:
    bool m_preservesCase;
    bool m_allowsCommas;
    int m_maxLength;
};

class OptionMD final : public ItemNode<IKeywordOptionMD>
{
public:
    OptionMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : ItemNode(shape, syntax), m_options(shape.options)
    {
    }

    int GetOptionIndex(std::string_view name) const noexcept override;
    int FindOption(std::string_view token, std::string& reason) const override;
    int GetOptionCount() const noexcept override { return static_cast<int>(m_options.size()); }
    const std::string& GetOptionName(int index) const override;

private:
    std::vector<Loader::OptionDefinition> m_options;
};

class IntegerMD final : public ItemNode<IKeywordIntegerMD>
{
public:
    IntegerMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax);

    std::optional<int> GetMinValue() const noexcept override { return m_min; }
    std::optional<int> GetMaxValue() const noexcept override { return m_max; }
    const char* GetFormat() const noexcept override { return m_format.empty() ? nullptr : m_format.c_str(); }

private:
    std::optional<int> m_min;
    std::optional<int> m_max;
    std::string m_format;
};

class RealMD final : public ItemNode<IKeywordRealMD>
{
public:
    RealMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : ItemNode(shape, syntax), m_min(shape.min), m_max(shape.max), m_format(shape.format)
    {
    }

    std::optional<double> GetMinValue() const noexcept override { return m_min; }
    std::optional<double> GetMaxValue() const noexcept override { return m_max; }
    const char* GetFormat() const noexcept override { return m_format.empty() ? nullptr : m_format.c_str(); }

private:
    std::optional<double> m_min;
    std::optional<double> m_max;
    std::string m_format;
};

class ListEndDetector final : public IListEndDetector
{
public:
    explicit ListEndDetector(const Loader::ShapeDefinition& shape)
        : m_tokens(shape.endTokens), m_at(shape.endAt), m_consumes(shape.endConsumes)
    {
    }

    bool IsEnd(std::string_view token, bool& consume) const override;

private:
    std::vector<std::string> m_tokens;
    int m_at;
    bool m_consumes;
};

class ListMD final : public Node<IKeywordListMD>
{
public:
    ListMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax);

    const IKeywordMD* GetElementMD() const noexcept override { return m_element.get(); }
    Termination GetTermination() const noexcept override { return m_termination; }
    const IListEndDetector* GetListEndDetector() const noexcept override { return m_end.get(); }
    const std::string* GetSizeExpression() const noexcept override { return m_size.empty() ? nullptr : &m_size; }
    bool AllowsDefaultElements() const noexcept override { return m_elementsDefaultable; }
    bool AutoFillsEmptyElements() const noexcept override { return m_autoFill; }
    signed char StartsOnNewLine() const noexcept override { return m_startsOnNewLine; }
    signed char TerminatorOnNewLine() const noexcept override { return m_terminatorOnNewLine; }

    /// A record with an identity lies somewhere below.
    bool HasIdentityBelow() const noexcept { return m_identityBelow; }

private:
    std::unique_ptr<IKeywordMD> m_element;
    std::unique_ptr<ListEndDetector> m_end;
    std::string m_size;
    Termination m_termination;
    signed char m_startsOnNewLine;
    signed char m_terminatorOnNewLine;
    bool m_elementsDefaultable;
    bool m_autoFill;
    bool m_identityBelow;
};

/// Where the values of a record lie within its block of memory, and what the block holds at first.
struct RecordLayout
{
    struct Place
    {
        std::uint32_t offset;
        MDType kind;
    };

    std::vector<Place> places;
    std::vector<std::byte> unset; ///< the bytes of an unset record; containers are null pointers
    std::vector<int> strings;     ///< the items that are strings or rests of lines
    std::vector<int> containers;
};

class RecordMD final : public Node<IKeywordRecordMD>, private IRecordItemTraits
{
public:
    RecordMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax);

    int GetItemCount() const noexcept override { return static_cast<int>(m_items.size()); }
    const IKeywordMD* GetItemMD(int index) const override { return At(index).md.get(); }
    bool IsItemDefaultable(int index) const override { return At(index).defaultable; }
    Termination GetTermination() const noexcept override { return m_termination; }
    const IRecordItemTraits* GetItemTraits() const noexcept override { return m_hasOptional ? this : nullptr; }
    const std::string& GetItemName(int index) const override { return At(index).md->GetName(); }
    int FindItem(std::string_view name) const noexcept override;
    std::span<const int> GetIdentityItems() const noexcept override { return m_identity; }

    const RecordLayout& Layout() const noexcept { return m_layout; }
    /// This record or one below has an identity.
    bool HasIdentityBelow() const noexcept { return m_identityBelow; }

private:
    struct Item
    {
        std::unique_ptr<IKeywordMD> md;
        bool defaultable;
        bool optionalOnRead;
        bool optionalOnWrite;
    };

    bool IsOptionalOnRead(int index) const noexcept override;
    bool IsOptionalOnWrite(int index) const noexcept override;
    const Item& At(int index) const;
    void MakeLayout();

    std::vector<Item> m_items;
    std::vector<int> m_identity;
    RecordLayout m_layout;
    Termination m_termination;
    bool m_hasOptional = false;
    bool m_identityBelow = false;
};

class MapEntryMD final : public IKeywordMapEntryMD
{
public:
    explicit MapEntryMD(const Loader::MapEntryDefinition& definition) : m_definition(definition) {}

    const std::string& GetName() const noexcept override { return m_definition.names.front(); }
    bool IsSupportedBy(SimulatorType simulator) const noexcept override;
    const std::vector<std::string>& GetEntryNames(int value) const noexcept override;

    const Loader::MapEntryDefinition& Definition() const noexcept { return m_definition; }

private:
    Loader::MapEntryDefinition m_definition;
};

class MapMD final : public Node<IKeywordMapMD>
{
public:
    MapMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax);

    int GetEntryCount() const noexcept override { return static_cast<int>(m_entries.size()); }
    const IKeywordMapEntryMD* GetEntryMD(int index) const override;
    int FindEntry(std::string_view name) const noexcept override;
    Termination GetTermination() const noexcept override { return m_termination; }

    /// FindEntry, and the value that the name itself stands for, if it is a name for one value only.
    int FindEntry(std::string_view name, std::optional<int>& ownValue) const noexcept;

private:
    std::vector<MapEntryMD> m_entries;
    Termination m_termination;
};

class RawTextMD final : public Node<IKeywordRawTextMD>
{
public:
    RawTextMD(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax)
        : Node(MDType::RawText, shape, syntax), m_terminator(shape.terminator)
    {
    }

    bool GetTerminator(std::string& text) const override
    {
        text = m_terminator;
        return !text.empty();
    }

private:
    std::string m_terminator;
};

std::unique_ptr<IKeywordMD> BuildMetadata(const Loader::ShapeDefinition& shape, const IKeywordSyntax& syntax);

} // namespace Tarn::Fjel::Core::Keywords::Detail
