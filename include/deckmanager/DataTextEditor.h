#pragma once

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <deckmanager/Context.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class IDeckKeywords;
class IKeyword;

/// Changes single items of a keyword's data in the text itself: the item's token is replaced where it stands, and
/// comments, layout, line breaks and all other tokens stay as they are.
///
/// A repeat is split around the item, defaults ahead of an item that the text leaves out are filled in, and a default
/// is written as "1*". A line whose data would pass column 132 is broken ahead of that column, and no other line is.
/// Every result has been read again: its data are those of the old text with the one change.
///
/// Texts are what `IKeyword` calls data text, the lines behind the keyword's own. They are neither kept nor changed.
/// What can't be done in the text is refused; it is then for the caller to change the data tree. Nothing is thrown for
/// bad texts, paths or values. One thread at a time.
class DataTextEditor
{
public:
    /// A step of a path: an item of a record, an element of a list or an entry of a map by its number, from 0; or an
    /// entry of a map, or an item of a record, by name and without regard to case.
    struct Step
    {
        Step(int number) : index(number) {}
        Step(std::string word) : name(std::move(word)) {}
        Step(const char* word) : name(word) {}

        int index = -1; ///< -1: by name
        std::string name;
    };

    /// The way from the data to an item, or to the record or list that is meant.
    using Path = std::vector<Step>;

    /// What an item is to hold.
    class Value
    {
    public:
        enum class Kind
        {
            Default, ///< left to its default
            YesNo,
            Integer,
            Real,
            String, ///< a string, the name of an option, or a rest of a line, without quotes
            Text    ///< as a user would write it; converted by the item's kind
        };

        static Value Default() { return Value(Kind::Default); }
        static Value YesNo(bool value);
        static Value Integer(int value);
        static Value Real(double value);
        static Value String(std::string value);
        /// "1*" is the default. In quotes it is a string whatever stands there. Where references to variables are
        /// allowed, one counts as a value of any kind.
        static Value Text(std::string text);

        Kind GetKind() const { return m_kind; }
        int GetInteger() const { return m_integer; } ///< also of yes (1) and no (0)
        double GetReal() const { return m_real; }
        const std::string& GetString() const { return m_string; } ///< also of a text

    private:
        explicit Value(Kind kind) : m_kind(kind) {}

        Kind m_kind;
        int m_integer = 0;
        double m_real = 0.0;
        std::string m_string;
    };

    enum class Outcome
    {
        Done,      ///< the text has the change
        Unchanged, ///< it says that already
        NoSuchItem,
        BadValue, ///< the value is none that the item can have
        NotInText ///< the change can't be made in the text; the data tree may be able to
    };

    struct Result
    {
        Outcome outcome = Outcome::NotInText;
        std::string text;   ///< the new text; empty unless done or unchanged
        std::string reason; ///< a sentence on why not; empty when done or unchanged

        bool IsDone() const { return outcome == Outcome::Done || outcome == Outcome::Unchanged; }
    };

    /// What the meaning of a text depends on beside the syntax.
    struct Settings
    {
        const IKeyword* keyword = nullptr; ///< the keyword whose text it is; null for none. Not owned
        Context context;                   ///< answers sizes that other keywords give
        bool allowsVariables = false;      ///< `$NAME` is a reference
    };

    /// For a text that stands in no deck. A size that only a deck can tell is a reason to refuse.
    explicit DataTextEditor(const Keywords::IKeywordSyntax& syntax, std::string name = {});
    DataTextEditor(const Keywords::IKeywordSyntax& syntax, std::string name, Settings settings);
    /// For the text of that keyword, which must stand in the deck and outlive the editor, as must the deck.
    static DataTextEditor ForKeyword(const IDeckKeywords& deck, const IKeyword& keyword);

    /// Sets the item at `path`.
    Result Set(std::string_view text, const Path& path, const Value& value) const;

    /// Puts an element into the list of items at `list`, ahead of the element `index`; behind the last when that is -1
    /// or the number of elements.
    Result InsertElement(std::string_view text, const Path& list, int index, const Value& value) const;

    /// Puts a record into the list of records at `list`, placed likewise, on a line of its own, in the manner of the
    /// record beside it. `values` are those of its first items; the others are left to their defaults.
    Result InsertRecord(std::string_view text, const Path& list, int index, const std::vector<Value>& values) const;

    /// Takes the element or record at `path` out of its list. Lines that held nothing but the record go; comments and
    /// blank lines between them stay.
    Result Remove(std::string_view text, const Path& path) const;

private:
    const Keywords::IKeywordSyntax* m_syntax;
    std::string m_name;
    Settings m_settings;
};

} // namespace Tarn::Fjel::Core::DeckManager
