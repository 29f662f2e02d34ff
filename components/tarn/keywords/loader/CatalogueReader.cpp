#include <tarn/keywords/loader/CatalogueReader.h>

#include <algorithm>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>
#include <set>

#include <tarn/keywords/KeywordException.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/loader/ShapeReader.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

namespace {

constexpr std::string_view sectionNames[SectionCount] = {"RUNSPEC",  "GRID",    "EDIT",     "PROPS",   "REGIONS",
                                                         "SOLUTION", "SUMMARY", "SCHEDULE", "OPTIMIZE"};

int SectionNamed(const FieldReader& fields, std::string_view field, std::string_view name)
{
    const auto found = std::find(std::begin(sectionNames), std::end(sectionNames), name);
    if (found == std::end(sectionNames)) fields.Fail(field, "there is no section \"" + std::string(name) + "\"");
    return static_cast<int>(found - std::begin(sectionNames));
}

void CheckName(const FieldReader& fields, std::string_view field, std::string_view name)
{
    if (!IsKeywordName(name)) fields.Fail(field, "\"" + std::string(name) + "\" is no name of a keyword");
}

void ReadNames(const FieldReader& fields, KeywordHead& head)
{
    head.names.push_back({fields.Text("name"), head.simulators});
    CheckName(fields, "name", head.names.back().name);
    if (!fields.Has("names")) return;
    for (const Json& name : fields.Array("names")) {
        NameDefinition definition{"", head.simulators};
        if (name.is_string()) {
            definition.name = name.get<std::string>();
        } else {
            const FieldReader nameFields = fields.Inside(name, "names[" + std::to_string(head.names.size() - 1) + "]");
            nameFields.AllowOnly({"name", "simulators"});
            definition.name = nameFields.Text("name");
            definition.simulators &= nameFields.Simulators("simulators");
        }
        CheckName(fields, "names", definition.name);
        for (const NameDefinition& other : head.names) {
            if (other.name == definition.name) fields.Fail("names", "\"" + other.name + "\" stands twice");
        }
        head.names.push_back(std::move(definition));
    }
}

void ReadSections(const FieldReader& fields, KeywordHead& head)
{
    const Json* sections = fields.Find("sections");
    if (!sections) fields.Fail("sections", "is missing");
    if (sections->is_string()) {
        if (*sections != "all") fields.Fail("sections", "must be \"all\" or an array of sections");
        head.sections = (1u << SectionCount) - 1;
        return;
    }
    for (const std::string& name : fields.Texts("sections")) {
        head.sections |= 1u << SectionNamed(fields, "sections", name);
    }
    if (head.sections == 0) fields.Fail("sections", "is empty");
}

void ReadScope(const FieldReader& fields, KeywordHead& head)
{
    head.isScope = head.kind == KeywordKind::Section;
    const Json* scope = fields.Find("scope");
    if (!scope) return;
    if (head.isScope) fields.Fail("scope", "doesn't belong to a section keyword");
    const FieldReader scopeFields = fields.Inside(*scope, "scope");
    scopeFields.AllowOnly({"closedBy", "closingKeyword"});
    head.isScope = true;
    head.closedBy = scopeFields.Texts("closedBy");
    head.closingKeyword = scopeFields.Text("closingKeyword");
    if (!head.closingKeyword.empty() &&
        std::find(head.closedBy.begin(), head.closedBy.end(), head.closingKeyword) == head.closedBy.end())
    {
        scopeFields.Fail("closingKeyword", "must be among closedBy");
    }
}

void ReadPredecessors(const FieldReader& fields, KeywordHead& head)
{
    const Json* after = fields.Find("after");
    if (!after) return;
    const FieldReader afterFields = fields.Inside(*after, "after");
    for (const auto& [section, names] : after->items()) {
        const int number = SectionNamed(fields, "after", section);
        if ((head.sections >> number & 1) == 0) afterFields.Fail(section, "the keyword isn't valid in that section");
        if (number == static_cast<int>(SectionType::SCHEDULE)) afterFields.Fail(section, "has no ordering rules");
        std::vector<std::string> predecessors = afterFields.Texts(section);
        if (predecessors.empty()) afterFields.Fail(section, "is empty");
        for (const std::string& name : predecessors)
            CheckName(afterFields, section, name);
        head.predecessors.emplace_back(number, std::move(predecessors));
    }
    if (!head.predecessors.empty() && (head.isScope || head.kind != KeywordKind::Ordinary)) {
        fields.Fail("after", "heads of scopes, sections, and keywords that end or include have no ordering rules");
    }
}

KeywordDefinition ReadKeyword(const Json& object, const std::string& place, const ShapeReader& shapes)
{
    const FieldReader fields(object, place, "");
    fields.AllowOnly({"name", "names", "summary", "kind", "sections", "simulators", "acceptsAnyName", "keepsLongName",
                      "data", "scope", "after", "example", "confidence"});
    KeywordDefinition keyword;
    KeywordHead& head = keyword.head;
    head.simulators = fields.Simulators("simulators");
    ReadNames(fields, head);
    keyword.texts = {fields.Text("summary"), fields.Lines("example")};
    head.confidence = fields.Choice("confidence", {"low", "medium", "high"}, 1);
    head.kind =
        fields.Choice("kind", {"end", "endinc", "include", "ordinary", "endskip", "section"}, KeywordKind::Ordinary);
    ReadSections(fields, head);
    head.acceptsAnyName = fields.Flag("acceptsAnyName");
    const bool isPattern = std::any_of(head.names.begin(), head.names.end(),
                                       [](const NameDefinition& name) { return name.name.ends_with('*'); });
    head.keepsLongName = fields.Flag("keepsLongName", isPattern);
    ReadScope(fields, head);
    ReadPredecessors(fields, head);
    if (const Json* data = fields.Find("data")) {
        keyword.data = shapes.Read(fields.Inside(*data, "data"));
        const MDType type = keyword.data->type;
        if (type != MDType::Record && type != MDType::List && type != MDType::Map && type != MDType::RawText) {
            fields.Fail("data.type", "must be record, list, map or rawText");
        }
        head.hasIdentity = ShapeReader::HasIdentity(*keyword.data);
    }
    return keyword;
}

} // namespace

void CatalogueReader::Add(std::string_view json, const std::string& origin)
{
    Json document;
    try {
        document = Json::parse(json, nullptr, true, true);
    } catch (const Json::exception& problem) {
        throw KeywordException(origin + ": " + problem.what());
    }
    const Json* keywords = &document;
    const Json* shapes = nullptr;
    if (document.is_object()) {
        const FieldReader fields(document, origin, "");
        fields.AllowOnly({"$schema", "about", "shapes", "keywords"});
        keywords = &fields.Array("keywords");
        shapes = fields.Find("shapes");
        if (shapes && !shapes->is_object()) fields.Fail("shapes", "must be an object");
    }
    if (!keywords->is_array()) throw KeywordException(origin + ": must be an array of keywords, or an object");

    const ShapeReader shapeReader(shapes);
    for (std::size_t i = 0; i < keywords->size(); ++i) {
        const Json& keyword = (*keywords)[i];
        const bool named = keyword.is_object() && keyword.contains("name") && keyword["name"].is_string();
        const std::string name = named ? keyword["name"].get<std::string>() : "number " + std::to_string(i + 1);
        m_keywords.push_back(ReadKeyword(keyword, origin + ": keyword " + name, shapeReader));
        m_origins.push_back(origin);
    }
}

void CatalogueReader::AddFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    const std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.is_open() || file.bad()) throw KeywordException("The catalogue file " + path + " can't be read.");
    Add(text, path);
}

void CatalogueReader::CheckReachable() const
{
    std::map<std::string, std::vector<std::size_t>> definitions;
    for (std::size_t i = 0; i < m_keywords.size(); ++i) {
        const KeywordHead& head = m_keywords[i].head;
        for (const NameDefinition& name : head.names) {
            for (const std::size_t earlier : definitions[name.name]) {
                const KeywordHead& other = m_keywords[earlier].head;
                if ((head.sections & ~other.sections) == 0 && (head.simulators & ~other.simulators) == 0) {
                    throw KeywordException(m_origins[i] + ": keyword " + name.name +
                                           ": is defined for its sections and simulators already in " +
                                           m_origins[earlier]);
                }
            }
            definitions[name.name].push_back(i);
        }
    }
}

void CatalogueReader::CheckWhole() const
{
    CheckReachable();
    std::set<std::string> names;
    for (const KeywordDefinition& keyword : m_keywords) {
        for (const NameDefinition& name : keyword.head.names)
            names.insert(name.name);
    }
    // In one section, all keywords of a name that some keyword must follow.
    std::map<int, std::map<std::string, std::set<std::string>>> rules;
    for (std::size_t i = 0; i < m_keywords.size(); ++i) {
        const KeywordHead& head = m_keywords[i].head;
        const std::string place = m_origins[i] + ": keyword " + head.names.front().name;
        for (const std::string& closer : head.closedBy) {
            if (!names.count(closer)) throw KeywordException(place + ": field scope.closedBy: no keyword " + closer);
        }
        for (const auto& [section, predecessors] : head.predecessors) {
            for (const NameDefinition& name : head.names) {
                rules[section][name.name].insert(predecessors.begin(), predecessors.end());
            }
        }
    }
    for (const auto& rulesOfSection : rules) {
        const auto section = rulesOfSection.first;
        const auto& follows = rulesOfSection.second;
        std::map<std::string, int> state; // 1: on the way, 2: done
        const std::function<void(const std::string&)> visit = [&](const std::string& name) {
            const auto rule = follows.find(name);
            if (rule == follows.end() || state[name] == 2) return;
            if (state[name] == 1) {
                throw KeywordException("The ordering rules of section " + std::string(sectionNames[section]) +
                                       " form a ring through " + name + ".");
            }
            state[name] = 1;
            for (const std::string& predecessor : rule->second)
                visit(predecessor);
            state[name] = 2;
        };
        for (const auto& [name, predecessors] : follows)
            visit(name);
    }
}

} // namespace Tarn::Fjel::Core::Keywords::Loader
