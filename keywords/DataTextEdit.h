#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/DataTextEditor.h>
#include <deckmanager/KeywordVariables.h>
#include <tarn/keywords/IKeywordData.h>

#include "keywords/DataTreeChange.h"
#include "keywords/ItemToken.h"
#include "keywords/KeywordDataDeserializer.h"
#include "keywords/SlotPlaces.h"
#include "keywords/TextSplice.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordListData;
class IKeywordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Tarn::Fjel::Core::DeckManager {

/// One edit of one text: reads it, finds the place, makes the change and reads the result. What stands in the way ends
/// the edit by an `Obstacle`, which the editor turns into a result.
class DataTextEdit
{
public:
    using Outcome = DataTextEditor::Outcome;
    using Path = DataTextEditor::Path;
    using Value = DataTextEditor::Value;

    struct Obstacle
    {
        Outcome outcome;
        std::string reason;
    };

    DataTextEdit(const Keywords::IKeywordSyntax& syntax, const std::string& name,
                 const DataTextEditor::Settings& settings, std::string_view text);

    std::string Set(const Path& path, const Value& value);
    std::string InsertElement(const Path& list, int index, const Value& value);
    std::string InsertRecord(const Path& list, int index, const std::vector<Value>& values);
    std::string Remove(const Path& path);

private:
    struct Reading
    {
        std::unique_ptr<Keywords::IKeywordData> data;
        KeywordVariables variables;
        std::optional<SlotPlaces> places;
        ReadReport report;
    };

    /// A way in the metadata.
    struct Way
    {
        std::vector<int> steps;
        const Keywords::IKeywordMD* parent = nullptr; ///< of what the last step leads to; null at the root
        const Keywords::IKeywordMD* target = nullptr; ///< null for a map's entry
        bool isInExpression = false;                  ///< inside a record with a reader of its own
    };

    [[noreturn]] static void Stop(Outcome outcome, std::string reason);

    Way Follow(const Path& path) const;
    std::string Describe(const std::vector<int>& steps) const;
    Reading Read(std::string_view text, const std::vector<int>* way, std::int64_t wanted) const;
    Reading ReadPlaces(const std::vector<int>& way, std::int64_t wanted) const;
    const Keywords::IKeywordData& Container(const Reading& reading, const std::vector<int>& way) const;
    const Keywords::IKeywordListData& List(const Reading& reading, const std::vector<int>& way) const;

    ItemToken Token(const Value& value, const Way& way) const;
    /// What must come of a token when it is read: of a path, the one for which its alias stands.
    ItemToken AsRead(const ItemToken& token, const Way& way) const;
    std::string TokenText(const ItemToken& token, const TextSplice& splice, bool keepsQuotes) const;

    TextSplice PlaceMissingItem(const Reading& reading, const Way& parent, int index, const std::string& token) const;
    TextSplice AppendLine(std::string_view content) const;
    std::string SetEntry(const Way& way, const Value& value);
    TextSplice InsertAhead(const SlotPlaces::Token& token, const std::string& inserted) const;

    std::string RecordLine(const Reading& reading, const Keywords::IKeywordMD& recordMD,
                           const std::vector<ItemToken>& tokens, bool hasNeighbour) const;
    TextSplice InsertLine(const Reading& reading, std::string line, bool isAhead, bool closesList) const;
    TextSplice RemoveLines(const SlotPlaces& places) const;

    /// The new text, read again. `check` looks at the changed container.
    template <class Check>
    std::string Finish(const Reading& before, const TextSplice& splice, const DataTreeChange& change,
                       const Check& check) const;
    Reading ReadAgain(const Reading& before, const std::string& text, const DataTreeChange& change) const;

    const Keywords::IKeywordSyntax& m_syntax;
    const std::string& m_name;
    const DataTextEditor::Settings& m_settings;
    std::string_view m_text;
};

template <class Check>
std::string DataTextEdit::Finish(const Reading& before, const TextSplice& splice, const DataTreeChange& change,
                                 const Check& check) const
{
    bool fits = true;
    std::string text = splice.Apply(m_text, fits);
    if (!fits) Stop(Outcome::NotInText, "The line would pass column 132, and can not be broken there.");
    const Reading after = ReadAgain(before, text, change);
    if (!check(after, Container(after, change.way)))
        Stop(Outcome::NotInText, "The value would be read as something else where it stands.");
    return text;
}

} // namespace Tarn::Fjel::Core::DeckManager
