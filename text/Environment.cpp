#include <deckmanager/Environment.h>

#include <algorithm>
#include <string_view>

#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/service/DebugFlags.h>
#include <tarn/service/Strings.h>

namespace Tarn::Fjel::Core::DeckManager {

namespace {

using NameList = std::vector<std::string_view>;

bool Contains(const NameList& names, std::string_view name)
{
    return std::find(names.begin(), names.end(), name) != names.end();
}

/// The keywords that the actions of the one simulator take.
const NameList& ActionKeywordsA()
{
    static const NameList names = {"WELSPECS",  "WELSPECL", "WELOPEN",  "WELOPENL", "WCONPROD", "WCONINJE", "WECON",
                                   "WECONINJE", "WEFAC",    "WELDRAW",  "WELLSTRE", "WGRUPCON", "WINJTEMP", "WSOLVENT",
                                   "WTAKEGAS",  "WTEST",    "WELTARG",  "GCONPROD", "GCONINJE", "GECON",    "WINJGAS",
                                   "GINJGAS ",  "GRUPFUEL", "GRUPSALE", "GCONSALE", "GCONSUMP", "GADVANCE", "GEFAC",
                                   "GPMAINT",   "GUIDERAT", "QDRILL",   "DRILPRI",  "WDRILPRI", "WDRILTIM", "WPIMULT"};
    return names;
}

/// Those that the actions of the other take; the drilling queues only in their present form.
const NameList& ActionKeywordsB()
{
    static const NameList names = [] {
        NameList list = {"WPIMULT",  "WEFAC",    "GEFAC",    "WELSPECS", "WELSPECL",
                         "WELLSTRE", "WINJTEMP", "WSOLVENT", "WELDRAW"};
        if (!Service::DebugFlags::IsSet("useolddrillingqueues"))
            list.insert(list.end(), {"QDRILL", "DRILPRI", "WDRILPRI", "WDRILTIM", "WCONPROD", "WCONINJE"});
        return list;
    }();
    return names;
}

std::string TagWith(const std::string& defaultTag, const std::string& word)
{
    std::string tag = defaultTag + " " + word;
    Service::StringTrimBlank(tag);
    return tag;
}

} // namespace

Environment* Environment::instance = nullptr;
std::uint64_t Environment::syntaxTableGeneration = 1;
const std::string Environment::m_defaultIndentedKeywordsWarningPrefix = "Possible indented keyword:";

Environment::Environment() : m_keywordTag(GetDefaultGeneratedTag()), m_fileTag(GetDefaultGeneratedTag()) {}

Environment::~Environment() = default;

void Environment::Make()
{
    instance = new Environment;
}

void Environment::destroy()
{
    ++syntaxTableGeneration;
    Environment* gone = instance;
    instance = nullptr;
    delete gone;
}

const Keywords::IKeywordSyntaxTable* Environment::DefaultSyntaxTable()
{
    static const Keywords::IKeywordSyntaxTable* const table = Keywords::KeywordSyntaxTable::Instance(false, true);
    return table;
}

void Environment::SetSyntaxTable(const Keywords::IKeywordSyntaxTable* table)
{
    ++syntaxTableGeneration;
    m_syntaxTable = table;
}

void Environment::useNewActionX(const std::string& keyword)
{
    if (!isInActionX(keyword)) m_actionXKeywords.push_back(keyword);
    m_newActionX = m_newActionX && Contains(ActionKeywordsA(), keyword) && Contains(ActionKeywordsB(), keyword);
}

bool Environment::isInActionX(const std::string& keyword) const
{
    return std::find(m_actionXKeywords.begin(), m_actionXKeywords.end(), keyword) != m_actionXKeywords.end();
}

const std::string& Environment::GetDefaultGeneratedTag() const
{
    static const std::string tag = "-- Generated";
    return tag;
}

void Environment::SetCustomKeywordGeneratedTag(const std::string& word)
{
    m_customKeywordTag = word;
    m_keywordTag = TagWith(GetDefaultGeneratedTag(), word);
}

void Environment::SetCustomFileGeneratedTag(const std::string& word)
{
    m_customFileTag = word;
    m_fileTag = TagWith(GetDefaultGeneratedTag(), word);
}

void Environment::SetSimulatorType(Keywords::SimulatorType type)
{
    m_simulatorType = type;
    if (type == Keywords::SimulatorType::NoSuppression) m_keywordSuppression = false;
}

} // namespace Tarn::Fjel::Core::DeckManager
