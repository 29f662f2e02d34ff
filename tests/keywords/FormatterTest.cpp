#include "tests/keywords/DataReading.h"
#include "tests/support/TestDeck.h"
#include <deckmanager/KeywordFormatter.h>

namespace {

using Tarn::Fjel::Core::DeckManager::KeywordFormatter;

TEST(KeywordFormatter, Templates)
{
    const TestSupport::CleanEnvironment clean;
    const std::string data = "-- * This keyword contains data.  The data can be provided below the keyword name.\n"
                             "--   If none is provided, it will be defaulted.\n\n";
    const std::string none = "-- * This keyword has no data.\n\n";
    const std::string longName = "-- * Must provide a complete keyword name by replacing the * in the name below.\n";
    struct Case
    {
        std::string syntax, name, text;
    };
    const std::vector<Case> cases = {
        {"OIL", "", none + "OIL\n"},
        {"OIL", " \t", none + "OIL\n"},
        {"OIL", "GAS", none + "GAS\n"},
        {"PORO", "", data + "PORO\n  /"},
        {"TABDIMS", "", data + "TABDIMS\n  /"},
        {"WELSPECS", "", data + "WELSPECS\n  /"},
        {"RPTSCHED", "", data + "RPTSCHED\n  /"},
        {"SWOF", "", data + "SWOF\n"},
        {"INCLUDE", "", data + "INCLUDE\n  /"},
        {"PYINPUT", "", data + "PYINPUT\nPYEND"},
        {"VFPINJ", "", data + "VFPINJ\n  /\n  /\n  /"},
        {"FU*", "", longName + none + "FU*\n"},
        {"FU*", "FUOIL", longName + none + "FUOIL\n"},
    };
    for (const Case& c : cases) {
        const auto* const syntax =
            Tarn::Fjel::Core::DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax(c.syntax, true);
        ASSERT_NE(syntax, nullptr) << c.syntax;
        EXPECT_EQ(KeywordFormatter::CreationTemplate(*syntax, c.name), c.text);
    }
}

} // namespace
