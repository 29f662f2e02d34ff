#pragma once

#include <string>
#include <string_view>

#include <deckmanager/DataTextEditor.h>
#include <tarn/keywords/MDType.h>
#include <tarn/keywords/Slot.h>

namespace Tarn::Fjel::Core::DeckManager {

/// A value as the token of an item of a certain kind, and as what must come of it when it is read.
class ItemToken
{
public:
    /// How tokens are cut where the item stands.
    struct Surroundings
    {
        bool allowsCommas = false;    ///< a comma is a character like any other
        bool isExpression = false;    ///< operators and numbers stand bare
        bool allowsVariables = false; ///< `$NAME` is a reference
    };

    /// False, with a sentence in `reason`, when the item can't have the value.
    static bool Make(const DataTextEditor::Value& value, const Keywords::IKeywordMD& md,
                     const Surroundings& surroundings, ItemToken& token, std::string& reason);

    /// The entry of a map is a whole number.
    static bool MakeEntry(const DataTextEditor::Value& value, ItemToken& token, std::string& reason);

    const std::string& Text() const { return m_text; }
    bool IsDefault() const { return m_isDefault; }
    bool IsVariable() const { return m_isVariable; }
    int Integer() const { return m_integer; }
    const std::string& String() const { return m_string; } ///< also of a reference

    /// The token in quotes where it may have them, else as it is.
    std::string Quoted() const;

    /// The slot holds this value. A reference and a default leave it without one.
    bool IsHeldBy(const Keywords::ConstSlot& slot) const;

private:
    bool MakeNumber(const DataTextEditor::Value& value, std::string_view text, std::string& reason);
    bool MakeWord(std::string_view word, const Surroundings& surroundings, bool quoted);

    Keywords::MDType m_kind = Keywords::MDType::None;
    std::string m_text;
    bool m_isDefault = false;
    bool m_isVariable = false;
    bool m_foldsCase = false;
    int m_integer = 0; ///< also the option, and yes or no
    double m_real = 0.0;
    std::string m_string;
};

} // namespace Tarn::Fjel::Core::DeckManager
