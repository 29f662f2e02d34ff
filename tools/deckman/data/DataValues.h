#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/IKeywordVariables.h>
#include <tarn/keywords/SimulatorType.h>
#include <tarn/keywords/Slot.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordData;
class IKeywordItemMD;
} // namespace Tarn::Fjel::Core::Keywords

namespace Deckman {

namespace Keywords = Tarn::Fjel::Core::Keywords;

/// What there is to know of a keyword's values besides its data tree.
struct DataReading
{
    const Keywords::IKeywordVariables* variables = nullptr; ///< references that stand in place of values; may be null
    bool fillsDefaults = false;                             ///< the catalogue's defaults go where no value stands
    Keywords::SimulatorType simulator = Keywords::SimulatorType::Any; ///< whose defaults
};

/// A value as text.
struct ValueText
{
    enum class Origin : unsigned char
    {
        None,     ///< there is no value: it was left to a default, or isn't there at all
        Deck,     ///< as the deck has it
        Default,  ///< filled in from the catalogue
        Variable, ///< a reference to a variable, which stands where a value would
    };
    Origin origin = Origin::None;
    bool isText = false; ///< a text, and no number or truth value
    std::string_view text;
};

/// Turns the values of a data tree into text, one after the other. Reals come with the shortest digits that read back
/// the same.
class ValueReader
{
public:
    enum class Form : unsigned char
    {
        Json,   ///< `true`, `240.0`; infinities and what is no number are texts
        People, ///< `YES`, `240`
    };

    ValueReader(const DataReading& reading, Form form) : m_reading(reading), m_form(form) {}

    /// The value at `index` of a record, a list of items, or a map. The text is good until the next call.
    ValueText Read(const Keywords::IKeywordData& container, int index);
    ValueText Real(double value);
    ValueText Integer(long long value);

    /// Some value of the container itself is a reference to a variable.
    bool HasVariables(const Keywords::IKeywordData& container);

private:
    const std::string* VariableAt(const Keywords::IKeywordData& container, int index);
    void NoteVariables(const Keywords::IKeywordData& container);
    ValueText FromSlot(const Keywords::ConstSlot& slot);
    ValueText FromDefault(const Keywords::IKeywordItemMD& md);
    ValueText YesNo(bool value) const;

    DataReading m_reading;
    Form m_form;
    std::string m_buffer;

    struct Reference
    {
        int index;
        const std::string* text;
    };
    const Keywords::IKeywordData* m_noted = nullptr; // whose references these are, by index
    std::vector<Reference> m_references;
};

} // namespace Deckman
