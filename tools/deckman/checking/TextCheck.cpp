#include "checking/TextCheck.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <exception>
#include <iterator>
#include <limits>
#include <span>
#include <utility>
#include <vector>

#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordMapMD.h>
#include <tarn/keywords/IKeywordOptionMD.h>
#include <tarn/keywords/IKeywordRecordData.h>
#include <tarn/keywords/IKeywordRecordMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Log.h>
#include <tarn/service/LogEnabler.h>
#include <tarn/service/Strings.h>

#include "output/Nearest.h"
#include "session/DeckSession.h"

namespace Deckman {

namespace {

namespace Keywords = Tarn::Fjel::Core::Keywords;
using Keywords::IKeywordListMD;
using Keywords::IKeywordMapMD;
using Keywords::IKeywordMD;
using Keywords::IKeywordOptionMD;
using Keywords::IKeywordRecordMD;
using Keywords::IKeywordSyntax;
using Keywords::MDType;
using Keywords::SimulatorType;
using Keywords::Termination;
using Service::Log;
using Token = KeywordSource::Token;

constexpr std::size_t significantCharacters = 8;
constexpr std::size_t shortStem = 4; // with the star

/// The keyword that a simulator would see in a word that begins a line; null for none. Patterns with a short stem don't
/// count: they would take too many words for keywords.
const IKeywordSyntax* KeywordIn(std::string_view word, SectionType section)
{
    if (word.empty() || !Service::IsAlpha(word.front())) return nullptr;
    const std::string name = Service::Uppercased(word.substr(0, significantCharacters));
    for (const IKeywordSyntax* syntax : DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntaxes(name)) {
        const std::string& pattern = syntax->GetName();
        if (pattern.ends_with('*') && pattern.size() <= shortStem) continue;
        if (syntax->IsValidForSection(section, SimulatorType::Any)) return syntax;
    }
    return nullptr;
}

bool IsItem(const IKeywordMD& shape)
{
    return Keywords::KeywordUtils::IsItemMDType(shape.GetType());
}

/// Data in which the scan finds every keyword: numbers, and nothing but numbers.
bool IsNumbers(const IKeywordMD& shape)
{
    if (shape.GetType() != MDType::List) return false;
    const MDType element = static_cast<const IKeywordListMD&>(shape).GetElementMD()->GetType();
    return element == MDType::Integer || element == MDType::Real;
}

/// The data are words of which any may stand alone at the head of a line.
bool IsProse(const IKeywordMD& shape)
{
    if (shape.GetType() == MDType::RawText || shape.GetType() == MDType::RestOfLine) return true;
    if (shape.GetType() == MDType::Record) {
        const auto& record = static_cast<const IKeywordRecordMD&>(shape);
        return record.GetItemCount() > 0 && IsProse(*record.GetItemMD(0));
    }
    return shape.GetType() == MDType::List && IsProse(*static_cast<const IKeywordListMD&>(shape).GetElementMD());
}

/// The word is one that the data know: an entry of a map, an option of a list of these.
bool Knows(const IKeywordMD& shape, std::string_view word)
{
    if (shape.GetType() == MDType::Map) return static_cast<const IKeywordMapMD&>(shape).FindEntry(word) >= 0;
    if (shape.GetType() != MDType::List) return false;
    const IKeywordMD& element = *static_cast<const IKeywordListMD&>(shape).GetElementMD();
    std::string reason;
    return element.GetType() == MDType::Option &&
           static_cast<const IKeywordOptionMD&>(element).FindOption(std::string(word), reason) >= 0;
}

/// A row that one "/" ends, with no further one in it.
bool IsPlainRow(const IKeywordMD& row)
{
    const auto areItems = [](const IKeywordRecordMD& record) {
        for (int i = 0; i < record.GetItemCount(); ++i) {
            if (!IsItem(*record.GetItemMD(i))) return false;
        }
        return true;
    };
    if (row.GetType() == MDType::Record) {
        const auto& record = static_cast<const IKeywordRecordMD&>(row);
        return record.GetTermination() == Termination::Slash && areItems(record);
    }
    if (row.GetType() != MDType::List) return false;
    const auto& list = static_cast<const IKeywordListMD&>(row);
    if (list.GetTermination() != Termination::Slash) return false;
    const IKeywordMD& element = *list.GetElementMD();
    if (IsItem(element)) return true;
    if (element.GetType() != MDType::Record) return false;
    const auto& record = static_cast<const IKeywordRecordMD&>(element);
    return record.GetTermination() == Termination::None && areItems(record);
}

bool IsEmptyList(const Keywords::IKeywordData& data)
{
    return data.GetType() == MDType::List &&
           static_cast<const Keywords::IKeywordListData&>(data).GetElementCount() == 0;
}

/// The columns of tables that are rows of numbers up to a "/"; null for other data.
const IKeywordRecordMD* ColumnsOf(const IKeywordMD& shape)
{
    const IKeywordMD* table = &shape;
    if (table->GetType() == MDType::List &&
        static_cast<const IKeywordListMD*>(table)->GetTermination() == Termination::None)
        table = static_cast<const IKeywordListMD*>(table)->GetElementMD();
    if (!IsPlainRow(*table) || table->GetType() != MDType::List) return nullptr;
    const IKeywordMD* row = static_cast<const IKeywordListMD*>(table)->GetElementMD();
    if (row->GetType() != MDType::Record) return nullptr;
    const auto* columns = static_cast<const IKeywordRecordMD*>(row);
    return columns->GetItemTraits() == nullptr && columns->GetItemCount() > 1 ? columns : nullptr;
}

/// The row of a keyword that is one, or a list of them; null for other data.
const IKeywordRecordMD* RowOf(const IKeywordMD& shape)
{
    const IKeywordMD* row = &shape;
    if (row->GetType() == MDType::List) row = static_cast<const IKeywordListMD*>(row)->GetElementMD();
    if (row->GetType() != MDType::Record || !IsPlainRow(*row)) return nullptr;
    const auto* record = static_cast<const IKeywordRecordMD*>(row);
    return record->GetItemTraits() == nullptr ? record : nullptr;
}

/// The row of that number of data that are rows of different kinds, one behind the other: the head of a table and its
/// axes, a well and its segments. Null where that can't be told.
const IKeywordRecordMD* RowOf(const IKeywordMD& shape, std::size_t number)
{
    if (shape.GetType() != MDType::Record) return nullptr;
    const auto& parts = static_cast<const IKeywordRecordMD&>(shape);
    for (int i = 0; i < parts.GetItemCount(); ++i) {
        const IKeywordMD& part = *parts.GetItemMD(i);
        if (!IsPlainRow(part)) return RowOf(part);
        if (number == 0) return part.GetType() == MDType::Record ? RowOf(part) : nullptr;
        --number;
    }
    return nullptr;
}

/// A message that a value must be that can be about such an item.
bool IsWanted(const IKeywordMD& item, std::string_view wanted)
{
    switch (item.GetType()) {
    case MDType::Integer:
        return wanted == "a whole number";
    case MDType::Real:
        return wanted == "a real number";
    case MDType::YesNo:
        return wanted == "either YES or NO";
    case MDType::Option:
        return wanted != "a whole number" && wanted != "a real number" && wanted != "either YES or NO";
    default:
        return false;
    }
}

/// A whole number is read from the head of the word, and what follows would change it: "12abc", "15.5" and "1E3", not
/// "3.0".
bool IsCutInteger(std::string_view word)
{
    std::size_t at = !word.empty() && (word.front() == '-' || word.front() == '+') ? 1 : 0;
    const std::size_t first = at;
    while (at < word.size() && Service::IsDigit(word[at]))
        ++at;
    if (at == first || at == word.size()) return false;
    return word[at] != '.' || word.find_first_not_of('0', at + 1) != std::string_view::npos;
}

std::optional<double> NumberIn(std::string_view word)
{
    double value = 0;
    const auto [stop, error] = std::from_chars(word.data(), word.data() + word.size(), value);
    return error == std::errc() && stop == word.data() + word.size() ? std::optional(value) : std::nullopt;
}

bool IsComparison(std::string_view word)
{
    return word == ">" || word == "<" || word == ">=" || word == "<=" || word == "=" || word == "!=";
}

/// The item that a size expression names.
struct Source
{
    std::string keyword;                      ///< empty for another expression
    const IKeywordRecordMD* record = nullptr; ///< null where the catalogue doesn't know the item
    int item = 0;
};

/// Of "RUNSPEC:TABDIMS[1]".
Source ParseSource(const std::string& expression)
{
    const std::size_t colon = expression.find(':');
    const std::size_t open = expression.find('[');
    if (colon == std::string::npos || open == std::string::npos || open < colon) return {};
    Source source{expression.substr(colon + 1, open - colon - 1), nullptr, std::atoi(expression.c_str() + open + 1)};
    const IKeywordSyntax* syntax =
        DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax(source.keyword, true);
    const IKeywordMD* shape = syntax != nullptr ? syntax->GetMetaData() : nullptr;
    if (shape != nullptr && shape->GetType() == MDType::Record &&
        source.item < static_cast<const IKeywordRecordMD*>(shape)->GetItemCount())
        source.record = static_cast<const IKeywordRecordMD*>(shape);
    return source;
}

/// The deck must have that many; other sizes are how many there is room for.
bool IsExact(std::string_view expression)
{
    return expression == "RUNSPEC:TABDIMS[0]" || expression == "RUNSPEC:TABDIMS[1]" ||
           expression == "RUNSPEC:EQLDIMS[0]";
}

} // namespace

TextCheck::TextCheck(DeckSession& session) : m_context(&session.Keywords()) {}

/// A keyword among the data stands there because what it follows doesn't end.
int TextCheck::FindSwallowed(const DeckManager::IKeyword& keyword, SectionType section, const Take& take)
{
    m_keyword = nullptr;
    const IKeywordMD* shape = keyword.GetSyntax()->GetMetaData();
    if (shape == nullptr || IsNumbers(*shape) || IsProse(*shape) || keyword.IsSuppressed()) return 0;
    if (!m_source.Read(keyword)) return 0;
    m_keyword = &keyword;
    for (const Token& token : m_source.Tokens()) {
        if (!token.isAlone || !token.isFirstOnLine || token.isQuoted || token.isSlash) continue;
        const IKeywordSyntax* found = KeywordIn(token.text, section);
        if (found == nullptr || Knows(*shape, token.text)) continue;
        take({token.line, Log::Error,
              fmt::format("The keyword {} is read as data of {}: is a \"/\" missing ahead of it?",
                          Service::Uppercased(token.text), keyword.GetName())});
        return token.line;
    }
    return 0;
}

void TextCheck::Look(const Keywords::IKeywordData& data, const Take& take)
{
    if (m_keyword == nullptr) return;
    const IKeywordMD& shape = *m_keyword->GetSyntax()->GetMetaData();
    if (m_keyword->GetName() == "ACTIONX") LookAtConditions(take);
    if (m_keyword->GetName() == "UDQ") LookAtDefinitions(data, take);
    if (const IKeywordRecordMD* row = RowOf(shape)) {
        LookAtIntegers(*row, take);
        // An INCLUDE without a name is told in its own words.
        if (m_keyword->GetSyntax()->GetKind() != Keywords::KeywordKind::Include) LookAtItems(*row, data, take);
    }
    if (shape.GetType() == MDType::Map) {
        LookAtMap(static_cast<const IKeywordMapMD&>(shape), take);
    } else if (shape.GetType() == MDType::List) {
        if (const IKeywordRecordMD* columns = ColumnsOf(shape)) LookAtColumns(*columns, take);
        LookAtRows(static_cast<const IKeywordListMD&>(shape), data, take);
    }
}

void TextCheck::LookAtMap(const IKeywordMapMD& map, const Take& take)
{
    const std::vector<Token>& tokens = m_source.Tokens();
    if (tokens.empty() || !Service::IsAlpha(tokens.front().text.empty() ? ' ' : tokens.front().text.front())) return;
    bool takesNumber = false; // behind NAME =
    for (const Token& token : tokens) {
        if (token.isSlash) return;
        const bool isValue = std::exchange(takesNumber, token.text.ends_with('='));
        if (!token.text.empty() && Service::IsDigit(token.text.front()) && !isValue) {
            take({token.line, Log::Warning,
                  fmt::format("\"{}\" among the names of {} says nothing. It takes NAME or NAME=number.", token.text,
                              m_keyword->GetName())});
            return;
        }
        const std::string_view entry = Service::TrimmedRight(token.text.substr(0, token.text.find('=')));
        if (entry.empty() || !Service::IsAlpha(entry.front()) || map.FindEntry(entry) >= 0) continue;
        std::vector<std::string_view> entries;
        for (int i = 0; i < map.GetEntryCount(); ++i)
            entries.push_back(map.GetEntryMD(i)->GetName());
        take({token.line, Log::Warning,
              fmt::format("{} knows no {}.{}", m_keyword->GetName(), Service::Uppercased(entry),
                          NearestHint(entry, entries))});
    }
}

void TextCheck::LookAtRows(const IKeywordListMD& rows, const Keywords::IKeywordData& data, const Take& take)
{
    const std::string* expression = rows.GetSizeExpression();
    if (expression == nullptr || rows.GetTermination() != Termination::None) return;
    std::optional<int> size = SizeOf(*expression);
    if (!size || *size < 1) return;
    // ROCKOPTS may say that rock goes by its own regions, or by those of saturation.
    if (m_keyword->GetName() == "ROCK") {
        for (const char* other : {"RUNSPEC:TABDIMS[0]", "RUNSPEC:TABDIMS[12]"})
            size = std::max(*size, SizeOf(other).value_or(0));
    }
    long long count = 0;
    int first = 0; // the line of the first row that is too many
    if (IsPlainRow(*rows.GetElementMD())) {
        for (const Token& token : m_source.Tokens()) {
            if (count == *size && first == 0 && !token.isSlash) first = token.line;
            if (token.isSlash) ++count;
        }
    } else {
        const auto& tables = static_cast<const Keywords::IKeywordListData&>(data);
        count = tables.GetElementCount();
        while (count > 0 && IsEmptyList(tables.GetContainer(static_cast<int>(count) - 1)))
            --count;
    }
    const std::string_view what = rows.GetElementMD()->GetType() == MDType::Record ? "row" : "table";
    const auto told = [&](std::string_view more) {
        return fmt::format("{} has {}{} {}{}, and {} asks for {}.", m_keyword->GetName(), more, count, what,
                           count == 1 ? "" : "s", SourceOf(*expression), *size);
    };
    if (count > *size && first > 0)
        take({first, Log::Warning, told("")});
    else if (count < *size && IsExact(*expression) && m_keyword->GetName() != "ROCK")
        take({m_keyword->GetLine(), Log::Warning, told("only ")});
}

void TextCheck::LookAtColumns(const IKeywordRecordMD& columns, const Take& take)
{
    const std::vector<Token>& tokens = m_source.Tokens();
    if (m_source.HasCommas()) return;
    const int width = columns.GetItemCount();
    std::string names;
    for (int i = 0; i < width; ++i)
        names += (i > 0 ? ", " : "") + columns.GetItemName(i);

    long long count = 0;  // of the table's values
    long long onLine = 0; // of its last line
    int oddLine = 0;      // the first line that holds no whole rows
    int lastLine = 0;
    constexpr double unknown = std::numeric_limits<double>::quiet_NaN();
    double ahead = unknown; // what the first column holds in the row ahead
    bool falls = false;     // told of this table
    const auto closeLine = [&] {
        if (onLine % width != 0 && oddLine == 0) oddLine = lastLine;
        onLine = 0;
    };
    for (const Token& token : tokens) {
        if (token.line != lastLine) {
            closeLine();
            lastLine = token.line;
        }
        if (!token.isSlash) {
            if (count % width == 0) {
                const double value = NumberIn(token.text).value_or(unknown);
                if (value <= ahead && !std::exchange(falls, true)) {
                    take({token.line, Log::Warning,
                          fmt::format("{} does not increase in a table of {}: {} stands behind {}.",
                                      columns.GetItemName(0), m_keyword->GetName(), value, ahead)});
                }
                ahead = value;
            }
            count += token.count;
            onLine += token.count;
            continue;
        }
        ahead = unknown;
        falls = false;
        closeLine();
        if (count % width != 0) {
            // What is left out at the end of the last row is left to its default.
            bool isLeftOut = oddLine == token.line || oddLine == 0;
            for (int i = static_cast<int>(count % width); i < width; ++i)
                isLeftOut = isLeftOut && columns.IsItemDefaultable(i);
            if (!isLeftOut) {
                take({oddLine > 0 ? oddLine : token.line, Log::Error,
                      fmt::format("A table of {} holds {} values, which are no whole rows of {} ({}).",
                                  m_keyword->GetName(), count, width, names)});
            }
        }
        count = 0;
        oddLine = 0;
    }
}

void TextCheck::LookAtIntegers(const IKeywordRecordMD& row, const Take& take)
{
    if (m_source.HasCommas()) return;
    long long item = 0;
    for (const Token& token : m_source.Tokens()) {
        if (token.isSlash || item >= row.GetItemCount()) {
            item = token.isSlash ? 0 : item;
            continue;
        }
        const int index = static_cast<int>(item);
        item += token.count;
        if (row.GetItemMD(index)->GetType() != MDType::Integer || !IsCutInteger(token.text)) continue;
        take({token.line, Log::Warning,
              fmt::format("{} \"{}\" of {} is no whole number, and is read as {}.", row.GetItemName(index), token.text,
                          m_keyword->GetName(), std::strtoll(std::string(token.text).c_str(), nullptr, 10))});
    }
}

/// Items that must be given.
void TextCheck::LookAtItems(const IKeywordRecordMD& row, const Keywords::IKeywordData& data, const Take& take)
{
    const auto look = [&](const Keywords::IKeywordData& values, int index) {
        const auto& record = static_cast<const Keywords::IKeywordRecordData&>(values);
        for (int i = 0; i < row.GetItemCount(); ++i) {
            if (row.IsItemDefaultable(i) || record.GetItem(i).HasValue()) continue;
            take({LineOfRow(index), Log::Warning,
                  fmt::format("{} of {} has no value, and no default.", row.GetItemName(i), m_keyword->GetName())});
            return;
        }
    };
    if (data.GetType() == MDType::Record) {
        look(data, 0);
        return;
    }
    const auto& list = static_cast<const Keywords::IKeywordListData&>(data);
    for (int i = 0; i < list.GetElementCount(); ++i)
        look(list.GetContainer(i), i);
}

/// Each condition of an action compares two things.
void TextCheck::LookAtConditions(const Take& take)
{
    bool isCondition = false; // the first row names the action
    bool isCompared = false;
    int words = 0;
    for (const Token& token : m_source.Tokens()) {
        if (!token.isSlash) {
            ++words;
            isCompared = isCompared || IsComparison(token.text);
            continue;
        }
        if (isCondition && words > 0 && !isCompared) {
            take({token.line, Log::Error,
                  "This condition of ACTIONX holds no comparison as a word of its own (>, <, >=, <=, =, !=)."});
        }
        isCondition = true;
        isCompared = false;
        words = 0;
    }
}

/// Each row of UDQ is one operation, and the parentheses of its expression come in pairs.
void TextCheck::LookAtDefinitions(const Keywords::IKeywordData& udq, const Take& take)
{
    const auto isOperation = [](std::string_view word) {
        return word == "DEFINE" || word == "ASSIGN" || word == "UNITS" || word == "UPDATE";
    };
    if (udq.GetType() != MDType::List) return;
    const auto& rows = static_cast<const Keywords::IKeywordListData&>(udq);
    std::vector<int> lines; // on which an operation begins a line
    int lastLine = 0;
    int openDefinition = 0; // the line of one without its "/"
    const auto close = [&] {
        if (openDefinition > 0)
            take({openDefinition, Log::Error, "The DEFINE of UDQ must end with a \"/\" on its line."});
        openDefinition = 0;
    };
    for (const Token& token : m_source.Tokens()) {
        if (token.line != lastLine) {
            close();
            const std::string word = Service::Uppercased(token.text);
            if (isOperation(word)) lines.push_back(token.line);
            if (word == "DEFINE") openDefinition = token.line;
        }
        if (token.isSlash) openDefinition = 0;
        lastLine = token.line;
    }
    close();
    std::size_t begun = 0;
    for (int i = 0; i < rows.GetElementCount(); ++i) {
        const auto& row = static_cast<const Keywords::IKeywordRecordData&>(rows.GetContainer(i));
        const int line = begun < lines.size() ? lines[begun] : m_keyword->GetLine();
        ++begun;
        const auto& expression = static_cast<const Keywords::IKeywordListData&>(row.GetContainer(2));
        const auto* operations = static_cast<const IKeywordOptionMD*>(row.GetRecordMD()->GetItemMD(0));
        const std::string_view operation =
            row.GetItem(0).HasValue() ? operations->GetOptionName(row.GetItem(0).GetOption()) : std::string_view();
        int depth = 0;
        bool isBroken = false; // one closes what none has opened
        for (int word = 0; word < expression.GetElementCount(); ++word) {
            const std::string_view text = expression.GetElement(word).GetString();
            if (isOperation(Service::Uppercased(text)) && begun < lines.size()) {
                take({line, Log::Error,
                      fmt::format("This row of UDQ goes on with the {} of line {}: is its \"/\" missing?", text,
                                  lines[begun])});
                ++begun;
            }
            if (operation == "UPDATE" && word == 0 && text != "ON" && text != "OFF" && text != "NEXT") {
                take({line, Log::Error,
                      fmt::format("\"{}\" is no way to UPDATE in UDQ. Must be one of ON, OFF, NEXT.", text)});
            }
            for (const char c : text) {
                depth += c == '(' ? 1 : c == ')' ? -1 : 0;
                isBroken = isBroken || depth < 0;
            }
        }
        if (operation == "DEFINE" && (depth != 0 || isBroken))
            take({line, Log::Error, "The parentheses in this row of UDQ don't match."});
    }
}

std::optional<TextCheck::Row> TextCheck::RowAhead(int line)
{
    if (m_keyword == nullptr) return std::nullopt;
    const IKeywordMD& shape = *m_keyword->GetSyntax()->GetMetaData();
    if (shape.GetType() != MDType::List || RowOf(shape) == nullptr) return std::nullopt;
    const std::size_t behind = TokensAt(line).first;
    const std::size_t begin = RowBegin(behind);
    const std::vector<Token>& tokens = m_source.Tokens();
    return begin < behind ? std::optional(Row{tokens[begin].line, tokens[behind - 1].line}) : std::nullopt;
}

/// The first token of a line, and the first one behind it.
std::pair<std::size_t, std::size_t> TextCheck::TokensAt(int line)
{
    const std::vector<Token>& tokens = m_source.Tokens();
    const auto begin =
        std::partition_point(tokens.begin(), tokens.end(), [line](const Token& token) { return token.line < line; });
    const auto end =
        std::partition_point(begin, tokens.end(), [line](const Token& token) { return token.line == line; });
    return {static_cast<std::size_t>(begin - tokens.begin()), static_cast<std::size_t>(end - tokens.begin())};
}

/// The first token of the row, or of the table, in which one stands.
std::size_t TextCheck::RowBegin(std::size_t token)
{
    const std::vector<std::size_t>& ends = m_source.RowEnds();
    const auto next = std::lower_bound(ends.begin(), ends.end(), token);
    return next == ends.begin() ? 0 : *std::prev(next) + 1;
}

std::string_view TextCheck::ItemAt(int line, std::string_view word, std::string_view wanted)
{
    if (m_keyword == nullptr || m_source.HasCommas()) return {};
    const IKeywordMD& shape = *m_keyword->GetSyntax()->GetMetaData();
    const IKeywordRecordMD* const columns = ColumnsOf(shape);
    const std::vector<Token>& tokens = m_source.Tokens();
    const auto [first, last] = TokensAt(line);
    const std::size_t begin = RowBegin(first);
    const std::vector<std::size_t>& ends = m_source.RowEnds();
    auto number = static_cast<std::size_t>(std::lower_bound(ends.begin(), ends.end(), begin) - ends.begin());
    const auto rowOf = [&] {
        if (columns != nullptr) return columns;
        const IKeywordRecordMD* const row = RowOf(shape);
        return row != nullptr ? row : RowOf(shape, number);
    };
    const IKeywordRecordMD* row = rowOf();
    long long item = 0;
    for (std::size_t at = begin; at < last; ++at) {
        const Token& token = tokens[at];
        if (token.isSlash) {
            item = 0;
            ++number;
            row = rowOf();
            continue;
        }
        if (row == nullptr) continue;
        if (columns != nullptr) item %= columns->GetItemCount();
        if (item >= row->GetItemCount()) continue;
        const int index = static_cast<int>(item);
        if (at >= first && token.text == word && IsWanted(*row->GetItemMD(index), wanted))
            return row->GetItemName(index);
        item += token.count;
    }
    return {};
}

int TextCheck::LineOfRecord(const DeckManager::IKeyword& keyword, int record)
{
    if (record < 0) return keyword.GetLine();
    // A keyword may have many faults.
    if (m_keyword != &keyword) {
        m_keyword = nullptr;
        if (!m_source.Read(keyword)) return keyword.GetLine();
        m_keyword = &keyword;
    }
    return LineOfRow(record);
}

int TextCheck::LineOfRow(int row)
{
    const std::vector<std::size_t>& ends = m_source.RowEnds();
    const auto place = static_cast<std::size_t>(row);
    return place < ends.size() ? m_source.Tokens()[ends[place]].line : m_keyword->GetLine();
}

/// What an item of RUNSPEC comes to that its keyword leaves out.
std::optional<int> TextCheck::DefaultOf(const std::string& expression) const
{
    const Source source = ParseSource(expression);
    if (source.record == nullptr || m_present.count(source.keyword) == 0) return std::nullopt;
    const IKeywordMD& item = *source.record->GetItemMD(source.item);
    if (item.GetType() != MDType::Integer) return std::nullopt;
    const std::string& text = static_cast<const Keywords::IKeywordItemMD&>(item).GetDefaultText(SimulatorType::Any);
    return text.empty() ? std::nullopt : std::optional(std::atoi(text.c_str()));
}

std::string TextCheck::SourceOf(const std::string& expression)
{
    if (expression == "context:COMPS") return "the number of components";
    const Source source = ParseSource(expression);
    if (source.keyword.empty()) return "the deck";
    if (source.record == nullptr) return source.keyword;
    return fmt::format("{} ({})", source.keyword, source.record->GetItemName(source.item));
}

std::optional<int> TextCheck::SizeOf(const std::string& expression)
{
    const auto known = m_sizes.find(expression);
    if (known != m_sizes.end()) return known->second;
    std::optional<int> size;
    // What can't be told is told where the data are read.
    const Service::LogEnabler silence(false);
    try {
        int value = 0;
        if (m_context.EvaluateIntegerExpr(expression, value)) size = value;
    } catch (const std::exception&) {
        size.reset();
    }
    if (!size) size = DefaultOf(expression);
    m_sizes.emplace(expression, size);
    return size;
}

} // namespace Deckman
