#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <tarn/keywords/MDType.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

/// A set of simulators: bit n for the simulator of value n.
using SimulatorMask = std::uint32_t;
inline constexpr SimulatorMask AllSimulators = 0x7FF;

struct DefaultDefinition
{
    SimulatorMask simulators = AllSimulators;
    std::string text; ///< as written in a deck
};

struct OptionDefinition
{
    std::string name;
    std::vector<std::string> aliases;
};

struct MapEntryDefinition
{
    SimulatorMask simulators = AllSimulators;
    std::vector<std::string> names; ///< the entry's own name first, then its aliases
    std::vector<std::pair<int, std::vector<std::string>>> valueNames;
};

/// One node of a data shape. Only the fields that belong to its type are used.
struct ShapeDefinition
{
    MDType type = MDType::None;
    std::string name;
    bool defaultable = false;
    bool optionalOnRead = false;
    bool optionalOnWrite = false;

    // items
    std::vector<DefaultDefinition> defaults;
    std::string unit;
    std::optional<double> min;
    std::optional<double> max;
    std::string format;
    bool preservesCase = false;
    bool allowsCommas = false;
    int maxLength = 0;
    std::vector<OptionDefinition> options;

    // containers
    int termination = 1;
    std::vector<ShapeDefinition> children; ///< the items of a record, the one element of a list
    std::vector<int> identity;
    std::string size; ///< empty: none
    bool elementsDefaultable = false;
    bool autoFill = false;
    int startsOnNewLine = -1;
    int terminatorOnNewLine = -1;
    std::vector<std::string> endTokens;
    int endAt = 0; ///< 0: only at the tokens, 1: at a number, 2: at a word
    bool endConsumes = false;
    std::vector<MapEntryDefinition> entries;
    std::string terminator;
};

struct NameDefinition
{
    std::string name;
    SimulatorMask simulators = AllSimulators;
};

/// What the table needs of a keyword before anyone asks for its data.
struct KeywordHead
{
    std::vector<NameDefinition> names;
    int confidence = 1; ///< 0 low, 1 medium, 2 high
    int kind = 3;
    std::uint32_t sections = 0; ///< bit n for section n
    SimulatorMask simulators = AllSimulators;
    bool acceptsAnyName = false;
    bool keepsLongName = false;
    bool hasIdentity = false;
    bool isScope = false;
    std::vector<std::string> closedBy;
    std::string closingKeyword;
    std::vector<std::pair<int, std::vector<std::string>>> predecessors; ///< by section
};

/// What a keyword has to say to people.
struct KeywordTexts
{
    std::string summary;
    std::string example;
};

struct KeywordDefinition
{
    KeywordHead head;
    KeywordTexts texts;
    std::optional<ShapeDefinition> data;
};

} // namespace Tarn::Fjel::Core::Keywords::Loader
