#pragma once

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <nlohmann/json.hpp>

#include <tarn/keywords/loader/KeywordDefinition.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

using Json = nlohmann::ordered_json;

/// One JSON object of a definition, and the place where it stands, for errors that name file, keyword and field.
class FieldReader
{
public:
    /// place: "FILE: keyword NAME", path: the field that holds the object, empty for the definition itself.
    FieldReader(const Json& object, std::string place, std::string path);

    const Json& Object() const { return *m_object; }
    const std::string& Place() const { return m_place; }
    std::string PathOf(std::string_view field) const;

    /// Throws KeywordException with the place and the field in front of what is wrong.
    [[noreturn]] void Fail(std::string_view field, const std::string& problem) const;

    /// Refuses fields that aren't among these.
    void AllowOnly(std::initializer_list<std::string_view> fields) const;

    bool Has(std::string_view field) const { return Find(field) != nullptr; }
    const Json* Find(std::string_view field) const;

    std::string Text(std::string_view field, const std::string& fallback = {}) const;
    /// A text, or an array of texts that are joined by line feeds.
    std::string Lines(std::string_view field) const;
    std::vector<std::string> Texts(std::string_view field) const;
    bool Flag(std::string_view field, bool fallback = false) const;
    std::optional<double> Number(std::string_view field) const;
    int Whole(std::string_view field, int fallback) const;
    /// The index of the field's text among choices; fallback if the field is absent.
    int Choice(std::string_view field, std::initializer_list<std::string_view> choices, int fallback) const;
    SimulatorMask Simulators(std::string_view field) const;
    const Json& Array(std::string_view field) const;

    /// The reader for an object that is an element or field of this one.
    FieldReader Inside(const Json& object, const std::string& path) const;

private:
    const Json* m_object;
    std::string m_place;
    std::string m_path;
};

/// The bit of the simulator of that name; 0 for an unknown one.
SimulatorMask SimulatorBit(std::string_view name);

/// A name as keywords and map entries have it: capitals, digits, "_", "+" and "-", a letter first; with a star
/// perhaps at its end.
bool IsKeywordName(std::string_view name);

} // namespace Tarn::Fjel::Core::Keywords::Loader
