// Random items of random keywords of the catalogue, in texts with comments and odd layout, are changed in the text; the
// new text reads as the old tree with that one slot changed.

#include <set>

#include <rapidcheck/gtest.h>

#include <deckmanager/DataTextEditor.h>

#include "tests/keywords/TreeMaker.h"

namespace {

using namespace TreeMaking;
using DeckManager::DataTextEditor;
using Path = DataTextEditor::Path;
using Value = DataTextEditor::Value;

/// A place in a tree that holds a single value.
struct Place
{
    Path path;
    IKeywordData* container = nullptr;
    int index = -1;
};

class Editing
{
public:
    Editing(std::uint64_t seed, const DeckManager::Context& context) : m_random(seed), m_context(context) {}

    /// Empty unless an edit went wrong.
    std::string Run(const Keywords::IKeywordSyntax& syntax)
    {
        const DataReading::LooseKeyword keyword(&syntax);
        const std::string plain =
            OneIn(3) && !syntax.GetExampleText().empty() ? std::string(syntax.GetExampleText()) : GeneratedText(syntax);
        std::string text = Decorated(plain);
        const auto read = [&](const std::string& of) { return DataReading::ReadText(keyword, of, false, m_context); };
        DataReading::Outcome before = read(text);
        if (before.tree != read(plain).tree) {
            text = plain; // a remark is text there
            before = read(text);
        }
        const Place place = Choose(*before.data);
        if (!place.container) return {};
        const Value value = ValueFor(place);
        DataTextEditor::Settings settings;
        settings.context = m_context;
        const DataTextEditor editor(syntax, syntax.GetName(), settings);
        const DataTextEditor::Result result = editor.Set(text, place.path, value);
        if (result.outcome == DataTextEditor::Outcome::NotInText) {
            m_refused.insert(
                fmt::format("{}\n{}\n{} <- {}", result.reason, text, Shown(place.path), value.GetString()));
            ++m_refusals;
            return {};
        }
        if (!result.IsDone()) return fmt::format("{}: {}\n{}", syntax.GetName(), result.reason, text);
        ++m_edits;
        Apply(place, value);
        const std::string expected = DataReading::Describe(*before.data);
        const DataReading::Outcome after = read(result.text);
        if (after.tree != expected || Remarks(result.text) != Remarks(text)) {
            return fmt::format("{}\n{}\nbecame\n{}\nexpected {}\nread     {}", syntax.GetName(), text, result.text,
                               expected, after.tree);
        }
        const bool isLine = place.container->GetType() == MDType::Record &&
                            Keywords::ConstSlot(*place.container, place.index).Kind() == MDType::RestOfLine;
        return isLine || OtherTokensStay(text, result.text)
                   ? std::string()
                   : fmt::format("{}\n{}\nbecame\n{}", syntax.GetName(), text, result.text);
    }

    /// The same for a record or element that goes, or an element that comes at a list's end. Lists of a given size take
    /// neither.
    std::string RunListEdit(const Keywords::IKeywordSyntax& syntax)
    {
        const DataReading::LooseKeyword keyword(&syntax);
        const std::string text = Decorated(GeneratedText(syntax));
        const auto read = [&](const std::string& of) { return DataReading::ReadText(keyword, of, false, m_context); };
        DataReading::Outcome before = read(text);
        Place place = Choose(*before.data);
        DataTextEditor::Settings settings;
        settings.context = m_context;
        const DataTextEditor editor(syntax, syntax.GetName(), settings);
        DataTextEditor::Result result;
        if (place.container && place.container->GetType() == MDType::List && OneIn(2)) {
            auto& list = static_cast<IKeywordListData&>(*place.container);
            const Value value = ValueFor(place);
            place.path.pop_back();
            result = editor.InsertElement(text, place.path, -1, value);
            if (value.GetKind() == Value::Kind::Default) {
                list.AppendDefaults(1);
            } else {
                list.AddElement();
                place.index = list.GetElementCount() - 1;
                Apply(place, value);
            }
        } else {
            if (place.container && place.container->GetType() != MDType::List) {
                // The innermost record that is an element.
                IKeywordData* at = before.data.get();
                std::size_t kept = 0;
                place.container = nullptr;
                for (std::size_t i = 0; i + 1 < place.path.size(); ++i) {
                    const int index = place.path[i].index;
                    if (at->GetType() == MDType::List) {
                        place.container = at;
                        place.index = index;
                        kept = i + 1;
                        at = &static_cast<IKeywordListData&>(*at).GetContainer(index);
                    } else {
                        at = Keywords::Slot(*at, index).GetContainer();
                    }
                }
                place.path.erase(place.path.begin() + static_cast<std::ptrdiff_t>(kept), place.path.end());
            }
            if (!place.container) return {};
            result = editor.Remove(text, place.path);
            static_cast<IKeywordListData*>(place.container)->RemoveElement(place.index);
        }
        if (!result.IsDone()) {
            ++m_listRefusals;
            return {};
        }
        ++m_listEdits;
        const std::string expected = DataReading::Describe(*before.data);
        const DataReading::Outcome after = read(result.text);
        if (after.tree == expected) return {};
        return fmt::format("{}\n{}\nbecame\n{}\nexpected {}\nread     {}", syntax.GetName(), text, result.text,
                           expected, after.tree);
    }

    int ListEdits() const { return m_listEdits; }
    int ListRefusals() const { return m_listRefusals; }
    int Edits() const { return m_edits; }
    int Refusals() const { return m_refusals; }
    const std::set<std::string>& Refused() const { return m_refused; }

private:
    int UpTo(int most) { return std::uniform_int_distribution<int>(0, most)(m_random); }
    bool OneIn(int n) { return UpTo(n - 1) == 0; }

    std::string GeneratedText(const Keywords::IKeywordSyntax& syntax)
    {
        const auto tree = Keywords::KeywordDataFactory::Instance().ConstructSafely(syntax);
        TreeMaker(m_random(), m_context).Fill(syntax, *tree);
        return WriteTree(*tree);
    }

    /// Comments behind data and between lines, blank lines, tabs at line heads, either line end.
    std::string Decorated(const std::string& plain)
    {
        const bool crLf = OneIn(4);
        std::string text;
        for (std::size_t at = 0; at < plain.size();) {
            std::size_t end = std::min(plain.find('\n', at), plain.size());
            std::string line = plain.substr(at, end - at);
            if (OneIn(6)) text += OneIn(2) ? "-- a remark\n" : "\n";
            if (OneIn(6) && !line.empty() && line.front() == ' ') line.front() = '\t';
            if (OneIn(4) && line.size() < 110) line += OneIn(2) ? " -- told / here" : "-- 'close";
            text += line + "\n";
            at = end + 1;
        }
        if (OneIn(5) && !text.empty()) text.pop_back();
        if (!crLf) return text;
        std::string converted;
        for (const char c : text)
            converted += c == '\n' ? std::string("\r\n") : std::string(1, c);
        return converted;
    }

    Place Choose(IKeywordData& root)
    {
        Place place;
        IKeywordData* at = &root;
        for (;;) {
            int count = 0;
            bool ofItems = true;
            if (at->GetType() == MDType::List) {
                auto& list = static_cast<IKeywordListData&>(*at);
                count = list.GetElementCount();
                ofItems = Keywords::KeywordUtils::IsItemMDType(list.GetElementType());
            } else if (at->GetType() == MDType::Record) {
                count = static_cast<IKeywordRecordData&>(*at).GetItemCount();
            } else if (at->GetType() == MDType::Map) {
                count = static_cast<Keywords::IKeywordMapData&>(*at).GetEntryCount();
            }
            if (count == 0) return {};
            const int index = UpTo(count - 1);
            place.path.push_back(index);
            if (at->GetType() == MDType::Record) ofItems = Keywords::Slot(*at, index).GetContainer() == nullptr;
            if (ofItems) {
                place.container = at;
                place.index = index;
                return place;
            }
            at = at->GetType() == MDType::List ? &static_cast<IKeywordListData&>(*at).GetContainer(index)
                                               : Keywords::Slot(*at, index).GetContainer();
        }
    }

    Value ValueFor(const Place& place)
    {
        if (place.container->GetType() == MDType::Map) return OneIn(4) ? Value::Default() : Value::Integer(1 + UpTo(5));
        const Keywords::ConstSlot slot(*place.container, place.index);
        const bool mayDefault =
            place.container->GetType() == MDType::Record
                ? slot.Kind() != MDType::RestOfLine
                : static_cast<IKeywordListData*>(place.container)->GetListMD()->AllowsDefaultElements();
        if (mayDefault && OneIn(5)) return Value::Default();
        switch (slot.Kind()) {
        case MDType::YesNo:
            return Value::YesNo(OneIn(2));
        case MDType::Option: {
            const auto& md = static_cast<const Keywords::IKeywordOptionMD&>(*slot.GetMD());
            return Value::String(md.GetOptionName(UpTo(md.GetOptionCount() - 1)));
        }
        case MDType::Integer:
            return Value::Integer(UpTo(2000) - 1000);
        case MDType::Real:
            return Value::Real(OneIn(3) ? UpTo(100) : UpTo(1000000) / 997.0);
        default:
            static const char* const words[] = {"W", "A LONGER NAME", "B,C", "D*", "9LIVES", "X-Y", "E--F", "PORO"};
            return Value::String(words[UpTo(7)]);
        }
    }

    static void Apply(const Place& place, const Value& value)
    {
        if (place.container->GetType() == MDType::Map) {
            static_cast<Keywords::IKeywordMapData*>(place.container)
                ->SetEntry(place.index, value.GetKind() == Value::Kind::Default ? Keywords::UnsetValue::MapEntry
                                                                                : value.GetInteger());
            return;
        }
        Keywords::Slot slot(*place.container, place.index);
        if (value.GetKind() == Value::Kind::Default) {
            slot.SetUnset();
            if (place.container->GetType() == MDType::List)
                static_cast<IKeywordListData*>(place.container)->SetElementDefaulted(place.index, true);
            return;
        }
        std::string reason;
        switch (slot.Kind()) {
        case MDType::YesNo:
            return slot.SetYesNo(static_cast<signed char>(value.GetInteger()));
        case MDType::Option:
            return slot.SetOption(
                static_cast<const Keywords::IKeywordOptionMD*>(slot.GetMD())->FindOption(value.GetString(), reason));
        case MDType::Integer:
            return slot.SetInteger(value.GetInteger());
        case MDType::Real:
            return slot.SetReal(value.GetReal());
        default:
            return slot.SetString(value.GetString());
        }
    }

    static int Remarks(const std::string& text)
    {
        int count = 0;
        for (const char* mark : {"-- a remark", "-- told / here", "-- 'close"}) {
            for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1))
                ++count;
        }
        return count;
    }

    /// The tokens and the remarks. A remark may stand close behind a token, and blanks in quotes are part of theirs.
    static std::vector<std::string_view> Words(std::string_view text)
    {
        constexpr std::string_view blanks = " \t\r\n";
        std::vector<std::string_view> words;
        for (std::size_t at = text.find_first_not_of(blanks); at != text.npos;) {
            std::size_t end = at;
            if (text.substr(at, 2) == "--") {
                end = std::min(text.find_first_of("\r\n", at), text.size());
            } else {
                for (bool isQuoted = false; end < text.size(); ++end) {
                    if (text[end] == '\'') isQuoted = !isQuoted;
                    if (!isQuoted && (blanks.find(text[end]) != blanks.npos || text.substr(end, 2) == "--")) break;
                }
            }
            words.push_back(text.substr(at, end - at));
            at = text.find_first_not_of(blanks, end);
        }
        return words;
    }

    /// At most one token of the old text is another, or has gone; the others are there in their order.
    static bool OtherTokensStay(const std::string& before, const std::string& after)
    {
        const auto old = Words(before);
        const auto now = Words(after);
        const auto [from, unused] = std::mismatch(old.begin(), old.end(), now.begin(), now.end());
        const auto most = std::min(old.size(), now.size()) - static_cast<std::size_t>(from - old.begin());
        std::size_t tail = 0;
        while (tail < most && old[old.size() - 1 - tail] == now[now.size() - 1 - tail])
            ++tail;
        return static_cast<std::size_t>(old.end() - from) - tail <= 1;
    }

    static std::string Shown(const Path& path)
    {
        std::string text;
        for (const auto& step : path)
            text += fmt::format("[{}]", step.index);
        return text;
    }

    std::mt19937_64 m_random;
    const DeckManager::Context& m_context;
    int m_edits = 0;
    int m_refusals = 0;
    int m_listEdits = 0;
    int m_listRefusals = 0;
    std::set<std::string> m_refused;
};

/// Hands on every sixteenth keyword that has data in items, another sixteenth for each seed; what comes back is a
/// fault.
template <class Edit>
void ForASixteenth(std::uint64_t seed, const Edit& edit)
{
    std::size_t index = seed % 16;
    for (const auto* const syntax : DeckManager::Environment::Instance().GetSyntaxTable()->GetSyntaxes()) {
        if (!syntax->GetMetaData() || syntax->GetMetaData()->GetType() == MDType::RawText || ++index % 16 != 0)
            continue;
        const std::string difference = edit(*syntax);
        if (!difference.empty()) RC_FAIL(difference);
    }
}

TEST(DataTextEditorProperty, OneSlotOfAnyKeyword)
{
    const SizedDeck deck;
    int edits = 0;
    int refusals = 0;
    std::set<std::string> refused;
    EXPECT_TRUE(rc::check("one slot changes, all else stays", [&] {
        const auto seed = *rc::gen::arbitrary<std::uint64_t>();
        Editing editing(seed, deck.GetContext());
        ForASixteenth(seed, [&](const Keywords::IKeywordSyntax& syntax) { return editing.Run(syntax); });
        edits += editing.Edits();
        refusals += editing.Refusals();
        refused.insert(editing.Refused().begin(), editing.Refused().end());
    }));
    // What the text can't take is rare: an option that changes what follows, a row's count in a table.
    EXPECT_GT(edits, 200 * refusals) << fmt::format("{}", fmt::join(refused, "\n"));
}

TEST(DataTextEditorProperty, ElementsComeAndGo)
{
    const SizedDeck deck;
    int edits = 0;
    int refusals = 0;
    EXPECT_TRUE(rc::check("one element comes or goes, all else stays", [&] {
        const auto seed = *rc::gen::arbitrary<std::uint64_t>();
        Editing editing(seed, deck.GetContext());
        ForASixteenth(seed, [&](const Keywords::IKeywordSyntax& syntax) { return editing.RunListEdit(syntax); });
        edits += editing.ListEdits();
        refusals += editing.ListRefusals();
    }));
    EXPECT_GT(edits, 2 * refusals) << refusals;
}

} // namespace
