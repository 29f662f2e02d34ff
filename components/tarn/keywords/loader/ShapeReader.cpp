#include <tarn/keywords/loader/ShapeReader.h>

#include <algorithm>
#include <cmath>
#include <limits>

#include <fmt/format.h>

#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

namespace {

constexpr int DeepestShape = 32; // a shape that uses itself would go on for ever

MDType TypeNamed(const FieldReader& fields)
{
    constexpr MDType types[] = {MDType::Record, MDType::List,    MDType::Map,  MDType::RawText, MDType::YesNo,
                                MDType::Option, MDType::Integer, MDType::Real, MDType::String,  MDType::RestOfLine};
    if (!fields.Has("type")) fields.Fail("type", "is missing");
    return types[fields.Choice(
        "type", {"record", "list", "map", "rawText", "yesNo", "option", "integer", "real", "string", "restOfLine"}, 0)];
}

bool IsItem(MDType type)
{
    return type != MDType::Record && type != MDType::List && type != MDType::Map && type != MDType::RawText;
}

/// One conversion of a number and nothing else that printf would look for an argument for.
bool IsFormatFor(std::string_view format, std::string_view conversions)
{
    int count = 0;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') continue;
        if (++i < format.size() && format[i] == '%') continue;
        while (i < format.size() && std::string_view("-+ #0").find(format[i]) != std::string_view::npos)
            ++i;
        std::size_t digits = 0;
        while (i < format.size() && (Service::IsDigit(format[i]) || format[i] == '.'))
            ++i, ++digits;
        if (i >= format.size() || digits > 5 || conversions.find(format[i]) == std::string_view::npos) return false;
        ++count;
    }
    return count == 1;
}

int Tristate(const FieldReader& fields, std::string_view field)
{
    if (!fields.Has(field)) return -1;
    return fields.Flag(field) ? 1 : 0;
}

} // namespace

ShapeDefinition ShapeReader::Read(const FieldReader& fields) const
{
    if (fields.Has("use")) return ReadUse(fields);

    ShapeDefinition shape;
    shape.type = TypeNamed(fields);
    shape.name = fields.Text("name");
    fields.Text("summary");
    shape.defaultable = fields.Flag("defaultable");
    shape.optionalOnRead = fields.Flag("optionalOnRead");
    shape.optionalOnWrite = fields.Flag("optionalOnWrite");
    switch (shape.type) {
    case MDType::Record:
        ReadRecord(fields, shape);
        break;
    case MDType::List:
        ReadList(fields, shape);
        break;
    case MDType::Map:
        ReadMap(fields, shape);
        break;
    case MDType::RawText:
        fields.AllowOnly({"type", "summary", "terminator"});
        shape.terminator = fields.Text("terminator");
        break;
    default:
        ReadItem(fields, shape);
        break;
    }
    return shape;
}

bool ShapeReader::HasIdentity(const ShapeDefinition& shape)
{
    return !shape.identity.empty() || std::any_of(shape.children.begin(), shape.children.end(), HasIdentity);
}

ShapeDefinition ShapeReader::ReadUse(const FieldReader& fields) const
{
    fields.AllowOnly({"use", "name", "summary", "unit", "default", "defaultable", "optionalOnRead", "optionalOnWrite",
                      "termination", "size", "autoFill", "identity"});
    const std::string name = fields.Text("use");
    const auto found = m_shapes ? m_shapes->find(name) : Json::const_iterator();
    if (!m_shapes || found == m_shapes->end()) fields.Fail("use", "the file has no shape \"" + name + "\"");

    // The fields beside "use" are laid over a copy of the shape, and the whole is read as if it stood here.
    Json merged = *found;
    if (!merged.is_object()) fields.Fail("use", "the shape \"" + name + "\" must be an object");
    for (const auto& [field, value] : fields.Object().items()) {
        if (field == "use") continue;
        const bool ofElement =
            (field == "unit" || field == "default") && merged.contains("element") && merged["element"].is_object();
        (ofElement ? merged["element"] : merged)[field] = value;
    }
    if (m_depth >= DeepestShape) fields.Fail("use", "the shape \"" + name + "\" uses itself");
    ++m_depth;
    ShapeDefinition shape = Read(fields.Inside(merged, fields.PathOf("")));
    --m_depth;
    return shape;
}

void ShapeReader::ReadRecord(const FieldReader& fields, ShapeDefinition& shape) const
{
    fields.AllowOnly({"type", "name", "summary", "items", "termination", "identity", "defaultable", "optionalOnRead",
                      "optionalOnWrite"});
    shape.termination = fields.Choice("termination", {"none", "slash", "eol"}, 1);
    for (const Json& item : fields.Array("items")) {
        const std::string path = fields.PathOf("items") + "[" + std::to_string(shape.children.size()) + "]";
        const FieldReader itemFields = fields.Inside(item, path);
        ShapeDefinition child = Read(itemFields);
        if (child.type == MDType::Map || child.type == MDType::RawText) {
            itemFields.Fail("type", "maps and raw text stand only at the root");
        }
        if (shape.termination == 2 && !IsItem(child.type)) {
            itemFields.Fail("type", "a record that ends with its line holds items only");
        }
        if (child.name.empty() && IsItem(child.type)) itemFields.Fail("name", "is missing");
        const auto twin = std::find_if(shape.children.begin(), shape.children.end(), [&](const ShapeDefinition& other) {
            return !child.name.empty() && other.name == child.name;
        });
        if (twin != shape.children.end()) itemFields.Fail("name", "\"" + child.name + "\" stands twice in the record");
        shape.children.push_back(std::move(child));
    }
    if (!fields.Has("identity")) return;
    for (const Json& key : fields.Array("identity")) {
        const auto count = static_cast<int>(shape.children.size());
        int index = -1;
        if (key.is_number_integer()) index = key.get<int>();
        for (int i = 0; key.is_string() && i < count; ++i) {
            if (shape.children[static_cast<std::size_t>(i)].name == key.get<std::string>()) index = i;
        }
        if (index < 0 || index >= count) fields.Fail("identity", "the record has no item " + key.dump());
        if (!IsItem(shape.children[static_cast<std::size_t>(index)].type)) {
            fields.Fail("identity", key.dump() + " is no single value");
        }
        shape.identity.push_back(index);
    }
    std::sort(shape.identity.begin(), shape.identity.end());
}

void ShapeReader::ReadList(const FieldReader& fields, ShapeDefinition& shape) const
{
    fields.AllowOnly({"type", "name", "summary", "element", "termination", "size", "end", "elementsDefaultable",
                      "autoFill", "startsOnNewLine", "terminatorOnNewLine", "defaultable", "optionalOnRead",
                      "optionalOnWrite"});
    shape.termination = fields.Choice("termination", {"none", "slash"}, 1);
    const Json* element = fields.Find("element");
    if (!element) fields.Fail("element", "is missing");
    shape.children.push_back(Read(fields.Inside(*element, fields.PathOf("element"))));
    const MDType type = shape.children.front().type;
    if (type == MDType::Map || type == MDType::RawText) {
        fields.Fail("element.type", "maps and raw text stand only at the root");
    }
    shape.size = fields.Text("size");
    shape.elementsDefaultable = fields.Flag("elementsDefaultable");
    shape.autoFill = fields.Flag("autoFill");
    if (shape.elementsDefaultable && !IsItem(type)) fields.Fail("elementsDefaultable", "the elements are no items");
    if (shape.autoFill && IsItem(type)) fields.Fail("autoFill", "the elements are items");
    shape.startsOnNewLine = Tristate(fields, "startsOnNewLine");
    shape.terminatorOnNewLine = Tristate(fields, "terminatorOnNewLine");
    if (const Json* end = fields.Find("end")) {
        const FieldReader endFields = fields.Inside(*end, fields.PathOf("end"));
        endFields.AllowOnly({"tokens", "at", "consume"});
        shape.endTokens = endFields.Texts("tokens");
        shape.endAt = endFields.Choice("at", {"number", "word"}, -1) + 1;
        shape.endConsumes = endFields.Flag("consume");
        if (shape.endTokens.empty() && shape.endAt == 0) endFields.Fail("", "must say tokens or at");
    }
}

void ShapeReader::ReadMap(const FieldReader& fields, ShapeDefinition& shape) const
{
    fields.AllowOnly({"type", "summary", "termination", "entries"});
    shape.termination = fields.Choice("termination", {"none", "slash"}, 1);
    for (const Json& entry : fields.Array("entries")) {
        const std::string path = fields.PathOf("entries") + "[" + std::to_string(shape.entries.size()) + "]";
        MapEntryDefinition definition;
        if (entry.is_string()) {
            definition.names.push_back(entry.get<std::string>());
        } else {
            const FieldReader entryFields = fields.Inside(entry, path);
            entryFields.AllowOnly({"name", "aliases", "valueNames", "simulators", "summary"});
            definition.names = entryFields.Texts("aliases");
            definition.names.insert(definition.names.begin(), entryFields.Text("name"));
            definition.simulators = entryFields.Simulators("simulators");
            if (const Json* valueNames = entryFields.Find("valueNames")) {
                const FieldReader values = fields.Inside(*valueNames, path + ".valueNames");
                for (const auto& [value, names] : valueNames->items()) {
                    const std::string_view digits = std::string_view(value).substr(value.starts_with('-') ? 1 : 0);
                    if (!Service::AllDigits(digits) || digits.size() > 9) values.Fail(value, "is no whole number");
                    definition.valueNames.emplace_back(std::stoi(value), values.Texts(value));
                }
            }
        }
        std::vector<std::string> all = definition.names;
        for (const auto& [value, names] : definition.valueNames)
            all.insert(all.end(), names.begin(), names.end());
        for (const std::string& name : all) {
            if (!IsKeywordName(name)) fields.Fail(path, "\"" + name + "\" is no name of a map entry");
        }
        for (const MapEntryDefinition& other : shape.entries) {
            if (other.names.front() == definition.names.front()) {
                fields.Fail(path, "\"" + definition.names.front() + "\" stands twice in the map");
            }
        }
        shape.entries.push_back(std::move(definition));
    }
}

void ShapeReader::ReadItem(const FieldReader& fields, ShapeDefinition& shape) const
{
    fields.AllowOnly({"type", "name", "summary", "default", "defaultable", "optionalOnRead", "optionalOnWrite",
                      "options", "unit", "min", "max", "format", "preservesCase", "allowsCommas", "maxLength"});
    const bool isNumber = shape.type == MDType::Integer || shape.type == MDType::Real;
    const bool isString = shape.type == MDType::String;
    const auto onlyFor = [&](bool allowed, std::string_view field) {
        if (!allowed && fields.Has(field)) fields.Fail(field, "doesn't belong to an item of this type");
    };
    for (const std::string_view field : {"unit", "min", "max", "format"})
        onlyFor(isNumber, field);
    for (const std::string_view field : {"preservesCase", "allowsCommas", "maxLength"})
        onlyFor(isString, field);
    onlyFor(shape.type == MDType::Option, "options");

    shape.unit = fields.Text("unit");
    shape.min = fields.Number("min");
    shape.max = fields.Number("max");
    if (shape.type == MDType::Integer) {
        fields.Whole("min", 0);
        fields.Whole("max", 0);
    }
    if (shape.min && shape.max && *shape.min > *shape.max) fields.Fail("min", "is above max");
    shape.format = fields.Text("format");
    if (fields.Has("format") && !IsFormatFor(shape.format, shape.type == MDType::Integer ? "di" : "eEfFgG")) {
        fields.Fail("format", "\"" + shape.format + "\" is no printf format of one such number");
    }
    shape.preservesCase = fields.Flag("preservesCase") || shape.type == MDType::RestOfLine;
    shape.allowsCommas = fields.Flag("allowsCommas");
    shape.maxLength = fields.Whole("maxLength", 0);
    if (shape.maxLength < 0) fields.Fail("maxLength", "is negative");
    if (shape.type == MDType::Option) ReadOptions(fields, shape);
    ReadDefaults(fields, shape);
}

void ShapeReader::ReadOptions(const FieldReader& fields, ShapeDefinition& shape) const
{
    for (const Json& option : fields.Array("options")) {
        const std::string path = fields.PathOf("options") + "[" + std::to_string(shape.options.size()) + "]";
        OptionDefinition definition;
        if (option.is_string()) {
            definition.name = option.get<std::string>();
        } else {
            const FieldReader optionFields = fields.Inside(option, path);
            optionFields.AllowOnly({"name", "aliases", "summary"});
            definition.name = optionFields.Text("name");
            definition.aliases = optionFields.Texts("aliases");
        }
        std::vector<std::string> names = definition.aliases;
        names.push_back(definition.name);
        for (const std::string& name : names) {
            for (const OptionDefinition& other : shape.options) {
                const auto alias = std::find(other.aliases.begin(), other.aliases.end(), name);
                if (other.name == name || alias != other.aliases.end())
                    fields.Fail(path, '"' + name + "\" stands twice");
            }
        }
        if (definition.name != Service::Uppercased(definition.name)) fields.Fail(path, "must be in capitals");
        shape.options.push_back(std::move(definition));
    }
    if (shape.options.empty()) fields.Fail("options", "is empty");
}

void ShapeReader::ReadDefaults(const FieldReader& fields, ShapeDefinition& shape) const
{
    const Json* value = fields.Find("default");
    if (!value) return;
    if (!value->is_object()) {
        shape.defaults.push_back({AllSimulators, DefaultText(fields, *value, shape)});
        return;
    }
    for (const auto& [simulator, text] : value->items()) {
        const SimulatorMask bit = SimulatorBit(simulator);
        if (bit == 0) fields.Fail("default", "knows S100, S300 and NoSuppression, not \"" + simulator + "\"");
        shape.defaults.push_back({bit, DefaultText(fields, text, shape)});
    }
    if (shape.defaults.empty()) fields.Fail("default", "is empty");
}

std::string ShapeReader::DefaultText(const FieldReader& fields, const Json& value, const ShapeDefinition& shape) const
{
    switch (shape.type) {
    case MDType::YesNo:
        if (value.is_boolean()) return value.get<bool>() ? "YES" : "NO";
        fields.Fail("default", "must be true or false");
    case MDType::Integer:
        if (value.is_number_integer() && std::abs(value.get<double>()) <= std::numeric_limits<int>::max()) {
            return std::to_string(value.get<int>());
        }
        fields.Fail("default", "must be a whole number");
    case MDType::Real:
        if (value.is_number()) return fmt::format("{}", value.get<double>());
        fields.Fail("default", "must be a number");
    case MDType::Option:
        for (const OptionDefinition& option : shape.options) {
            if (value.is_string() && option.name == value.get<std::string>()) return option.name;
        }
        fields.Fail("default", "must be one of the options");
    default:
        if (value.is_string()) return value.get<std::string>();
        fields.Fail("default", "must be a text");
    }
}

} // namespace Tarn::Fjel::Core::Keywords::Loader
