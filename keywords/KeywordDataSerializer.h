#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

#include <deckmanager/KeywordItemRepeatOptions.h>
#include <tarn/keywords/SimulatorType.h>
#include <tarn/keywords/Slot.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordItemMD;
class IKeywordListData;
class IKeywordMapData;
class IKeywordMD;
class IKeywordRawTextData;
class IKeywordRecordData;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class CustomSerializers;
class ILineWriter;

/// Writes the data tree of a keyword as deck text. The tree's metadata decide what each value looks like, which values
/// are left out, where lines break between containers and where a "/" goes; the writer lays the tokens out on lines.
class KeywordDataSerializer
{
public:
    KeywordDataSerializer() = delete;

    /// Writes the data from where the writer stands; the last line isn't ended. `useVariables`: the deck's values may
    /// be references to variables. `simulator` decides which entries of a map are written. Throws DeckManagerException
    /// for data that can't be written in the deck format.
    static void Serialize(const Keywords::IKeywordData& data, ILineWriter& writer, bool useVariables,
                          Keywords::SimulatorType simulator);

    /// Writes one item of a record: "1*" when it is unset, or nothing when it is `optional` too. `newLine`: on a new
    /// line. Without metadata nothing is written.
    static void SerializeOptionalItem(const Keywords::ConstSlot& value, const Keywords::IKeywordMD* itemMD,
                                      ILineWriter& writer, bool newLine, bool optional);

    /// The item is unset. False without metadata.
    static bool IsDefaultItem(const Keywords::ConstSlot& value, const Keywords::IKeywordMD* itemMD);

    /// Room for the text of a number.
    using NumberBuffer = std::array<char, 384>;

    /// The text of a number, by the printf format if there is one that yields something. Good as long as the buffer.
    static std::string_view FormatInteger(int value, const char* format, NumberBuffer& buffer);
    /// At most 15 digits, and a point in the mantissa where there is an exponent.
    static std::string_view FormatReal(double value, const char* format, NumberBuffer& buffer);

    /// The text as a token: in quotes where it would otherwise be read as something else. May point into `scratch`.
    /// `allowCommas`: a comma ends no token there.
    static std::string_view QuoteIfNeeded(std::string_view text, bool allowCommas, std::string& scratch);
    /// The same for an operand or operator of an expression: numbers, and single characters of any kind, stay bare.
    static std::string_view QuoteExpressionToken(std::string_view text, bool allowCommas, std::string& scratch);
    /// The text in quotes, of which those that it has already are kept.
    static std::string_view Quote(std::string_view text, std::string& scratch);

private:
    /// What a tree is written with.
    struct Write
    {
        ILineWriter& writer;
        const CustomSerializers& customs;
        KeywordItemRepeatOptions repeats;
        bool useVariables;
        Keywords::SimulatorType simulator;
        bool isUnset; ///< the whole tree
    };

    /// Where a container stands.
    enum class Place
    {
        Root,
        Inside,
        BehindElement ///< in a list where an empty element repeats the one before
    };

    static bool SerializeRecord(const Keywords::IKeywordRecordData& record, const Write& write, bool newLine,
                                bool skipIfDefault, Place place);
    static bool SerializeList(const Keywords::IKeywordListData& list, const Write& write, bool newLine,
                              bool skipIfEmpty);
    static bool SerializeContainer(const Keywords::IKeywordData& data, const Write& write, bool newLine, bool skip,
                                   Place place);
    static bool NeedsText(const Keywords::IKeywordRecordMD& md, Place place);
    static void SerializeItemList(const Keywords::IKeywordListData& list, const Write& write);
    static void SerializeMap(const Keywords::IKeywordMapData& map, const Write& write);
    static void SerializeRawText(const Keywords::IKeywordRawTextData& data, const Write& write);
    static bool IsDefaultRecord(const Keywords::IKeywordRecordData& record);
};

} // namespace Tarn::Fjel::Core::DeckManager
