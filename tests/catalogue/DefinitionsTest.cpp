// Definitions that other code counts on: which keywords there are, and the places and kinds of their items.
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tarn/keywords/ConstMetaDataIterator.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordRecordMDUtil.h>
#include <tarn/keywords/KeywordSyntaxTable.h>
#include <tarn/keywords/Metadata.h>

namespace {

using namespace Tarn::Fjel::Core::Keywords;

const IKeywordSyntax* Find(std::string_view name)
{
    return KeywordSyntaxTable::Instance(false, true)->FindSyntax(name, true);
}

const IKeywordSyntax* Find(std::string_view name, SectionType section)
{
    const IKeywordSyntax* syntax = KeywordSyntaxTable::Instance(false, true)->FindSyntax(name, section, true);
    return syntax && syntax->IsValidForSection(section, SimulatorType::Any) ? syntax : nullptr;
}

/// The record of a keyword that is one, or the record that its list, or its list of lists, holds; else null.
const IKeywordRecordMD* RecordOf(const IKeywordMD* md)
{
    while (md && md->GetType() == MDType::List)
        md = static_cast<const IKeywordListMD*>(md)->GetElementMD();
    if (!md || md->GetType() != MDType::Record) return nullptr;
    return static_cast<const IKeywordRecordMD*>(md);
}

struct Names
{
    SectionType section;
    std::vector<std::string_view> names;
};

TEST(CatalogueDefinitions, KeywordsThatTheLibraryNames)
{
    const Names required[] = {
        {SectionType::RUNSPEC,
         {"TITLE",    "PATHS",  "DIMENS", "START",    "METRIC",  "FIELD",    "LAB",      "PVT-M",
          "OIL",      "WATER",  "GAS",    "TABDIMS",  "REGDIMS", "DYNRDIMS", "AQUDIMS",  "GRIDOPTS",
          "ROCKCOMP", "BRINE",  "VLDMC",  "COMPS",    "DEADOIL", "COMPW",    "CO2STORE", "CO2SOL",
          "H2SSOL",   "GASSOL", "GASWAT", "ENDSCALE", "MISCIBLE"}},
        {SectionType::GRID,
         {"GDFILE", "ORDGRID", "IMPORT", "PINCHNUM", "FLUXNUM", "BOX", "ENDBOX", "CARFIN", "RADFIN", "REFINE", "ENDFIN",
          "COPY"}},
        {SectionType::PROPS, {"NCOMPS", "CNAMES", "LUMPING", "RKTRMDIR", "EOS", "OILVISCC", "OILVISCT"}},
        {SectionType::SOLUTION, {"RESTART", "BOX", "ENDBOX", "REFINE", "ENDFIN", "COPY"}},
        {SectionType::SCHEDULE,
         {"DATES",    "TSTEP",    "TIME",     "SKIPREST",  "ACTIONX",  "ACTIONW",  "ACTION",   "ENDACTIO",
          "UDQ",      "UDT",      "VFPPROD",  "VFPINJ",    "WELSPECS", "WELSPECL", "WELOPEN",  "WELOPENL",
          "WCONPROD", "WCONINJE", "WECON",    "WECONINJE", "WEFAC",    "WELDRAW",  "WELLSTRE", "WGRUPCON",
          "WINJTEMP", "WSOLVENT", "WTAKEGAS", "WTEST",     "WELTARG",  "GCONPROD", "GCONINJE", "GECON",
          "WINJGAS",  "GINJGAS",  "GRUPFUEL", "GRUPSALE",  "GCONSALE", "GCONSUMP", "GADVANCE", "GEFAC",
          "GPMAINT",  "GUIDERAT", "QDRILL",   "DRILPRI",   "WDRILPRI", "WDRILTIM", "WPIMULT",  "SKIPZR"}},
    };
    for (const Names& group : required) {
        for (const std::string_view name : group.names) {
            EXPECT_NE(Find(name, group.section), nullptr) << name << " in section " << static_cast<int>(group.section);
        }
    }
    for (int section = 0; section < SectionCount; ++section) {
        for (const char* name : {"INCLUDE", "SKIP", "SKIP100", "SKIP300", "ENDSKIP", "END", "ENDINC"}) {
            EXPECT_NE(Find(name, static_cast<SectionType>(section)), nullptr) << name << " in section " << section;
        }
    }
}

TEST(CatalogueDefinitions, SizesOfTablesAreReadFromIntegers)
{
    const struct
    {
        std::string_view name;
        SectionType section;
        int item;
    } sizes[] = {
        {"COMPS", SectionType::RUNSPEC, 0},    {"NCOMPS", SectionType::PROPS, 0},
        {"AQUDIMS", SectionType::RUNSPEC, 2},  {"COMPW", SectionType::RUNSPEC, 0},
        {"GASSOL", SectionType::RUNSPEC, 0},   {"GRIDOPTS", SectionType::RUNSPEC, 2},
        {"REGDIMS", SectionType::RUNSPEC, 0},  {"REGDIMS", SectionType::RUNSPEC, 3},
        {"TABDIMS", SectionType::RUNSPEC, 4},  {"TABDIMS", SectionType::RUNSPEC, 10},
        {"TABDIMS", SectionType::RUNSPEC, 12}, {"ROCKCOMP", SectionType::RUNSPEC, 1},
        {"DYNRDIMS", SectionType::RUNSPEC, 0},
    };
    for (const auto& size : sizes) {
        const IKeywordSyntax* syntax = Find(size.name, size.section);
        ASSERT_NE(syntax, nullptr) << size.name;
        ASSERT_EQ(syntax->GetMetaData()->GetType(), MDType::Record) << size.name;
        const auto* record = static_cast<const IKeywordRecordMD*>(syntax->GetMetaData());
        ASSERT_LT(size.item, record->GetItemCount()) << size.name;
        EXPECT_EQ(record->GetItemMD(size.item)->GetType(), MDType::Integer) << size.name << "[" << size.item << "]";
    }
    const IKeywordRecordMD* lumping = RecordOf(Find("LUMPING")->GetMetaData());
    ASSERT_NE(lumping, nullptr);
    EXPECT_EQ(lumping->GetItemMD(1)->GetType(), MDType::Integer);
    const auto* brine = static_cast<const IKeywordRecordMD*>(Find("BRINE")->GetMetaData());
    EXPECT_EQ(brine->GetItemMD(0)->GetType(), MDType::List);
    const auto* names = static_cast<const IKeywordListMD*>(Find("CNAMES")->GetMetaData());
    ASSERT_EQ(names->GetType(), MDType::List);
    EXPECT_EQ(names->GetSizeExpression(), nullptr) << "the number of names answers for the number of components";
}

/// A size that names a keyword of RUNSPEC names one that is there, and a whole number in it.
void ExpectSizesAnswered(const IKeywordSyntax& syntax, const IKeywordMD& md)
{
    if (md.GetType() == MDType::Record) {
        const auto& record = static_cast<const IKeywordRecordMD&>(md);
        for (int i = 0; i < record.GetItemCount(); ++i)
            ExpectSizesAnswered(syntax, *record.GetItemMD(i));
    }
    if (md.GetType() != MDType::List) return;
    const auto& list = static_cast<const IKeywordListMD&>(md);
    ExpectSizesAnswered(syntax, *list.GetElementMD());
    constexpr std::string_view runspec = "RUNSPEC:";
    if (!list.GetSizeExpression() || !list.GetSizeExpression()->starts_with(runspec)) return;
    const std::string& size = *list.GetSizeExpression();
    const std::size_t open = size.find('[');
    ASSERT_NE(open, std::string::npos) << syntax.GetName();
    const IKeywordSyntax* source = Find(size.substr(runspec.size(), open - runspec.size()), SectionType::RUNSPEC);
    ASSERT_NE(source, nullptr) << syntax.GetName() << ": " << size;
    const IKeywordRecordMD* record = RecordOf(source->GetMetaData());
    const int item = std::stoi(size.substr(open + 1));
    ASSERT_LT(item, record->GetItemCount()) << syntax.GetName() << ": " << size;
    EXPECT_EQ(record->GetItemMD(item)->GetType(), MDType::Integer) << syntax.GetName() << ": " << size;
}

TEST(CatalogueDefinitions, SizesNameWholeNumbersOfRunspec)
{
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        if (syntax->GetMetaData()) ExpectSizesAnswered(*syntax, *syntax->GetMetaData());
    }
}

TEST(CatalogueDefinitions, ScopesAndTheirClosers)
{
    const struct
    {
        std::string_view head;
        std::vector<std::string_view> closers;
        std::string_view closing;
    } scopes[] = {
        {"SKIP", {"ENDSKIP"}, "ENDSKIP"},
        {"SKIP100", {"ENDSKIP"}, "ENDSKIP"},
        {"SKIP300", {"ENDSKIP"}, "ENDSKIP"},
        {"ACTIONX", {"ENDACTIO"}, "ENDACTIO"},
        {"ACTIONW", {"ENDACTIO"}, "ENDACTIO"},
        {"ACTION", {"ENDACTIO"}, "ENDACTIO"},
        {"BOX", {"BOX", "CARFIN", "ENDBOX", "ENDFIN", "RADFIN", "REFINE"}, "ENDBOX"},
        {"CARFIN", {"CARFIN", "ENDFIN", "RADFIN", "REFINE"}, "ENDFIN"},
        {"RADFIN", {"CARFIN", "ENDFIN", "RADFIN", "REFINE"}, "ENDFIN"},
        {"REFINE", {"CARFIN", "ENDFIN", "RADFIN", "REFINE"}, "ENDFIN"},
        {"DATES", {"DATES", "ENDSKIP", "TIME", "TSTEP"}, ""},
    };
    for (const auto& scope : scopes) {
        const IKeywordSyntax* head = Find(scope.head);
        ASSERT_NE(head, nullptr) << scope.head;
        EXPECT_TRUE(head->IsScopeStart()) << scope.head;
        std::vector<std::string_view> closers;
        for (const IKeywordSyntax* closer : head->GetScopeEndSyntaxes())
            closers.push_back(closer->GetName());
        std::sort(closers.begin(), closers.end());
        closers.erase(std::unique(closers.begin(), closers.end()), closers.end());
        EXPECT_EQ(closers, scope.closers) << scope.head;
        const IKeywordSyntax* closing = head->GetScopeEndSyntax();
        EXPECT_EQ(closing ? closing->GetName() : "", scope.closing) << scope.head;
    }
}

TEST(CatalogueDefinitions, RecordsAreToldApartByWhatTheyAreOf)
{
    const struct
    {
        std::string_view name;
        std::vector<std::string_view> items;
    } identities[] = {
        {"INCLUDE", {"FILE"}},
        {"BOX", {"I1", "I2", "J1", "J2", "K1", "K2"}},
        {"CARFIN", {"NAME"}},
        {"RADFIN", {"NAME"}},
        {"REFINE", {"NAME"}},
        {"ACTION", {"NAME"}},
        {"WELSPECS", {"WELL"}},
        {"WCONPROD", {"WELL"}},
        {"GCONPROD", {"GROUP"}},
        {"COMPDAT", {"WELL", "I", "J", "K1", "K2"}},
        {"COMPDATL", {"WELL", "LGR", "I", "J", "K1", "K2"}},
    };
    for (const auto& identity : identities) {
        const IKeywordSyntax* syntax = Find(identity.name);
        const IKeywordRecordMD* record = RecordOf(syntax->GetMetaData());
        ASSERT_NE(record, nullptr) << identity.name;
        std::vector<std::string_view> items;
        for (const int item : record->GetIdentityItems())
            items.push_back(record->GetItemName(item));
        EXPECT_EQ(items, identity.items) << identity.name;
    }
    // A schedule keyword without identity takes the place of any other of its name, so none about wells may lack one.
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        const IKeywordRecordMD* record = RecordOf(syntax->GetMetaData());
        if (syntax->GetSection() != SectionType::SCHEDULE || !record || record->GetItemCount() == 0) continue;
        const std::string& first = record->GetItemName(0);
        if (first == "WELL" || first == "GROUP" || first == "NODE" || first == "NAME" || first == "TABLE") {
            EXPECT_TRUE(syntax->HasIdentity()) << syntax->GetName();
        }
    }
    for (const char* name : {"VFPPROD", "VFPINJ", "ACTIONX", "WELSEGS", "COMPSEGS"}) {
        EXPECT_TRUE(Find(name)->HasIdentity()) << name;
    }
}

/// Items that decks reach by counting, far from the record's head.
TEST(CatalogueDefinitions, LongRecordsHaveTheirItemsInPlace)
{
    const struct
    {
        std::string_view name;
        int count;
        std::vector<std::pair<int, std::string_view>> items;
    } records[] = {
        {"REGDIMS", 10, {{3, "NTFREG"}, {5, "NTCREG"}, {9, "NPLMIX"}}},
        {"WELLDIMS", 14, {{4, "MXSTAG"}, {10, "MXWLIST"}, {13, "MXNGPP"}}},
        {"TRACERS", 12, {{4, "DIFFUSION"}, {7, "NONLIN"}, {11, "MXTCFR"}}},
        {"EQUIL", 12, {{2, "OWC"}, {4, "GOC"}, {8, "ACCURACY"}}},
        {"AQUCT", 13, {{3, "PERMEABILITY"}, {8, "ANGLE"}, {10, "INFLUENCE_TABLE"}}},
        {"AQUANCON", 11, {{7, "FACE"}, {8, "INFLUX"}, {10, "ADJOIN"}}},
        {"NNC", 14, {{6, "TRANSMISSIBILITY"}, {13, "DIFFUSIVITY"}}},
        {"WELSPECS", 17, {{4, "REF_DEPTH"}, {5, "PHASE"}, {9, "CROSSFLOW"}, {11, "DENSITY"}}},
        {"COMPDAT", 14, {{5, "STATE"}, {8, "DIAMETER"}, {10, "SKIN"}, {12, "DIRECTION"}}},
        {"WCONPROD", 20, {{2, "MODE"}, {7, "RESV"}, {8, "BHP"}, {9, "THP"}, {11, "ALQ"}}},
        {"WCONINJE", 15, {{3, "MODE"}, {6, "BHP"}, {8, "VFP_TABLE"}}},
        {"WCONHIST", 12, {{3, "ORAT"}, {6, "VFP_TABLE"}, {9, "BHP"}}},
        {"WCONINJH", 12, {{3, "RATE"}, {4, "BHP"}, {11, "MODE"}}},
        {"WECON", 16, {{6, "WORKOVER"}, {9, "QUANTITY"}, {12, "MAX_GAS_LIQUID"}, {13, "MIN_LIQUID"}}},
        {"GCONPROD", 21, {{6, "ACTION"}, {9, "GUIDE_PHASE"}, {13, "RESV"}}},
        {"GCONINJE", 13, {{6, "VOIDAGE"}, {10, "REINJECTION_GROUP"}, {11, "VOIDAGE_GROUP"}}},
        {"GUIDERAT", 12, {{2, "A"}, {8, "INCREASE"}, {9, "DAMPING"}}},
        {"WSEGVALV", 10, {{2, "COEFFICIENT"}, {3, "AREA"}, {8, "STATE"}, {9, "MAX_AREA"}}},
        {"WSEGAICD", 21, {{3, "STRENGTH"}, {10, "METHOD"}, {12, "RATE_EXPONENT"}, {14, "STATE"}}},
        {"WSEGSICD", 13, {{3, "STRENGTH"}, {10, "METHOD"}, {12, "STATE"}}},
    };
    for (const auto& expected : records) {
        const IKeywordSyntax* syntax = Find(expected.name);
        ASSERT_NE(syntax, nullptr) << expected.name;
        const IKeywordRecordMD* record = RecordOf(syntax->GetMetaData());
        ASSERT_NE(record, nullptr) << expected.name;
        EXPECT_EQ(record->GetItemCount(), expected.count) << expected.name;
        for (const auto& [index, item] : expected.items) {
            ASSERT_LT(index, record->GetItemCount()) << expected.name;
            EXPECT_EQ(record->GetItemName(index), item) << expected.name;
        }
    }
}

/// The first letter of a result's name says what the words behind it are.
TEST(CatalogueDefinitions, ResultsGoByWhatTheirFirstLetterSays)
{
    const std::pair<char, std::vector<std::string_view>> families[] = {
        {'F', {"", "COMPONENT"}},
        {'G', {"GROUP", "GROUP COMPONENT"}},
        {'W', {"WELL", "WELL COMPLETION", "WELL COMPONENT"}},
        {'C', {"WELL I J K"}},
        {'S', {"WELL SEGMENT"}},
        {'R', {"REGION", "FROM TO"}},
        {'B', {"I J K", "I J K COMPONENT"}},
        {'A', {"AQUIFER", "LIST"}},
        {'L', {"LGR WELL", "LGR WELL I J K", "LGR I J K"}},
    };
    // Switches of the output, and results of the run itself.
    const std::vector<std::string_view> others = {"ALL",      "CPUTIME",  "ELAPSED", "LINEARS", "LOTUS",
                                                  "RPTONLY",  "RPTONLYO", "RPTSMRY", "RUNSUM",  "SEPARATE",
                                                  "STEPTYPE", "SUMTHIN",  "WNEWTON"};
    int found = 0;
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        const std::string_view name = syntax->GetName();
        if (syntax->GetSection() != SectionType::SUMMARY) continue;
        if (std::find(others.begin(), others.end(), name) != others.end()) continue;
        const auto family = std::find_if(std::begin(families), std::end(families),
                                         [&](const auto& candidate) { return candidate.first == name.front(); });
        if (family == std::end(families)) continue;
        ++found;
        std::string words;
        const IKeywordMD* md = syntax->GetMetaData();
        if (const IKeywordRecordMD* record = RecordOf(md)) {
            for (int i = 0; i < record->GetItemCount(); ++i)
                words += (i > 0 ? " " : "") + record->GetItemName(i);
        } else if (md) {
            words = static_cast<const IKeywordListMD*>(md)->GetElementMD()->GetName();
        }
        EXPECT_NE(std::find(family->second.begin(), family->second.end(), words), family->second.end())
            << name << " takes \"" << words << '"';
    }
    EXPECT_GT(found, 1000);
}

TEST(CatalogueDefinitions, ALoneTerminatorEndsAListOfRecords)
{
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        const IKeywordMD* md = syntax->GetMetaData();
        if (!md || md->GetType() != MDType::List) continue;
        const auto* list = static_cast<const IKeywordListMD*>(md);
        if (list->GetTermination() != Termination::Slash || list->GetElementMD()->GetType() != MDType::Record) continue;
        const auto* record = static_cast<const IKeywordRecordMD*>(list->GetElementMD());
        // Multipliers between one region and all others leave out the first; a lone "/" at their end ends them too.
        const bool isBetweenRegions = syntax->GetName().starts_with("MULTREG") && record->GetItemName(0) == "FROM";
        EXPECT_EQ(record->IsItemDefaultable(0), isBetweenRegions) << syntax->GetName();
    }
}

/// A definition that nobody is sure of takes any words, so that it refuses no deck.
TEST(CatalogueDefinitions, FewAreUnsureAndThoseTakeWords)
{
    int unsure = 0;
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        if (syntax->GetConfidence() != "low") continue;
        ++unsure;
        for (ConstMetaDataIterator it(syntax->GetMetaData()); !it.AtEnd(); it.Next()) {
            EXPECT_NE(it.Get()->GetType(), MDType::YesNo) << syntax->GetName();
            EXPECT_NE(it.Get()->GetType(), MDType::Option) << syntax->GetName();
        }
    }
    EXPECT_LE(unsure, 60);
}

/// A dimension that nobody knows would be shown in the place of a unit.
TEST(CatalogueDefinitions, UnitsAreMadeOfTheDimensionsThatAreTold)
{
    std::ifstream file(DECK_SOURCE_DIR "/docs/catalogue.md");
    std::stringstream text;
    text << file.rdbuf();
    std::string told = text.str();
    told = told.substr(told.find("## Dimensions"));
    told.resize(told.find("A test holds"));
    int found = 0;
    for (const IKeywordSyntax* syntax : KeywordSyntaxTable::Instance(false, true)->GetSyntaxes()) {
        for (ConstMetaDataIterator it(syntax->GetMetaData()); !it.AtEnd(); it.Next()) {
            if (it.Get()->GetType() != MDType::Real) continue;
            std::string_view unit = static_cast<const IKeywordItemMD*>(it.Get())->GetUnitDimension();
            for (std::size_t end = 0; !unit.empty(); unit.remove_prefix(std::min(end + 1, unit.size()))) {
                end = std::min(unit.find_first_of("*/"), unit.size());
                ++found;
                EXPECT_NE(told.find("`" + std::string(unit.substr(0, end)) + "`"), std::string::npos)
                    << syntax->GetName() << ": " << unit;
            }
        }
    }
    EXPECT_GT(found, 500);
}

TEST(CatalogueDefinitions, FileNamesKeepTheirCase)
{
    for (const char* name : {"INCLUDE", "GDFILE", "ORDGRID", "IMPORT", "RESTART", "PATHS"}) {
        const IKeywordRecordMD* record = RecordOf(Find(name)->GetMetaData());
        ASSERT_NE(record, nullptr) << name;
        ASSERT_EQ(record->GetItemMD(0)->GetType(), MDType::String) << name;
        EXPECT_TRUE(static_cast<const IKeywordStringMD*>(record->GetItemMD(0))->PreservesCase()) << name;
    }
}

} // namespace
