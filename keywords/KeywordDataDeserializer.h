#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "keywords/DeserializeState.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordItemMD;
class IKeywordListData;
class IKeywordListMD;
class IKeywordMapData;
class IKeywordMD;
class IKeywordRawTextData;
class IKeywordRecordData;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class IKeyword;
class ILineReader;
class KeywordVariables;
class SlotPlaces;

/// What a step that reads a container tells the step around it.
struct DeserializeResult
{
    bool hasData = false;            ///< there is a value for the parent to count
    bool terminated = false;         ///< a terminator was met that this step didn't take for itself
    bool firstWasTerminator = false; ///< the terminator was the very first thing
};

/// What a read tells beside the data.
struct ReadReport
{
    /// Behind the last line from which something was taken; -1: nothing was.
    long long takenEnd = -1;
    /// All tokens of the lines that were taken stand in the data or in the variables. Else writing the data loses text.
    bool isComplete = true;
};

/// Turns the text of one keyword into its data tree. The tree's metadata drive the grammar: the same tokens mean
/// different things to a record, a list and a map, and nothing in the text says which it is.
///
/// Bad values are told in the log and stay unset. Reading a list whose size another keyword gives reads that keyword.
class KeywordDataDeserializer
{
public:
    KeywordDataDeserializer() = delete;

    /// Fills `data`, a tree that was made for the keyword and has everything unset, from `length` bytes of the text at
    /// byte `start`. `firstLineIsKeywordName`: these begin with the keyword's own line. `variables` takes the
    /// references to variables; null where the deck allows none, and a reference is then text like any other.
    /// `report`, if given, is filled in. `places`, if given, takes the places of the tokens that it was made for.
    /// The reader is afterwards where it was, unless there is nothing to read. Throws DeckManagerException when a size
    /// can't be told, or the keyword's metadata are not as its reader expects them.
    static void Deserialize(const IKeyword& keyword, Keywords::IKeywordData& data, ILineReader& reader, long long start,
                            long long length, const Context& context, bool firstLineIsKeywordName,
                            KeywordVariables* variables, ReadReport* report = nullptr, SlotPlaces* places = nullptr);

    /// Reads what the kind of the data calls for.
    static DeserializeResult Deserialize(Keywords::IKeywordData& data, KeywordDataStore& store, const Context& context,
                                         DeserializeState& state, KeywordVariables* variables);

    /// Reads one item of a record from a token. False when the token is a default or doesn't convert: the item is then
    /// unset, and `reason` says what it must be. Sends no message.
    static bool DeserializeOptionalData(std::string_view token, bool quoted, const Keywords::IKeywordMD& itemMD,
                                        Keywords::IKeywordRecordData& record, int index, const Context& context,
                                        DeserializeState& state, KeywordVariables* variables, std::string& reason);

    /// Everything in the record is unset, and its lists have no elements. Null is empty.
    static bool IsEmptyRecord(const Keywords::IKeywordRecordData* record);

    /// The same for a record or a list.
    static bool IsEmptyContainer(const Keywords::IKeywordData* data);

private:
    /// What an item of a record found.
    enum class ItemStep
    {
        Nothing,   ///< no token
        Value,     ///< a token, whether it became a value or not
        Terminator ///< the terminator
    };

    struct RecordEnd
    {
        bool terminated; ///< a terminator was met
        bool consumed;   ///< it is the record's own
    };

    static DeserializeResult Deserialize(Keywords::IKeywordListData& list, KeywordDataStore& store,
                                         const Context& context, DeserializeState& state, KeywordVariables* variables,
                                         bool nestedInSlashList);
    static DeserializeResult DeserializeContainerList(Keywords::IKeywordListData& list, std::int64_t size,
                                                      KeywordDataStore& store, const Context& context,
                                                      DeserializeState& state, KeywordVariables* variables,
                                                      bool nestedInSlashList);
    static DeserializeResult DeserializeItemList(Keywords::IKeywordListData& list, std::int64_t size,
                                                 bool allowsDefault, KeywordDataStore& store, DeserializeState& state,
                                                 KeywordVariables* variables);
    static DeserializeResult Deserialize(Keywords::IKeywordRecordData& record, const RecordPlan& plan,
                                         KeywordDataStore& store, const Context& context, DeserializeState& state,
                                         KeywordVariables* variables);
    static ItemStep DeserializeItem(Keywords::IKeywordRecordData& record, int index, const RecordPlan::Item& item,
                                    bool endOfLine, KeywordDataStore& store, const Context& context,
                                    DeserializeState& state, KeywordVariables* variables);
    static DeserializeResult Deserialize(Keywords::IKeywordMapData& map, KeywordDataStore& store,
                                         DeserializeState& state, KeywordVariables* variables);
    static DeserializeResult Deserialize(Keywords::IKeywordRawTextData& data, KeywordDataStore& store);

    static std::int64_t ListSize(const Keywords::IKeywordListMD& md, const Context& context, DeserializeState& state);
    static std::int64_t SelfSize(const std::string& expression, DeserializeState& state);
    static void CheckListEnd(KeywordDataStore& store, DeserializeState& state, bool sawSlash);
    static RecordEnd CheckRecordEnd(KeywordDataStore& store, DeserializeState& state, const RecordPlan& plan,
                                    bool first, bool lastFirst, bool terminated);
    static void FillEmptyElements(Keywords::IKeywordListData& list, int begin,
                                  const std::vector<bool>& firstWasTerminator);
};

} // namespace Tarn::Fjel::Core::DeckManager
