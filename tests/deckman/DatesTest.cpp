#include "tests/deckman/Program.h"

namespace DeckmanTests {

namespace {

struct Case
{
    const char* what;
    const char* runspec;
    const char* schedule;
    const char* moments; // date and days of each but START, `-` for null
    int status;
    const char* message;
};

const char* const start = "START\n 1 JAN 2020 /\n";

const Case cases[] = {
    {"dates, also of several records", start, "DATES\n 1 FEB 2020 /\n 1 'JLY' 2020 /\n/\n",
     "2020-02-01 31.0; 2020-07-01 182.0; ", 0, ""},
    {"leap day and times of day", start, "DATES\n 29 FEB 2020 /\n 1 MAR 2020 06:30:00.25 /\n/\n",
     "2020-02-29 59.0; 2020-03-01T06:30:00.250 60.270836227; ", 0, ""},
    {"steps add up, behind dates too", start, "TSTEP\n 3*0.1 /\nDATES\n 1 FEB 2020 /\n/\nTSTEP\n 2*14 /\n",
     "2020-01-01T02:24:00 0.1; 2020-01-01T04:48:00 0.2; 2020-01-01T07:12:00 0.3; 2020-02-01 31.0; 2020-02-15 45.0; "
     "2020-02-29 59.0; ",
     0, ""},
    {"hours of a laboratory deck", "LAB\nSTART\n 1 JAN 2020 /\n", "TSTEP\n 12 36 /\n",
     "2020-01-01T12:00:00 0.5; 2020-01-03 2.0; ", 0, ""},
    {"times since the start", start, "TIME\n 10 20 /\nTSTEP\n 1 /\n",
     "2020-01-11 10.0; 2020-01-21 20.0; 2020-01-22 21.0; ", 0, ""},
    {"what is suppressed doesn't count", start, "--@@@DATES\n--@@@ 1 FEB 2020 /\n--@@@/\nTSTEP\n 1 /\n",
     "2020-01-02 1.0; ", 0, ""},
    {"what is skipped doesn't count", "SKIP\nLAB\nSTART\n 1 JAN 1999 /\nENDSKIP\nSTART\n 1 JAN 2020 /\n",
     "SKIP\nDATES\n 1 FEB 2050 /\n/\nENDSKIP\nTSTEP\n 1 /\n", "2020-01-02 1.0; ", 0, ""},
    {"no such day", start, "DATES\n 31 FEB 2020 /\n 1 MAR 2020 /\n/\n", "2020-03-01 60.0; ", 1,
     "x.DATA:5: error: DATES[0] is no date: 31 FEB 2020."},
    {"half a date", start, "DATES\n 1 FEB /\n/\n", "", 1, "x.DATA:5: error: DATES[0] is no date: 1 FEB."},
    {"a start that is none", "START\n 31 APR 2020 /\n", "DATES\n 1 FEB 2020 /\n/\n", "2020-02-01 -; ", 1,
     "x.DATA:2: error: START is no date: 31 APR 2020."},
    {"no start", "OIL\n", "TSTEP\n 5 /\nDATES\n 1 FEB 2020 /\n/\nTSTEP\n 1 /\n", "- 5.0; 2020-02-01 -; 2020-02-02 -; ",
     1, "x.DATA: error: The deck has no START in its RUNSPEC section"},
    {"backwards by a date", start, "DATES\n 1 MAR 2020 /\n 1 FEB 2020 /\n/\n", "2020-03-01 60.0; 2020-02-01 31.0; ", 1,
     "x.DATA:5: error: Time runs backwards: DATES[1] is 2020-02-01, and the deck has come to 2020-03-01."},
    {"backwards by a step", start, "TSTEP\n 10 -1 /\n", "2020-01-11 10.0; 2020-01-10 9.0; ", 1,
     "x.DATA:5: error: Time runs backwards: TSTEP[1] is a step of -1 days"},
    {"ahead of the start", start, "DATES\n 1 JAN 2019 /\n/\n", "2019-01-01 -365.0; ", 1,
     "Time runs backwards: DATES[0]"},
    {"the same day again", start, "DATES\n 1 FEB 2020 /\n 1 FEB 2020 /\n/\n", "2020-02-01 31.0; 2020-02-01 31.0; ", 0,
     "x.DATA:5: warning: Time stands still: DATES[1] is 2020-02-01 again."},
    {"time is lost up to the next date", start, "TSTEP\n 10 $DT 10 /\nDATES\n 1 MAR 2020 /\n/\n",
     "2020-01-11 10.0; - -; 2020-03-01 60.0; ", 1, "x.DATA:5: error: TSTEP[1] is no number of days: $DT."},
    {"a step beyond all numbers", start, "TSTEP\n 10 1E999 10 /\nDATES\n 1 MAR 2020 /\n/\n",
     "2020-01-11 10.0; - -; 2020-03-01 60.0; ", 1, "x.DATA:5: error: TSTEP[1] is no number of days: inf."},
    {"steps that add up beyond all numbers", start, "TSTEP\n 1E308 1E308 /\n", "- 1e+308; - -; ", 0, ""},
};

} // namespace

TEST(Dates, FollowTheScheduleAndTellWhatIsWrongWithIt)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    for (const Case& c : cases) {
        folder.Write("x.DATA", std::string("RUNSPEC\n") + c.runspec + "SCHEDULE\n" + c.schedule);
        const Outcome outcome = Deckman({"dates", "x.DATA", "--json"}, run);
        EXPECT_EQ(outcome.status, c.status) << c.what;
        EXPECT_THAT(outcome.err, HasSubstr(c.message)) << c.what;
        std::string moments;
        for (const auto& row : JsonLines(outcome.out)) {
            if (row.at("days") == 0.0) continue; // START
            moments += row.at("date").is_null() ? "-" : row.at("date").get<std::string>();
            moments += " " + (row.at("days").is_null() ? "-" : row.at("days").dump()) + "; ";
        }
        EXPECT_EQ(moments, c.moments) << c.what;
    }
}

TEST(Dates, DeckWithoutScheduleIsToldSo)
{
    const TempDir folder;
    folder.Write("x.DATA", "RUNSPEC\nSTART\n 1 JAN 2020 /\nGRID\n");
    const Outcome outcome = Deckman({"dates", "x.DATA"}, {folder.Path()});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_THAT(outcome.out, HasSubstr("2020-01-01"));
    EXPECT_THAT(outcome.err, HasSubstr("x.DATA: error: The deck has no SCHEDULE section."));
}

TEST(Dates, DateOfAPlaceComesInManyForms)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    folder.Write("x.DATA", "RUNSPEC\nSTART\n 1 JAN 2020 /\nSCHEDULE\nWELTARG\n A ORAT 0 /\n/\n"
                           "DATES\n 5 JUL 2020 /\n/\nWELTARG\n A ORAT 1 /\n/\nWELTARG\n A ORAT 2 /\n/\n"
                           "DATES\n 5 JUL 2020 12:30:00 /\n/\nWELTARG\n A ORAT 3 /\n/\nOPTIMIZE\nOPTPARS\n/\n");
    const auto valueAt = [&run](const std::string& place, const std::string& date) {
        const Outcome outcome = Deckman({"get", "x.DATA", place, "--json", "--at", date}, run);
        return outcome.status == 0 ? outcome.out : outcome.err;
    };
    for (const char* date : {"2020-07-05", "5 JUL 2020", "5 jly 2020", "05-Jul-2020", "5.7.2020", "5 'JULY' 2020 00:00",
                             "2020-07-05T00:00:00.000", "2020/07/05 00:00:00", "186d", "186.0 days"})
        EXPECT_EQ(valueAt("WELTARG[A].VALUE", date), "1.0\n") << date;
    EXPECT_EQ(valueAt("WELTARG[A].VALUE", "2020-01-01"), "0.0\n");
    EXPECT_EQ(valueAt("WELTARG[A].VALUE", "5 JUL 2020 12:30"), "3.0\n");
    EXPECT_EQ(valueAt("WELTARG#2[A].VALUE", "5 JUL 2020"), "2.0\n") << "numbers count among what is in force";
    EXPECT_THAT(valueAt("WELTARG#2", "5 JUL 2020 12:30"),
                HasSubstr("There is 1 WELTARG in the deck at 5 JUL 2020 12:30"));
    EXPECT_THAT(valueAt("OPTPARS", "5 JUL 2020 12:30"), HasSubstr("There is no OPTPARS")) << "the schedule ends before";
    for (const char* date : {"2020-13-01", "30 FEB 2020", "5 7 2020", "5 JU 2020", "2020-07-05T25:00", "2020-07-05 12",
                             "100", "d", "nand", "5 JUL 2020 12:3x", "--json"})
        EXPECT_EQ(Deckman({"ls", "x.DATA", "--at=" + std::string(date)}, run).status, 2) << date;
}

TEST(Dates, SkippedTimeKeywordEndsNothing)
{
    const TempDir folder;
    const Launch run{folder.Path()};
    folder.Write("x.DATA", "RUNSPEC\nSTART\n 1 JAN 2020 /\nSCHEDULE\nDATES\n 1 FEB 2020 /\n/\nSKIP\nTSTEP\n 9 /\n"
                           "ENDSKIP\nWELTARG\n A ORAT 1 /\n/\n");
    for (const auto& more : {std::vector<std::string>{}, {"--simulator", "100"}}) {
        std::vector<std::string> arguments{"get", "x.DATA", "WELTARG[A].VALUE", "--at", "2020-02-01"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        const Outcome outcome = Deckman(arguments, run);
        EXPECT_EQ(outcome.out, "1\n") << outcome.err;
    }
}

} // namespace DeckmanTests
