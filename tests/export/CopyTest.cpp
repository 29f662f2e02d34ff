#include "export/ExporterUtil.h"
#include "files/ExportedFileMap.h"
#include "keywords/ForceRewrite.h"
#include "tests/support/DeckTest.h"
#include "text/LineFileWriter.h"
#include <deckmanager/Context.h>
#include <deckmanager/Exporter.h>
#include <tarn/service/FileName.h>
#include <tarn/service/LogEnabler.h>

namespace {

using namespace DeckTests;

class CopyTest : public testing::Test
{
protected:
    CopyTest() { LineEnds::SetPolicy(LineEnds::Policy::Keep); }

    static bool Copy(const TestDeck& deck, SimulatorType simulator = SimulatorType::Any, bool rewrite = false)
    {
        return deck.Keywords().ExportToDirectory(deck.Dir().Path("copy"), simulator, rewrite);
    }
    static std::string Copied(const TestDeck& deck, const std::string& name) { return deck.Dir().Read("copy/" + name); }

    TestSupport::CleanEnvironment m_environment;
    LogRecorder m_log;
};

struct Case
{
    const char* what;
    TestDeck::Texts files;
    TestDeck::Texts copies;
};

TEST_F(CopyTest, FilesLieSideBySideAndDifferInTheNamesAlone)
{
    const std::string bom = "\xEF\xBB\xBF";
    const std::string bytes("GAS \0 \r\nPORO\r\n1\0 2 /\n-- \r \n", 27);
    const Case cases[] = {
        {"a tree of files, and all that stands around a name",
         {{"A.DATA", "-- head\nRUNSPEC\nINCLUDE -- why\n-- c\n  'sub/b.inc'  /  it\n-- above\nGRID\n\n-- last\n"},
          {"sub/b.inc", "-- b\nOIL\nINCLUDE\n'sub/deep/c.inc' /\n"},
          {"sub/deep/c.inc", "-- c\n"}},
         {{"A.DATA", "-- head\nRUNSPEC\nINCLUDE -- why\n-- c\n  'b.inc'  /  it\n-- above\nGRID\n\n-- last\n"},
          {"b.inc", "-- b\nOIL\nINCLUDE\n'c.inc' /\n"},
          {"c.inc", "-- c\n"}}},
        {"names without quotes",
         {{"A.DATA",
           "RUNSPEC\nINCLUDE\nb.inc/ one\nINCLUDE\n s\\c.inc--two\n/\nINCLUDE\ns\\c.inc,3 /\nINCLUDE\n1*s\\c.inc /\n"
           "INCLUDE\ns\\c'd'.inc /\nINCLUDE\n's\\c.inc'x /\n"},
          {"b.inc", "OIL\n"},
          {"s/c.inc", "GAS\n"},
          {"s/c'd'.inc", "WATER\n"}},
         {{"A.DATA",
           "RUNSPEC\nINCLUDE\nb.inc/ one\nINCLUDE\n 'c.inc'--two\n/\nINCLUDE\n'c.inc',3 /\nINCLUDE\n'c.inc' /\n"
           "INCLUDE\n'c_d_.inc' /\nINCLUDE\n'c.inc'x /\n"},
          {"b.inc", "OIL\n"},
          {"c.inc", "GAS\n"},
          {"c_d_.inc", "WATER\n"}}},
        {"one file twice, two files of one leaf",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'a/x.inc' /\nINCLUDE\n'b/x.inc' /\nINCLUDE\n'a/x.inc' /\n"},
          {"a/x.inc", "OIL\n"},
          {"b/x.inc", "GAS\n"}},
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'x.inc' /\nINCLUDE\n'x_1.inc' /\nINCLUDE\n'x.inc' /\n"},
          {"x.inc", "OIL\n"},
          {"x_1.inc", "GAS\n"}}},
        {"a file of the leaf of the top file",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'a/A.DATA' /\n"}, {"a/A.DATA", "OIL\n"}},
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'A_1.DATA' /\n"}, {"A_1.DATA", "OIL\n"}}},
        {"a file that isn't there, and takes no other's name",
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'a/x.inc' /\nINCLUDE\n'b/x.inc' /\nINCLUDE\n/\nINCLUDE\n'$V/x.inc' /\n"},
          {"b/x.inc", "GAS\n"}},
         {{"A.DATA", "RUNSPEC\nINCLUDE\n'x.inc' /\nINCLUDE\n'x_1.inc' /\nINCLUDE\n/\nINCLUDE\n'$V/x.inc' /\n"},
          {"x_1.inc", "GAS\n"}}},
        {"suppressed and ended",
         {{"A.DATA",
           "RUNSPEC\n--@@@INCLUDE\n--@@@'a/x.inc' /\n-- above\nINCLUDE\n'a/y.inc' /\nEND\n-- more\n1 2\nGRID"},
          {"a/x.inc", "OIL\n"},
          {"a/y.inc", "GAS\nENDINC\nrest\n"}},
         {{"A.DATA", "RUNSPEC\n--@@@INCLUDE\n--@@@'x.inc' /\n-- above\nINCLUDE\n'y.inc' /\nEND\n-- more\n1 2\nGRID"},
          {"x.inc", "OIL\n"},
          {"y.inc", "GAS\nENDINC\nrest\n"}}},
        {"sections that recur, unknown words, a region that is left open",
         {{"A.DATA", "RUNSPEC\nGRID\n-- a\nGRID\n-- b\nNOSUCH\n 1 /\nINCLUDE\n'a/x.inc' /\nNOSUCH\n\nRUNSPEC\n-- c\n"},
          {"a/x.inc", "-- d\nRUNSPEC\nNOSUCH\n 2 /\n-- e\nPORO\nRUNSPEC"}},
         {{"A.DATA", "RUNSPEC\nGRID\n-- a\nGRID\n-- b\nNOSUCH\n 1 /\nINCLUDE\n'x.inc' /\nNOSUCH\n\nRUNSPEC\n-- c\n"},
          {"x.inc", "-- d\nRUNSPEC\nNOSUCH\n 2 /\n-- e\nPORO\nRUNSPEC"}}},
        {"marks, tags, line ends, bytes",
         {{"A.DATA", bom + "-- Generated\n\n-- head\nRUNSPEC                              -- "
                           "Generated\r\n\tOIL\nINCLUDE\n'a/x.inc' /\n"},
          {"a/x.inc", bom + bytes}},
         {{"A.DATA", bom + "-- Generated\n\n-- head\nRUNSPEC                              -- "
                           "Generated\r\n\tOIL\nINCLUDE\n'x.inc' /\n"},
          {"x.inc", bom + bytes}}},
        {"a grid file under two names",
         {{"A.DATA", "GRID\nGDFILE\n'h/C.EGRID' /\nGDFILE\n'g/C.EGRID' /\nGDFILE\n'm/C.GRID' /\nGDFILE\n'n/C.GRID' "
                     "/\nGDFILE\n'g/C' /\n"},
          {"h/C.EGRID", "1"},
          {"g/C.EGRID", "2"},
          {"m/C.GRID", "3"},
          {"n/C.GRID", "4"},
          {"g/C.GRID", "5"}},
         {{"A.DATA", "GRID\nGDFILE\n'C.EGRID' /\nGDFILE\n'C_1.EGRID' /\nGDFILE\n'C.GRID' /\nGDFILE\n'C_1.GRID' "
                     "/\nGDFILE\n'C_2' /\n"},
          {"C.EGRID", "1"},
          {"C_1.EGRID", "2"},
          {"C.GRID", "3"},
          {"C_1.GRID", "4"},
          {"C_2.EGRID", "2"},
          {"C_2.GRID", "5"}}},
        {"grid files",
         {{"A.DATA", "GRID\nGDFILE\n 'g/CASE' F /\n-- above\nGDFILE\n'g/ONE.EGRID' /\nINCLUDE\n'x.inc' /\n"},
          {"x.inc", "GDFILE\n 'h/CASE' /\nGDFILE\n'nowhere/CASE' /\n"},
          {"g/CASE.EGRID", "1"},
          {"g/CASE.FEGRID", "2"},
          {"g/CASExEGRID", "3"},
          {"g/ONE.EGRID", "4"},
          {"h/CASE.GRID", "5"},
          {"h/CASE.EGRID", "6"}},
         {{"A.DATA", "GRID\nGDFILE\n 'CASE' F /\n-- above\nGDFILE\n'ONE.EGRID' /\nINCLUDE\n'x.inc' /\n"},
          {"x.inc", "GDFILE\n 'CASE_1' /\nGDFILE\n'CASE' /\n"},
          {"CASE.EGRID", "1"},
          {"CASE.FEGRID", "2"},
          {"ONE.EGRID", "4"},
          {"CASE_1.GRID", "5"},
          {"CASE_1.EGRID", "6"}}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        const TestDeck deck(c.files);
        EXPECT_TRUE(Copy(deck));
        for (const auto& [name, text] : c.copies)
            EXPECT_EQ(Copied(deck, name), text) << name;
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(deck.Dir().Path("copy")))
            count += entry.is_regular_file() ? 1 : 0;
        EXPECT_EQ(count, c.copies.size());
        for (const auto& [name, text] : c.files)
            EXPECT_EQ(deck.Dir().Read(name), text);
    }
    EXPECT_EQ(m_log.Count(3), 0) << m_log.Texts(3).front();
}

TEST_F(CopyTest, WhatBringsNothingInIsTold)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA",
         "RUNSPEC\nINCLUDE\n'gone.inc' /\nINCLUDE\n/\nINCLUDE\n'A.DATA' /\nINCLUDE\n'd' /\nGDFILE\n/\nGDFILE\n'C' /\n"},
        {"d/x", ""}});
    const auto told = [&](const ExportReport& report) {
        std::string names;
        for (const ExportReport::File& file : report.files) {
            if (file.action == ExportReport::Action::Missing)
                names +=
                    std::to_string(file.keyword->GetLine()) + "=" + Service::FileName(file.from).GetFileName() + " ";
        }
        return names;
    };
    ExportReport copy;
    EXPECT_TRUE(Exporter::CopyToDirectory(deck.Keywords(), deck.Dir().Path("copy"), "", ExportOptions(), &copy));
    EXPECT_EQ(told(copy), "2=gone.inc 4= 10= 12=C ");
    ExportReport flat;
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), deck.Keywords().Begin(), deck.Keywords().End(),
                                             deck.Dir().Path("flat.DATA"), ExportOptions(), &flat));
    EXPECT_EQ(told(flat), "2=gone.inc 4= ");
    ExportReport clone;
    EXPECT_NE(Exporter::CopyToSameDir(deck.Keywords(), "_X", ExportOptions(), &clone), "");
    EXPECT_EQ(told(clone), told(flat));
    EXPECT_EQ(deck.Dir().Read("A_X.DATA"), "RUNSPEC\nINCLUDE\n'gone.inc' /\nINCLUDE\n/\nINCLUDE\n'A_X.DATA' "
                                           "/\nINCLUDE\n'd' /\nGDFILE\n/\nGDFILE\n'C' /\n");
    // A ring, and a folder: told when the deck was read.
    EXPECT_EQ(m_log.Count(3), 2);
}

/// What the writer of a file's text says of it is what a reader of that text finds.
TEST_F(CopyTest, WhereTheHeaderAndTheTailHaveComeToStand)
{
    Environment::Instance().EnableSKIPENDSKIP(true, SimulatorType::S100);
    const std::string bom = "\xEF\xBB\xBF";
    const std::string keywords = "RUNSPEC\nOIL\nINCLUDE\n'a/longer/x.inc' /\n-- above\nGRID\n";
    for (const std::string& text :
         {keywords, "-- head\n\n" + keywords, bom + keywords, bom + "-- head\n" + keywords, "-- Generated\n" + keywords,
          "-- Generated\n\n-- head\n" + keywords, keywords + "SKIP\nPORO\n1 /\n",
          "-- head\n" + keywords + "RUNSPEC\n-- end", std::string("-- only this"), std::string()})
    {
        SCOPED_TRACE(text);
        const TestDeck deck(TestDeck::Texts{{"A.DATA", text}, {"a/longer/x.inc", "WATER\n"}});
        ExportedFileMap map;
        LineFileWriter writer;
        ASSERT_TRUE(writer.Open(deck.Dir().Path("B.DATA"), false));
        const FileWriteResult result =
            ExporterUtil::WriteForExport(deck.TopFile(), &writer, {Service::Directory(deck.Dir().Path("copy")), map},
                                         ExporterUtil::ContextOf(deck.Keywords()), SimulatorType::Any);
        EXPECT_TRUE(writer.Close() && result.ok);
        const TestDeck copy(TestDeck::Texts{{"A.DATA", deck.Dir().Read("B.DATA")}});
        copy.Walk();
        const std::string written = deck.Dir().Read("B.DATA");
        const auto stretch = [&](std::int64_t begin, std::int64_t end) {
            return begin < 0 ? std::string()
                             : written.substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
        };
        EXPECT_EQ(stretch(result.headerBegin, result.headerEnd + 1), copy.TopFile().HeaderText());
        EXPECT_EQ(stretch(result.tailBegin, static_cast<std::int64_t>(written.size())), copy.TopFile().TailText());
    }
}

TEST_F(CopyTest, OtherNameAndOldFiles)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOIL\nGRID\nGDFILE\n'g/C.EGRID' /\nINCLUDE\n'a/x.inc' /\n"},
                                        {"a/x.inc", "EDIT\n"},
                                        {"g/C.EGRID", "new"},
                                        {"copy/C.EGRID", "old"},
                                        {"copy/x.inc", "old"},
                                        {"copy/NEW.DATA", "old"}});
    EXPECT_TRUE(deck.Keywords().ExportToDirectory(deck.Dir().Path("copy"), "NEW.DATA", SimulatorType::Any, false));
    EXPECT_EQ(Copied(deck, "NEW.DATA"), "RUNSPEC\nOIL\nGRID\nGDFILE\n'C.EGRID' /\nINCLUDE\n'x.inc' /\n");
    EXPECT_EQ(Copied(deck, "x.inc"), "EDIT\n");
    // A grid may be what the host has made there.
    EXPECT_EQ(Copied(deck, "C.EGRID"), "old");
    EXPECT_FALSE(deck.Keywords().ExportToDirectory("copy", SimulatorType::Any, false));
    EXPECT_FALSE(deck.Keywords().ExportToDirectory(deck.Dir().Path("x/.."), SimulatorType::Any, false));
    EXPECT_TRUE(m_log.Empty()) << m_log.Texts().front();
}

TEST_F(CopyTest, WhatASimulatorLacksHandsOnTheCommentBelow)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nOPTIONS3\n 1 /\n-- above\nOIL\n"}});
    EXPECT_TRUE(Copy(deck, SimulatorType::S300));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\nOPTIONS3\n 1 /\n-- above\nOIL\n");
    EXPECT_TRUE(Copy(deck, SimulatorType::S100));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\n-- above\nOIL\n");
    // Only a copy leaves keywords out.
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), deck.Keywords().Begin(), deck.Keywords().End(),
                                             deck.Dir().Path("flat.DATA"), SimulatorType::S100));
    EXPECT_EQ(deck.Dir().Read("flat.DATA"), deck.Dir().Read("A.DATA"));
}

TEST_F(CopyTest, SkippedRegionsStay)
{
    Environment::Instance().EnableSKIPENDSKIP(true, SimulatorType::S100);
    const std::string text =
        "RUNSPEC\nOIL\nSKIP100\nGAS\n-- c\nENDSKIP\n-- above\nGRID\nSKIP\nPORO\n1 /\nENDSKIP\n-- tail";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text + ""}});
    EXPECT_EQ(deck.Walk(), "RUNSPEC OIL SKIP100 ENDSKIP GRID SKIP ENDSKIP");
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "A.DATA"), text);
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), "flat.DATA"));
    EXPECT_EQ(deck.Dir().Read("flat.DATA"), text);
}

TEST_F(CopyTest, ACommentedOutIncludeIsWrittenAsComment)
{
    const TestDeck deck(
        TestDeck::Texts{{"A.DATA", "RUNSPEC\nINCLUDE\n'a/x.inc' /\n-- above\nGRID\n"}, {"a/x.inc", "OIL\n"}});
    static_cast<Keyword*>(const_cast<IKeyword*>(*deck.At("INCLUDE")))->CommentOut();
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\n--INCLUDE\n--'a/x.inc' /\n-- above\nGRID\n");
    EXPECT_FALSE(deck.Dir().Exists("copy/x.inc"));
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), "flat.DATA"));
    EXPECT_EQ(deck.Dir().Read("flat.DATA"), Copied(deck, "A.DATA"));
}

TEST_F(CopyTest, UncommittedDataGoAlong)
{
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nTABDIMS\n1 2 /\n-- above\nOIL\n"}});
    auto* keyword = static_cast<Keyword*>(const_cast<IKeyword*>(*deck.At("TABDIMS")));
    ASSERT_TRUE(keyword->SetDataText(" 3 4 /", false));
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\nTABDIMS\n 3 4 /\n-- above\nOIL\n");
    EXPECT_EQ(deck.Dir().Read("A.DATA"), "RUNSPEC\nTABDIMS\n1 2 /\n-- above\nOIL\n");
    // In a file without a line end they take that of the top file.
    const TestDeck other(TestDeck::Texts{{"A.DATA", "RUNSPEC\r\nINCLUDE\r\n'x.inc' /"}, {"x.inc", "EQLDIMS"}});
    ASSERT_TRUE(static_cast<Keyword*>(const_cast<IKeyword*>(*other.At("EQLDIMS")))->SetDataText(" 2 /", false));
    EXPECT_TRUE(Copy(other));
    EXPECT_EQ(Copied(other, "x.inc").substr(0, 13), "EQLDIMS\r\n 2 /");
}

TEST_F(CopyTest, RewritingIsOnForTheLengthOfTheCopy)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA", "RUNSPEC -- r\nTABDIMS\n-- c\n   1   2\n  3 / x\n-- above\nINCLUDE\n  'a/x.inc'  /\n-- end\n"},
        {"a/x.inc", "EQLDIMS\n  1\n /\n"}});
    EXPECT_TRUE(Copy(deck, SimulatorType::Any, true));
    EXPECT_FALSE(ForceRewrite::IsOn());
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC -- r\nTABDIMS\n-- c\n  1 2 3 /\n-- above\nINCLUDE\n'x.inc' /\n-- end\n");
    EXPECT_EQ(Copied(deck, "x.inc"), "EQLDIMS\n  1 /\n");
}

TEST_F(CopyTest, ARewriteCopiesWhatDoesNotRead)
{
    const struct
    {
        const char* text;
        const char* copy; // empty: the text
    } cases[] = {
        {"TABDIMS\n1  x 3 /\n", ""},
        {"EQLDIMS\n1  2 3 4 5 6 /\n", ""},
        {"EQLDIMS\n1  2 3 4 5 6\n", ""}, // what is too much is lost without its terminator too
        {"EQLDIMS\n1  2 3 4 5\n-- b\n", "EQLDIMS\n  1 2 3 4 5 /\n-- b\n"},
        {"PORO\n0.1  0.2 abc 0.4 /\n", ""},
        {"TSTEP\n1  1* 3 /\n", ""},
        {"PORO\n0.1  0.2\n", "PORO\n  0.1 0.2 /\n"},
        {"TSTEP\n1  2 'x\n/\n", ""},
        {"WELSPECS\nA  G one 2 /\n/\n", ""},
        {"RPTRST\nBASIC=2  NOSUCH=1 /\n", ""},
        {"RPTRST\nBASIC=2  FREQ /\n", "RPTRST\n  BASIC=2 FREQ /\n"},
        {"--@@@TABDIMS\n--@@@1  x 3 /\n", ""},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.text);
        const std::string text = c.text;
        const TestDeck deck(TestDeck::Texts{{"A.DATA", text}});
        const Service::LogEnabler quiet(!text.starts_with("TABDIMS")); // a host that shows no messages loses no more
        for (const bool isRead : {false, true}) {
            if (isRead) deck.Keywords().GetKeywordData(*deck.Keywords().Begin());
            EXPECT_TRUE(Copy(deck, SimulatorType::Any, true));
            EXPECT_EQ(Copied(deck, "A.DATA"), *c.copy ? c.copy : text);
        }
    }
    // A keyword that isn't there may leave a size open.
    const std::string text = "RUNSPEC\nPROPS\nSWFN\n0.1  0 0\n0.2 1 1 /\n";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", text}});
    EXPECT_TRUE(Copy(deck, SimulatorType::Any, true));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\nPROPS\nSWFN\n  0.1 0.0 0.0\n  0.2 1 1\n  /\n");
}

TEST_F(CopyTest, CrLfIsTheDefaultOfTheLibrary)
{
    LineEnds::SetPolicy(LineEnds::Policy::CrLf);
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "-- h\nRUNSPEC\r\nINCLUDE\n'x.inc' /\n-- end"}, {"x.inc", "OIL"}});
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "A.DATA"), "-- h\r\nRUNSPEC\r\nINCLUDE\r\n'x.inc' /\r\n-- end");
    EXPECT_EQ(Copied(deck, "x.inc"), "OIL");
}

TEST_F(CopyTest, AliasesGoWithTheirNames)
{
    Environment::Instance().SetPATHSSupport(true);
    const std::string paths = "PATHS\n'DIR' 'a/b' /\n/\n";
    const std::string grid = "GRID\nGDFILE\n'$DIR/C.EGRID' /\n";
    const TestDeck deck(TestDeck::Texts{{"A.DATA", "RUNSPEC\nINCLUDE\n'p.inc' /\nINCLUDE\n'$DIR/x.inc' /\n" + grid},
                                        {"p.inc", paths},
                                        {"a/b/x.inc", "OIL\n"},
                                        {"a/b/C.EGRID", "grid"}});
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "A.DATA"), "RUNSPEC\nINCLUDE\n'p.inc' /\nINCLUDE\n'x.inc' /\nGRID\nGDFILE\n'C.EGRID' /\n");
    EXPECT_EQ(Copied(deck, "p.inc"), paths);
    EXPECT_EQ(Copied(deck, "x.inc"), "OIL\n");
    EXPECT_EQ(Copied(deck, "C.EGRID"), "grid");
    EXPECT_FALSE(Exporter::ExportToSingleFile(deck.Keywords(), deck.Keywords().Begin(), deck.Keywords().End(),
                                              deck.Dir().Path("a/b/C.EGRID"), SimulatorType::Any));
}

TEST_F(CopyTest, ALongChainOfFiles)
{
    TestDeck::Texts files{{"A.DATA", "RUNSPEC\nINCLUDE\n'd/f0.inc' /\n-- up\n"}};
    constexpr int length = 1000;
    for (int i = 0; i < length; ++i) {
        files.emplace_back("d/f" + std::to_string(i) + ".inc",
                           i + 1 < length
                               ? "INCLUDE\n'd/f" + std::to_string(i + 1) + ".inc' /\n-- " + std::to_string(i) + "\n"
                               : "OIL\n");
    }
    const TestDeck deck(files);
    EXPECT_TRUE(Copy(deck));
    EXPECT_EQ(Copied(deck, "f999.inc"), "OIL\n");
    EXPECT_EQ(Copied(deck, "f500.inc"), "INCLUDE\n'f501.inc' /\n-- 500\n");
    EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), "flat.DATA"));
    const std::string flat = deck.Dir().Read("flat.DATA");
    EXPECT_EQ(flat.substr(0, 27), "RUNSPEC\nOIL\n-- 998\n-- 997\n-");
    EXPECT_EQ(flat.substr(flat.size() - 16), "-- 1\n-- 0\n-- up\n");
}

TEST_F(CopyTest, FileMapTakesEachNameOnce)
{
    const TestSupport::TempDir dir;
    ExportedFileMap map;
    EXPECT_TRUE(map.Add(dir.File("a"), dir.File("x")));
    EXPECT_FALSE(map.Add(dir.File("a"), dir.File("y")));
    EXPECT_FALSE(map.Add(dir.File("b"), dir.File("x")));
    EXPECT_FALSE(map.Add(dir.File("c"), dir.File("c")));
    EXPECT_TRUE(map.HasOld(dir.File("s/../a")) && map.HasNew(dir.File("x")) && !map.HasNew(dir.File("y")));
    EXPECT_EQ(map.NewNameOf(dir.File("a")).GetFullName(), dir.Path("x"));
    EXPECT_FALSE(map.NewNameOf(dir.File("b")).IsSet());
}

TEST_F(CopyTest, CopiesBesideTheDeck)
{
    const TestDeck deck(TestDeck::Texts{
        {"A.DATA", "-- head\nRUNSPEC\nINCLUDE\n 'a/x.inc' / c\n-- above\nINCLUDE\n'gone.inc' /\nGRID\n"},
        {"a/x.inc", "-- x\nOIL\n-- t\n"}});
    std::vector<std::string> failed;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_X", failed), deck.Dir().Path("A_X.DATA"));
    EXPECT_TRUE(failed.empty());
    EXPECT_EQ(deck.Dir().Read("A_X.DATA"),
              "RUNSPEC\nINCLUDE\n 'a/x_X.inc' / c\n-- above\nINCLUDE\n'gone.inc' /\nGRID\n");
    EXPECT_EQ(deck.Dir().Read("a/x_X.inc"), "OIL\n-- t\n");
    EXPECT_FALSE(deck.Dir().Exists("gone_X.inc"));

    ExportReport report;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_Y", ExportOptions(), &report), deck.Dir().Path("A_Y.DATA"));
    EXPECT_EQ(deck.Dir().Read("A_Y.DATA"),
              "-- head\nRUNSPEC\nINCLUDE\n 'a/x_Y.inc' / c\n-- above\nINCLUDE\n'gone.inc' /\nGRID\n");
    EXPECT_EQ(deck.Dir().Read("a/x_Y.inc"), "-- x\nOIL\n-- t\n");
    ASSERT_EQ(report.files.size(), 3u);
    EXPECT_EQ(report.files[2].action, ExportReport::Action::Missing);

    EXPECT_EQ(Exporter::ExportToSingleFileSuffix(deck.Keywords(), "_F"), deck.Dir().Path("A_F.DATA"));
    EXPECT_EQ(deck.Dir().Read("A_F.DATA"), "RUNSPEC\nOIL\n-- t\n-- above\nGRID\n");
}

TEST_F(CopyTest, ASuffixThatNoNameInADeckCanHave)
{
    const TestDeck deck(
        TestDeck::Texts{{"A.DATA", "RUNSPEC\nINCLUDE\n'x.inc' /\n-- above\nGRID\n"}, {"x.inc", "OIL\n"}});
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "'s", ExportOptions(), nullptr), "");
    EXPECT_TRUE(m_log.Contains("The file " + deck.Dir().Path("x's.inc") +
                               " cannot be written: its name cannot stand in a deck."));
    EXPECT_FALSE(deck.Dir().Exists("A's.DATA") || deck.Dir().Exists("x's.inc"));
    std::vector<std::string> failed;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "'s", failed), deck.Dir().Path("A's.DATA"));
    EXPECT_EQ(failed, std::vector<std::string>{deck.Dir().Path("x's.inc")});
    EXPECT_EQ(deck.Dir().Read("A's.DATA"), "RUNSPEC\n-- above\nGRID\n");
}

TEST_F(CopyTest, TheSuffixGoesAheadOfTheLastDotOfTheName)
{
    const TestDeck deck(TestDeck::Texts{{"run.old/CASE", "RUNSPEC\n"}});
    std::vector<std::string> failed;
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_X", failed), "");
    EXPECT_EQ(failed, std::vector<std::string>{deck.Dir().Path("run_X.old/CASE")});
    EXPECT_EQ(Exporter::CopyToSameDir(deck.Keywords(), "_X", ExportOptions(), nullptr),
              deck.Dir().Path("run.old/CASE_X"));
}

TEST_F(CopyTest, RangesOfADeck)
{
    const TestDeck deck(
        TestDeck::Texts{{"A.DATA", "-- head\nRUNSPEC\n-- 1\nINCLUDE\n'x.inc' /\n-- 2\nGRID\n-- 3\nEDIT\nEND\nPROPS\n"},
                        {"x.inc", "-- x\nOIL\n\n-- 4\nGAS\n\n-- 5\n"}});
    const std::string out = deck.Dir().Path("r/out.DATA");
    const auto range = [&](const auto& begin, const auto& end) { // of the deck, or of one file
        EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), begin, end, out, SimulatorType::Any));
        return deck.Dir().Read("r/out.DATA");
    };
    const auto whole = [&](const KeywordIterator& begin, const KeywordIterator& end) {
        EXPECT_TRUE(Exporter::ExportToSingleFile(deck.Keywords(), begin, end, out, ExportOptions(), nullptr));
        return deck.Dir().Read("r/out.DATA");
    };
    EXPECT_EQ(range(deck.At("GAS"), deck.At("EDIT")), "GAS\n\n-- 5\n-- 2\nGRID\n-- 3\n");
    EXPECT_EQ(whole(deck.At("GAS"), deck.At("EDIT")), "-- 4\nGAS\n\n-- 5\n-- 2\nGRID\n-- 3\n");
    EXPECT_EQ(range(deck.At("INCLUDE"), deck.At("GAS")), "OIL\n\n-- 4\n");
    EXPECT_EQ(range(deck.At("GRID"), deck.At("PROPS")), "GRID\n-- 3\nEDIT\nEND\n");
    // An end that the walk doesn't come to.
    EXPECT_EQ(range(deck.At("GRID"), deck.At("RUNSPEC")), "GRID\n-- 3\nEDIT\n");
    EXPECT_EQ(range(deck.At("GRID"), KeywordIterator()), "GRID\n-- 3\nEDIT\n");
    EXPECT_EQ(range(deck.At("PROPS"), deck.At("RUNSPEC")), "PROPS\n");
    // Ahead of the end of the deck, in a place that no walk comes to from above.
    const TestDeck ended(
        TestDeck::Texts{{"A.DATA", "RUNSPEC\nINCLUDE\n'x.inc' /\nGRID\n"}, {"x.inc", "OIL\nENDINC\nGAS\n"}});
    EXPECT_TRUE(Exporter::ExportToSingleFile(ended.Keywords(), ended.At("GAS"), ended.Keywords().End(), out,
                                             SimulatorType::Any));
    EXPECT_EQ(deck.Dir().Read("r/out.DATA"), "GAS\nGRID\n");
    // In one file an include brings nothing in.
    KeywordFile& top = deck.TopFile();
    EXPECT_EQ(range(top.Begin(), top.End()), "RUNSPEC\n-- 1\n-- 2\nGRID\n-- 3\nEDIT\nEND\nPROPS\n");
    EXPECT_EQ(range(deck.Keywords().GetFileIterator(deck.At("EDIT")), top.Begin()), "EDIT\nEND\nPROPS\n");
    EXPECT_EQ(range(deck.Keywords().GetFileIterator(deck.At("EDIT")), KeywordFileIterator()), "EDIT\nEND\nPROPS\n");
    EXPECT_FALSE(Exporter::ExportToSingleFile(deck.Keywords(), " \t"));
    EXPECT_TRUE(m_log.Empty());
}

} // namespace
