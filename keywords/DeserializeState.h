#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/MDType.h>
#include <tarn/keywords/Termination.h>

#include "keywords/KeywordDataStore.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
}

namespace Tarn::Fjel::Core::DeckManager {

class CustomDeserializers;
class IDeserializer;
class IKeyword;
class SlotPlaces;

/// What bounds a read whatever the text says.
struct DeserializeLimits
{
    /// How many containers one repeat may make.
    std::int64_t containersOfRun = 1000000;
    /// How many variable references one repeat may make.
    std::int64_t variablesOfRun = 1000000;
    /// How many elements one list of items may hold, besides what the list itself has room for.
    std::int64_t elementsOfList = std::numeric_limits<std::int32_t>::max();
    /// How many messages one repeat of a bad token may send.
    std::int64_t messagesOfRun = 10;
};

/// How the items of a record are read: what its metadata say, looked up once for a read and not once for a record.
struct RecordPlan
{
    struct Item
    {
        const Keywords::IKeywordMD* md;
        Keywords::MDType type;
        bool optional; ///< takes a token only if it converts
    };

    explicit RecordPlan(const Keywords::IKeywordRecordMD& md, IDeserializer* reader);

    IDeserializer* custom; ///< reads the record in place of what follows; null for none
    Keywords::Termination termination;
    bool standsAlone; ///< a terminator alone can be a record of defaults
    std::vector<Item> items;
};

/// What one read of a keyword's data has at hand.
struct DeserializeState
{
    DeserializeState(const IKeyword& keywordRead, Keywords::IKeywordData& rootData);

    const RecordPlan& PlanOf(const Keywords::IKeywordRecordMD& md);

    /// Called behind each container that a list has gained: when one repeat makes more of them than it may, the rest of
    /// the repeat is dropped.
    void NoteContainer(KeywordDataStore& store);

    /// Whether the token just taken, which is no value, still gets a message: of a long repeat only the first few do.
    bool TakesMessage(const KeywordDataStore& store);

    /// Tells, once for the keyword, that text was left out because it makes more data than can be held.
    void ReportTruncation();

    /// The limits that a read begins with; for tests that have less memory.
    static DeserializeLimits& DefaultLimits();

    const IKeyword& keyword;
    Keywords::IKeywordData& root;

    /// The sizes that the keyword itself gives; -1 until they are known.
    std::int64_t sizePRSValues = -1;
    std::int64_t sizeFLOValues = -1;
    std::int64_t sizeValuesList = -1;

    const CustomDeserializers& customs;
    const DeserializeLimits limits;
    const bool hasPaths; ///< strings may begin with a path alias
    const bool autoFill; ///< empty elements repeat the one before, where the metadata say so
    const bool limitStringLength;
    const bool upperCase;

    SlotPlaces* places = nullptr; ///< takes the places of tokens; null when nobody asks
    int harmlessMessages = 0;     ///< messages sent of what costs no text when the data are written
    bool leftOut = false;         ///< some token has become no part of the data, without a message
    bool customRefused = false;   ///< a reader of its own may have filled data that the generic one goes on with

    // Scratch, each for one use.
    std::string text;   ///< a string on its way into the data
    std::string path;   ///< a text whose path alias was replaced
    std::string line;   ///< a line that is one item
    std::string reason; ///< why a token is no value of an item

private:
    std::unordered_map<const Keywords::IKeywordRecordMD*, RecordPlan> m_plans;
    const Keywords::IKeywordRecordMD* m_lastMD = nullptr;
    const RecordPlan* m_lastPlan = nullptr;
    KeywordDataStore::Place m_runPlace{-1, 0};
    std::int64_t m_containersOfRun = 0;
    KeywordDataStore::Place m_messagePlace{-1, 0};
    std::int64_t m_messagesOfRun = 0;
    bool m_truncationReported = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
