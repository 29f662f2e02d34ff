#include "editing/DataEdits.h"

#include <algorithm>
#include <charconv>
#include <vector>

#include <deckmanager/DeckUtils.h>
#include <deckmanager/IDeckKeywordsEditor.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordText.h>
#include <deckmanager/LineReaderUtil.h>
#include <deckmanager/ReadKeywordData.h>
#include <deckmanager/VeldaneDeckInfo.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordListMD.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordUtils.h>
#include <tarn/service/Log.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "session/InputText.h"

namespace Deckman {

using DeckManager::DataTextEditor;
using DeckManager::IKeyword;
using Keywords::MDType;
using Service::Log;
using Outcome = DataTextEditor::Outcome;
using Value = DataTextEditor::Value;

namespace {

/// A record may repeat a value so often, and no more.
constexpr int mostRepeats = 1000;

std::string TextOf(KeywordEdits& run, const IKeyword& keyword)
{
    const std::shared_ptr<std::string> text = run.Session().Keywords().GetDataText(&keyword);
    if (!text) run.Refuse(keyword, fmt::format("{} has no data, and so no items.", keyword.GetName()));
    return *text;
}

DataTextEditor::Path AsPath(const std::vector<int>& numbers)
{
    return {numbers.begin(), numbers.end()};
}

/// A look into the data of a keyword; a path that leads nowhere is told with the keyword's place.
template <class Look>
auto InData(const KeywordEdits& run, const IKeyword& keyword, const Look& look)
{
    try {
        return look();
    } catch (const Failure& failure) {
        if (!failure.Place().empty() || keyword.GetLine() <= 0) throw;
        throw Failure(failure.Status(), failure.what(), run.Session().PlaceOf(keyword));
    }
}

/// What is wrong with the data is told by whoever reads all of them; an edit concerns one item.
const Keywords::IKeywordData& DataOf(KeywordEdits& run, const IKeyword& keyword)
{
    const Messages::Diversion diversion(run.Session().Log(), [](const Messages::Message&) {});
    const Keywords::IKeywordData* data = nullptr;
    try {
        data = run.Session().Keywords().GetKeywordData(&keyword);
    } catch (const Service::Exception& exception) {
        run.Refuse(keyword, exception.what());
    }
    if (data == nullptr) run.Refuse(keyword, fmt::format("{} has no data, and so no items.", keyword.GetName()));
    return *data;
}

DataTextEditor EditorFor(const KeywordEdits& run, const IKeyword& keyword)
{
    return DataTextEditor::ForKeyword(run.Session().Keywords(), keyword);
}

/// The first message of a read of the keyword's data that is at least as severe; empty for none.
std::string TroubleIn(const KeywordEdits& run, const IKeyword& keyword, int severity)
{
    std::string first;
    const Messages::Diversion diversion(run.Session().Log(), [&](const Messages::Message& message) {
        if (message.severity >= severity && first.empty()) first = message.text;
    });
    try {
        DeckManager::ReadKeywordData(run.Session().Keywords(), keyword);
    } catch (const Service::Exception& exception) {
        if (severity < Log::Error && first.empty()) first = exception.what();
    }
    return first;
}

/// A name that UDQ may have defined in the place of a number.
bool IsAboutQuantity(std::string_view message)
{
    constexpr std::string_view closing = "\" is not valid. Must be a real number.";
    if (!message.ends_with(closing)) return false;
    message.remove_suffix(closing.size());
    const std::string_view value = message.substr(message.rfind('"') + 1);
    return value.size() > 2 && value.size() <= 8 && Service::IsAlpha(value[0]) && (value[1] == 'U' || value[1] == 'u');
}

/// What can't be done in the text is done to the data, and the keyword is written from these.
void SetInData(KeywordEdits& run, const KeywordEdits::Target& target, const DataTextEditor::Path& path,
               const Value& value, const std::string& reason)
{
    const IKeyword& keyword = *target.keyword;
    const DeckManager::IDeckKeywords& keywords = run.Session().Keywords();
    if (keywords.HasVariables(&keyword)) run.Refuse(keyword, reason);
    if (const std::string trouble = TroubleIn(run, keyword, Log::Warning); !trouble.empty())
        run.Refuse(keyword, fmt::format("{}\nIts data cannot be written afresh either: {}", reason, trouble));
    const Keywords::IKeywordData* data = keywords.GetKeywordData(&keyword);
    run.Log().Touch(keyword);
    const bool isSet = data != nullptr && run.Editor().SetData(target.position, data->CloneSafely());
    if (!isSet) run.Refuse(keyword, reason);
    const std::string afresh(DeckManager::KeywordText(keyword).Data());
    const DataTextEditor::Result result = EditorFor(run, keyword).Set(afresh, path, value);
    if (!result.IsDone() || !run.Editor().SetDataText(target.position, result.text)) run.Refuse(keyword, reason);
    run.Session().Log().Warning(
        run.Session().PlaceOf(keyword),
        fmt::format("The text of {} was written afresh from its data, and comments among them are gone. {}",
                    keyword.GetName(), reason));
}

// --- a further element ---------------------------------------------------------------------------

/// WHERE[+]: behind the last element of a list; WHERE[+2]: ahead of the element 2.
struct Addition
{
    std::string list;
    int index = -1;
};

std::optional<Addition> ParseAddition(const std::string& where)
{
    const std::size_t begin = where.rfind("[+");
    if (begin == std::string::npos || !where.ends_with(']')) return std::nullopt;
    const std::string_view digits = std::string_view(where).substr(begin + 2, where.size() - begin - 3);
    Addition addition{where.substr(0, begin)};
    if (digits.empty()) return addition;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), addition.index);
    if (error != std::errc() || end != digits.data() + digits.size() || !Service::AllDigits(digits))
        return std::nullopt;
    return addition;
}

/// Takes the first word of a record's text; one in quotes is one.
std::string TakeWord(std::string_view& text)
{
    text = Service::TrimmedLeft(text);
    std::size_t end = 0;
    for (bool quoted = false; end < text.size(); ++end) {
        if (text[end] == '\'') quoted = !quoted;
        if (!quoted && Service::AllBlanks(text.substr(end, 1))) break;
    }
    std::string word(text.substr(0, end));
    text.remove_prefix(end);
    return word;
}

/// The values of a record as a deck would have it: defaults and repeats spread out, the end left away.
std::vector<Value> ValuesOf(std::string_view text)
{
    std::vector<Value> values;
    while (!Service::AllBlanks(text)) {
        const std::string word = TakeWord(text);
        if (word == "/") {
            if (!Service::AllBlanks(text)) throw Failure(WrongUsage, "VALUE goes on behind the end of a record.");
            break;
        }
        const std::size_t star = word.find('*');
        int count = 1;
        std::string_view value = word;
        if (star != std::string::npos && star > 0 && Service::AllDigits(std::string_view(word).substr(0, star))) {
            if (std::from_chars(word.data(), word.data() + star, count).ec != std::errc()) count = mostRepeats + 1;
            value.remove_prefix(star + 1);
            if (value.empty()) value = "1*";
        }
        if (count < 1 || count > mostRepeats)
            throw Failure(WrongUsage, fmt::format("{} repeats a value too often for one record.", word));
        values.insert(values.end(), static_cast<std::size_t>(count), Value::Text(std::string(value)));
    }
    return values;
}

/// A record of an expression, as those of UDQ, is more than its items.
DataTextEditor::Result WithHint(DataTextEditor::Result result)
{
    if (result.outcome == Outcome::BadValue && result.reason.ends_with("can not stand for a list or a record."))
        result.reason += " --text sets all data of the keyword.";
    return result;
}

void AddElement(KeywordEdits& run, const Addition& addition, const Options& options)
{
    const KeywordEdits::Target target = run.Find(addition.list, options);
    const IKeyword& keyword = *target.keyword;
    const std::string text = TextOf(run, keyword);
    const Keywords::IKeywordData& data = DataOf(run, keyword);
    const ItemPath::Item item = InData(run, keyword, [&] { return target.items.Find(data, keyword.GetName()); });
    if (!item.IsContainer() || item.container->GetType() != MDType::List)
        run.Refuse(keyword, fmt::format("{} is no list, to which something could be added.", addition.list));
    const MDType element = static_cast<const Keywords::IKeywordListData&>(*item.container).GetElementType();
    const DataTextEditor::Path path = AsPath(target.items.Numbers(data, keyword.GetName()));
    const DataTextEditor editor = EditorFor(run, keyword);
    if (element == MDType::Record)
        TakeText(run, target, WithHint(editor.InsertRecord(text, path, addition.index, ValuesOf(options.value))));
    else
        TakeText(run, target, editor.InsertElement(text, path, addition.index, Value::Text(options.value)));
}

// --- the whole text ------------------------------------------------------------------------------

/// A text that begins with the keyword's own line, as `show` prints it, without that; and without the marks of a
/// suppressed keyword.
std::string WithoutKeywordLine(std::string text, const std::string& name)
{
    const std::string_view mark = DeckManager::VeldaneDeckInfo::SUPPRESS_MARKER;
    const bool isMarked = text.starts_with(mark);
    std::string_view line = std::string_view(text).substr(0, text.find('\n'));
    if (isMarked) line.remove_prefix(mark.size());
    const bool isOwn = Service::NoCaseStringEqual(line.substr(0, line.find_first_of(" \t\r")), name);
    if (!isOwn) return text;
    if (isMarked) DeckManager::LineReaderUtil::ActivateLines(text);
    const std::size_t end = text.find('\n');
    return end != std::string::npos ? text.substr(end + 1) : text;
}

/// The keyword whose line a text begins with, as the one that another keyword's `show` prints does. Words without data
/// are names of groups and phases too.
std::string KeywordAtHead(std::string_view text, Keywords::SectionType section)
{
    std::string_view line = text;
    while (!text.empty()) {
        line = text.substr(0, text.find('\n'));
        if (!Service::AllBlanks(line) && !line.starts_with("--")) break;
        text.remove_prefix(std::min(text.size(), line.size() + 1));
    }
    const auto lines = DeckManager::DeckUtils::findKeywordLines(text, section);
    const bool isFirst = !lines.empty() && lines.front().begin == 0 && lines.front().syntax != nullptr;
    const bool isAlone = isFirst && Service::NoCaseStringEqual(Service::TrimmedRight(line), lines.front().name);
    return isAlone && lines.front().syntax->GetMetaData() != nullptr ? lines.front().name : std::string();
}

void SetText(KeywordEdits& run, const Options& options)
{
    const KeywordEdits::Target target = run.FindKeyword(options.where, options, "set --text");
    const IKeyword& keyword = *target.keyword;
    const std::string text = WithoutKeywordLine(GivenText(options), keyword.GetName());
    if (Service::AllBlanks(text)) throw Failure(WrongUsage, "The text of the data is expected, and there is none.");
    const std::shared_ptr<std::string> before = run.Session().Keywords().GetDataText(&keyword);
    if (before && *before == text) return;
    const Keywords::IKeywordMD* metadata = keyword.GetSyntax()->GetMetaData();
    const bool isFree = metadata == nullptr || metadata->GetType() == MDType::RawText;
    if (const std::string other = isFree ? std::string() : KeywordAtHead(text, target.section); !other.empty()) {
        run.Refuse(keyword, fmt::format("The text begins with {}, which is another keyword; as part of the data of {} "
                                        "it is to be indented, or in quotes.",
                                        other, keyword.GetName()));
    }
    run.Log().Touch(keyword);
    if (!run.Editor().SetDataText(target.position, text))
        run.Refuse(keyword, fmt::format("{} cannot have this text for its data.", keyword.GetName()));
    RequireReadable(run, keyword);
    TellWarnings(run, keyword, run.Session().PlaceOf(keyword));
}

} // namespace

std::string GivenText(const Options& options)
{
    const bool isInput = options.text == "-";
    std::string text = isInput ? ReadInputText("-") : options.text;
    if (isInput && text.empty()) throw Failure(WrongUsage, "A text is expected, and there is none.", "standard input");
    while (text.ends_with('\n'))
        text.pop_back();
    return text;
}

DataTextEditor::Path PathTo(KeywordEdits& run, const KeywordEdits::Target& target)
{
    const IKeyword& keyword = *target.keyword;
    const Keywords::IKeywordData& data = DataOf(run, keyword);
    return AsPath(InData(run, keyword, [&] { return target.items.Numbers(data, keyword.GetName()); }));
}

void TakeText(KeywordEdits& run, const KeywordEdits::Target& target, const DataTextEditor::Result& result)
{
    const IKeyword& keyword = *target.keyword;
    if (!result.IsDone()) run.Refuse(keyword, result.reason);
    if (result.outcome == Outcome::Unchanged) return;
    run.Log().Touch(keyword);
    if (!run.Editor().SetDataText(target.position, result.text))
        run.Refuse(keyword, fmt::format("{} cannot be edited here.", keyword.GetName()));
}

void RequireReadable(const KeywordEdits& run, const IKeyword& keyword)
{
    const std::string trouble = TroubleIn(run, keyword, Log::Error);
    if (!trouble.empty() && !IsAboutQuantity(trouble)) run.Refuse(keyword, trouble);
    const bool isInclude = keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::Include;
    const DeckManager::IDeckKeywords& keywords = run.Session().Keywords();
    if (isInclude && !keywords.HasVariables(&keyword) &&
        !Keywords::DataAccessUtils::GetINCLUDEFileName(keywords.GetKeywordData(&keyword)))
        run.Refuse(keyword, "This INCLUDE names no file.");
}

void TellWarnings(const KeywordEdits& run, const IKeyword& keyword, const std::string& place)
{
    if (keyword.GetSyntax()->GetKind() == Keywords::KeywordKind::Include) return; // the library reads it by itself
    std::vector<std::string> warnings;
    {
        const Messages::Diversion diversion(run.Session().Log(), [&](const Messages::Message& message) {
            // A missing end is written all the same.
            const bool isOfEnd = message.text.ends_with("properly terminated");
            if (message.severity == Log::Warning && !isOfEnd) warnings.emplace_back(message.text);
        });
        try {
            DeckManager::ReadKeywordData(run.Session().Keywords(), keyword);
        } catch (const Service::Exception&) {
            return;
        }
    }
    for (const std::string& warning : warnings)
        run.Session().Log().Warning(place, warning);
}

void EditSet(KeywordEdits& run, const Options& options)
{
    if (options.hasText) {
        SetText(run, options);
        return;
    }
    if (const std::optional<Addition> addition = ParseAddition(options.where)) {
        AddElement(run, *addition, options);
        return;
    }
    const KeywordEdits::Target target = run.Find(options.where, options);
    if (target.items.IsEmpty()) {
        throw Failure(WrongUsage, "WHERE names no item; TABDIMS.3 does, and --text sets all data of a keyword.",
                      options.where);
    }
    const std::string text = TextOf(run, *target.keyword);
    // What the metadata tell needs no read of all data: they may be an array of millions.
    const Keywords::IKeywordMD* metadata = target.keyword->GetSyntax()->GetMetaData();
    const std::optional<std::vector<int>> numbers =
        metadata != nullptr ? target.items.Numbers(*metadata) : std::nullopt;
    DataTextEditor::Path path = numbers ? AsPath(*numbers) : PathTo(run, target);
    const Value value = Value::Text(options.value);
    const DataTextEditor editor = EditorFor(run, *target.keyword);
    DataTextEditor::Result result = editor.Set(text, path, value);
    if (numbers && result.outcome == Outcome::NoSuchItem) path = PathTo(run, target); // it tells what there is
    if (result.outcome == Outcome::NotInText)
        SetInData(run, target, path, value, result.reason);
    else
        TakeText(run, target, result);
}

} // namespace Deckman
