#pragma once

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#include <deckmanager/Context.h>

#include "checking/KeywordSource.h"
#include "session/Sections.h"

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordListMD;
class IKeywordMapMD;
class IKeywordMD;
class IKeywordRecordMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Deckman {

class DeckSession;

/// What is wrong with the text of a keyword though its data can be read: a terminator that is missing, so that the next
/// keyword is data of this one; tables and rows that are too many, too few or incomplete; names that a map doesn't
/// know; items without a value that have no default; whole numbers that are none; conditions without a comparison.
class TextCheck
{
public:
    struct Fault
    {
        int line;
        int severity;
        std::string text;
    };
    using Take = std::function<void(const Fault&)>;

    explicit TextCheck(DeckSession& session);

    /// Turns to a keyword in that section, and gives the first keyword that stands among its data. Returns the line of
    /// that, from which on the data mean nothing; 0 for none.
    int FindSwallowed(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, SectionType section, const Take& take);

    /// Gives what else is wrong with the keyword that `FindSwallowed` turned to.
    /// REQUIRES: these are its data, and could be read without a message.
    void Look(const Tarn::Fjel::Core::Keywords::IKeywordData& data, const Take& take);

    /// Of a row of the keyword at hand that began ahead of that line and goes on there: where it began, and the last
    /// line with a word of it ahead of the line.
    struct Row
    {
        int first;
        int last;
    };
    std::optional<Row> RowAhead(int line);

    /// The item of the keyword at hand for which a word stands that must be something else, as its message says; empty
    /// when that can't be told. Of several the first. Good while the catalogue is.
    std::string_view ItemAt(int line, std::string_view word, std::string_view wanted);

    /// The line on which the record of that index of a list of records ends; the keyword's own when that can't be told.
    int LineOfRecord(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword, int record);

    /// A keyword of that name is in the deck's RUNSPEC.
    void NotePresent(const std::string& name) { m_present.insert(name); }

    /// What a size expression of the catalogue comes to; none when the deck doesn't tell it.
    std::optional<int> SizeOf(const std::string& expression);
    /// Who says it, in the words of a message: "TABDIMS (NTPVT)".
    static std::string SourceOf(const std::string& expression);

private:
    void LookAtMap(const Tarn::Fjel::Core::Keywords::IKeywordMapMD& map, const Take& take);
    void LookAtRows(const Tarn::Fjel::Core::Keywords::IKeywordListMD& rows,
                    const Tarn::Fjel::Core::Keywords::IKeywordData& data, const Take& take);
    void LookAtColumns(const Tarn::Fjel::Core::Keywords::IKeywordRecordMD& columns, const Take& take);
    void LookAtIntegers(const Tarn::Fjel::Core::Keywords::IKeywordRecordMD& row, const Take& take);
    void LookAtItems(const Tarn::Fjel::Core::Keywords::IKeywordRecordMD& row,
                     const Tarn::Fjel::Core::Keywords::IKeywordData& data, const Take& take);
    void LookAtConditions(const Take& take);
    void LookAtDefinitions(const Tarn::Fjel::Core::Keywords::IKeywordData& udq, const Take& take);

    std::pair<std::size_t, std::size_t> TokensAt(int line);
    std::size_t RowBegin(std::size_t token);
    int LineOfRow(int row);
    std::optional<int> DefaultOf(const std::string& expression) const;

    KeywordSource m_source;
    const Tarn::Fjel::Core::DeckManager::IKeyword* m_keyword = nullptr; ///< that the source holds; null for none
    Tarn::Fjel::Core::DeckManager::Context m_context;
    std::set<std::string, std::less<>> m_present; ///< names of keywords of RUNSPEC
    std::map<std::string, std::optional<int>, std::less<>> m_sizes;
};

} // namespace Deckman
