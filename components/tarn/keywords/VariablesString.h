#pragma once

#include <string>
#include <string_view>

namespace Tarn::Fjel::Core::Keywords {

/// A text that refers to variables, kept as it stands.
///
/// A reference is "$" followed by a letter or "_" and then letters, digits and "_"; or the same name as "${NAME}".
class VariablesString
{
public:
    VariablesString() = default;
    explicit VariablesString(std::string_view text) : m_text(text) {}

    /// The text holds a reference. What stands behind a comment marker of its line doesn't count; the text may be a
    /// single token or many lines.
    static bool ContainsVariables(std::string_view text) noexcept;

    const std::string& GetString() const noexcept { return m_text; }

private:
    std::string m_text;
};

} // namespace Tarn::Fjel::Core::Keywords
