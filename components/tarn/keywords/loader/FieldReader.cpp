#include <tarn/keywords/loader/FieldReader.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <tarn/keywords/KeywordException.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

FieldReader::FieldReader(const Json& object, std::string place, std::string path)
    : m_object(&object), m_place(std::move(place)), m_path(std::move(path))
{
    if (!object.is_object()) Fail("", "must be an object");
}

std::string FieldReader::PathOf(std::string_view field) const
{
    if (field.empty()) return m_path;
    return m_path.empty() ? std::string(field) : m_path + "." + std::string(field);
}

void FieldReader::Fail(std::string_view field, const std::string& problem) const
{
    const std::string path = PathOf(field);
    throw KeywordException(m_place + (path.empty() ? ": " : ": field " + path + ": ") + problem);
}

void FieldReader::AllowOnly(std::initializer_list<std::string_view> fields) const
{
    for (const auto& [name, value] : m_object->items()) {
        if (std::find(fields.begin(), fields.end(), name) == fields.end()) Fail(name, "is unknown here");
    }
}

const Json* FieldReader::Find(std::string_view field) const
{
    const auto found = m_object->find(field);
    return found == m_object->end() ? nullptr : &*found;
}

std::string FieldReader::Text(std::string_view field, const std::string& fallback) const
{
    const Json* value = Find(field);
    if (!value) return fallback;
    if (!value->is_string()) Fail(field, "must be a text");
    return value->get<std::string>();
}

std::string FieldReader::Lines(std::string_view field) const
{
    const Json* value = Find(field);
    if (!value || value->is_string()) return Text(field);
    std::string text;
    for (const std::string& line : Texts(field)) {
        if (!text.empty()) text += '\n';
        text += line;
    }
    return text;
}

std::vector<std::string> FieldReader::Texts(std::string_view field) const
{
    std::vector<std::string> texts;
    if (!Has(field)) return texts;
    for (const Json& value : Array(field)) {
        if (!value.is_string()) Fail(field, "must be an array of texts");
        texts.push_back(value.get<std::string>());
    }
    return texts;
}

bool FieldReader::Flag(std::string_view field, bool fallback) const
{
    const Json* value = Find(field);
    if (!value) return fallback;
    if (!value->is_boolean()) Fail(field, "must be true or false");
    return value->get<bool>();
}

std::optional<double> FieldReader::Number(std::string_view field) const
{
    const Json* value = Find(field);
    if (!value) return std::nullopt;
    if (!value->is_number()) Fail(field, "must be a number");
    return value->get<double>();
}

int FieldReader::Whole(std::string_view field, int fallback) const
{
    const std::optional<double> value = Number(field);
    if (!value) return fallback;
    if (*value != std::floor(*value) || std::abs(*value) > std::numeric_limits<int>::max()) {
        Fail(field, "must be a whole number");
    }
    return static_cast<int>(*value);
}

int FieldReader::Choice(std::string_view field, std::initializer_list<std::string_view> choices, int fallback) const
{
    if (!Has(field)) return fallback;
    const std::string text = Text(field);
    const auto found = std::find(choices.begin(), choices.end(), text);
    if (found != choices.end()) return static_cast<int>(found - choices.begin());
    std::string names;
    for (const std::string_view choice : choices)
        names.append(names.empty() ? "" : ", ").append(choice);
    Fail(field, "must be one of " + names);
}

SimulatorMask FieldReader::Simulators(std::string_view field) const
{
    if (!Has(field)) return AllSimulators;
    SimulatorMask mask = 0;
    for (const std::string& name : Texts(field)) {
        const SimulatorMask bit = SimulatorBit(name);
        if (bit == 0) Fail(field, "knows S100, S300 and NoSuppression, not \"" + name + "\"");
        mask |= bit;
    }
    if (mask == 0) Fail(field, "must name a simulator");
    return mask;
}

const Json& FieldReader::Array(std::string_view field) const
{
    const Json* value = Find(field);
    if (!value || !value->is_array()) Fail(field, "must be an array");
    return *value;
}

FieldReader FieldReader::Inside(const Json& object, const std::string& path) const
{
    return FieldReader(object, m_place, path);
}

SimulatorMask SimulatorBit(std::string_view name)
{
    if (name == "S100") return 1u << 0;
    if (name == "S300") return 1u << 1;
    return name == "NoSuppression" ? 1u << 6 : 0;
}

bool IsKeywordName(std::string_view name)
{
    if (!name.empty() && name.back() == '*') name.remove_suffix(1);
    if (name.empty() || name.front() < 'A' || name.front() > 'Z') return false;
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '+' || c == '-';
    });
}

} // namespace Tarn::Fjel::Core::Keywords::Loader
