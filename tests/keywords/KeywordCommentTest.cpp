#include "tests/support/DeckTest.h"

// The comment between a keyword's line and its data, as plain text.

namespace {

using namespace DeckTests;

TEST(KeywordCommentTest, ReadsTheCommentBelowTheKeywordLine)
{
    struct Case
    {
        const char* what;
        std::string text;
        const char* comment;
        const char* commentWithoutSuppression;
    };
    const Case cases[] = {
        {"two lines", "DIMENS\n-- so\n--  many \n1 2 3 /\n", " so\n  many", nullptr},
        {"no data", "OIL\n-- so\n--many\n\n-- above\nGAS\n", " so\nmany", nullptr},
        {"no data, and a blank line ahead", "OIL\n\n-- above\nGAS\n", "", nullptr},
        {"no data, and an indent", "OIL\n -- above\nGAS\n", "", nullptr},
        {"blank lines and an indent ahead of data", "DIMENS\n\n  -- so\n1 2 3 /\n", " so", nullptr},
        {"the first paragraph", "DIMENS\n-- so\n \n-- not\n1 2 3 /\n", " so", nullptr},
        {"one marker goes", "DIMENS\n------\n---- so\n  -- many\n1 2 3 /\n", "----\n-- so\n  -- many", nullptr},
        {"behind the tag", "DIMENS\n\n-- Generated\n--!!! Program generated\n-- so\n1 2 3 /\n", " so", nullptr},
        {"CR LF", "DIMENS\r\n-- so\r\n--many\r\n1 2 3 /\r\n", " so\nmany", nullptr},
        {"none behind the data", "DIMENS\n1 2 3 / -- so\n-- above\n", "", nullptr},
        {"of a suppressed keyword", "--@@@DIMENS\n--@@@-- so\n--@@@--many\n--@@@1 2 3 /\n", " so\nmany", ""},
        {"suppressed data are none", "DIMENS\n-- so\n--@@@1 2 3 /\n", " so", " so\n@@@1 2 3 /"},
        {"the end of the file", "OIL\n-- so", " so", nullptr},
    };
    for (const bool suppression : {true, false}) {
        const TestSupport::CleanEnvironment environment;
        Environment::Instance().EnableKeywordSuppression(suppression);
        for (const Case& test : cases) {
            SCOPED_TRACE(test.what);
            const TestDeck deck(TestDeck::Texts{{"A.DATA", "\nWATER\n\n" + test.text}});
            const KeywordIterator second = ++deck.Keywords().Begin();
            const char* expected =
                !suppression && test.commentWithoutSuppression ? test.commentWithoutSuppression : test.comment;
            EXPECT_EQ(*second != nullptr ? second->GetComment() : "", expected);
        }
    }
}

} // namespace
