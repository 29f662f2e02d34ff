// Prints how fast the system is: each piece of work beside its yardstick, measured in the same run, and whether the
// work keeps to its budget. Whole commands are timed from outside; the memory of keywords is measured in this process.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "benchmarks/CommandTimer.h"
#include "benchmarks/DataReading.h"
#include "benchmarks/DataWriting.h"
#include "benchmarks/KeywordMemory.h"
#include "benchmarks/KeywordRemoval.h"
#include "benchmarks/KeywordSorting.h"
#include "benchmarks/ProjectReopening.h"

namespace {

using Benchmarks::Command;
using Benchmarks::Run;

constexpr int repeats = 7;

const char* const rowFormat = "{:<44} {:>10} {:>30} {:>10} {:>7} {:>9}  {:<4} {:>9}\n";

void PrintRow(const std::string& work, const std::string& value, const std::string& yardstick,
              const std::string& yardstickValue, const std::string& ratio, const std::string& budget, bool met,
              const std::string& peak)
{
    fmt::print(fmt::runtime(rowFormat), work, value, yardstick, yardstickValue, ratio, budget, met ? "yes" : "NO",
               peak);
    std::fflush(stdout);
}

std::string Time(double seconds)
{
    return fmt::format("{:.1f} ms", seconds * 1000);
}

std::string Peak(const Run& run)
{
    return fmt::format("{:.1f} MB", static_cast<double>(run.peakKiB) / 1024);
}

/// A command against a yardstick; the budget is a multiple of the yardstick's time, and with `mostMiB` a peak.
bool CompareTimes(const std::string& work, const Command& command, const std::string& yardstick,
                  const Command& yardstickCommand, double budget, int mostMiB = 0)
{
    const std::vector<Run> runs = Benchmarks::MedianRuns({command, yardstickCommand}, repeats);
    const double ratio = runs[0].seconds / runs[1].seconds;
    const bool met = ratio <= budget && (mostMiB == 0 || runs[0].peakKiB <= 1024L * mostMiB);
    PrintRow(work, Time(runs[0].seconds), yardstick, Time(runs[1].seconds), fmt::format("{:.2f}", ratio),
             mostMiB == 0 ? fmt::format("{:.1f} x", budget) : fmt::format("{:.1f}x {}MB", budget, mostMiB), met,
             Peak(runs[0]));
    return met;
}

/// A command whose budget is a time.
bool CompareToTime(const std::string& work, const Command& command, double budgetSeconds)
{
    const std::vector<Run> runs = Benchmarks::MedianRuns({command, Command{{"/bin/true"}, {}}}, repeats);
    const bool met = runs[0].seconds <= budgetSeconds;
    PrintRow(work, Time(runs[0].seconds), "/bin/true", Time(runs[1].seconds),
             fmt::format("{:.1f}", runs[0].seconds / runs[1].seconds), fmt::format("{:.0f} ms", budgetSeconds * 1000),
             met, Peak(runs[0]));
    return met;
}

/// A read in this process against its yardstick.
bool CompareReading(const std::string& work, const Benchmarks::DataReadingResult& result, const std::string& yardstick,
                    double budget)
{
    const double ratio = result.seconds / result.yardstickSeconds;
    const bool met = ratio <= budget;
    PrintRow(work, Time(result.seconds), yardstick, Time(result.yardstickSeconds), fmt::format("{:.2f}", ratio),
             fmt::format("{:.1f} x", budget), met, fmt::format("{:.1f} MB", result.peakBytes / 1048576));
    return met;
}

/// A check of a whole deck against the bare read of its data in this process.
bool CompareCheck(const std::string& work, const std::string& deckman, const std::filesystem::path& deck, double budget)
{
    const Run run = Benchmarks::MedianRuns({Command{{deckman, "check", deck.string()}, {}}}, repeats).front();
    const double bare = Benchmarks::MeasureAllData(deck.string(), repeats);
    const double ratio = run.seconds / bare;
    PrintRow(work, Time(run.seconds), "all data read in-process", Time(bare), fmt::format("{:.2f}", ratio),
             fmt::format("{:.1f} x", budget), ratio <= budget, Peak(run));
    return ratio <= budget;
}

/// The last value of a long list, alone: the read in this process, and what the command takes beyond the opening of the
/// deck, whose budget is a time.
bool CompareElement(const std::string& deckman, const std::filesystem::path& deck, const std::string& keyword)
{
    constexpr double mostSeconds = 0.1;
    const Benchmarks::DataReadingResult result = Benchmarks::MeasureElement(deck.string(), keyword, repeats);
    const bool readMet = CompareReading(fmt::format("the last of {} values of {}", result.count, keyword), result,
                                        "read, and memchr of line ends", 2.5);
    const std::vector<Run> runs = Benchmarks::MedianRuns(
        {Command{{deckman, "get", deck.string(), fmt::format("{}[{}]", keyword, result.count - 1)}, {}},
         Command{{deckman, "get", deck.string(), "DIMENS"}, {}}},
        repeats);
    const double beyond = runs[0].seconds - runs[1].seconds;
    PrintRow("deckman get of it, beyond the opening", Time(beyond), "deckman get of DIMENS", Time(runs[1].seconds), "",
             fmt::format("{:.0f} ms", mostSeconds * 1000), beyond <= mostSeconds, Peak(runs[0]));
    return readMet && beyond <= mostSeconds;
}

/// The names of an unchanged deck of a project against a scan of it.
bool CompareReopening(const std::string& work, const std::filesystem::path& deck, bool binary, double budget)
{
    const Benchmarks::ReopeningResult result = Benchmarks::MeasureReopening(deck, binary, repeats);
    const double ratio = result.cachedSeconds / result.scanSeconds;
    const bool met = ratio <= budget;
    PrintRow(work, Time(result.cachedSeconds), "the scan in-process", Time(result.scanSeconds),
             fmt::format("{:.3f}", ratio), fmt::format("{:.2f} x", budget), met, "");
    if (!binary) return met;
    const bool sizeMet = result.keywords < 1000 || result.bytesPerKeyword <= 24;
    PrintRow("an entry of its cache, without the name", fmt::format("{:.1f} B", result.bytesPerKeyword),
             fmt::format("{} keywords", result.keywords), "", "", "24 B", sizeMet, "");
    return met && sizeMet;
}

/// A sort against that of half as many keywords, and against the scan of the deck.
int CompareSorting(const std::filesystem::path& folder, int keywords)
{
    const Benchmarks::SortingResult result = Benchmarks::MeasureSorting(folder, keywords, repeats);
    int missed = 0;
    const auto compare = [&](const std::string& work, const std::string& yardstick, double seconds, double budget) {
        const double ratio = result.seconds / seconds;
        missed += ratio > budget;
        PrintRow(work, Time(result.seconds), yardstick, Time(seconds), fmt::format("{:.2f}", ratio),
                 fmt::format("{:.1f} x", budget), ratio <= budget, "");
    };
    compare(fmt::format("sort {} keywords", keywords), fmt::format("sort {}", keywords / 2), result.halfSeconds, 2.3);
    compare("the same", "the scan in-process", result.scanSeconds, 2.0);
    return missed;
}

/// The removal of many keywords against that of a tenth: the time must grow as their number does, and a little more,
/// since few fit the processor's caches. With the square it would grow by a hundred.
bool CompareRemoval(const std::filesystem::path& folder, int keywords)
{
    const Benchmarks::RemovalResult result = Benchmarks::MeasureRemoval(folder, keywords, keywords / 10, repeats);
    constexpr double budget = 15;
    const double ratio = result.seconds / result.fewSeconds;
    PrintRow(fmt::format("remove {} keywords", keywords), Time(result.seconds), fmt::format("remove {}", keywords / 10),
             Time(result.fewSeconds), fmt::format("{:.2f}", ratio), fmt::format("{:.1f} x", budget), ratio <= budget,
             "");
    return ratio <= budget;
}

/// A write of ten million reals against its yardstick.
bool CompareWriting(const std::string& work, Benchmarks::Reals kind, double budget)
{
    const Benchmarks::DataWritingResult result = Benchmarks::MeasureWriting(kind, 10000000, repeats);
    const double ratio = result.seconds / result.yardstickSeconds;
    PrintRow(work, Time(result.seconds), "bare std::to_chars loop", Time(result.yardstickSeconds),
             fmt::format("{:.2f}", ratio), fmt::format("{:.1f} x", budget), ratio <= budget, "");
    return ratio <= budget;
}

Command List(const std::string& deckman, const std::filesystem::path& deck)
{
    return Command{{deckman, "ls", "--json", deck.string()}, {}};
}

Command Grep(const std::filesystem::path& deck)
{
    return Command{{"grep", "-c", "^[A-Z]", deck.string()}, {"LC_ALL=C"}};
}

/// A command of the shell that makes `made` afresh.
Command Making(const std::filesystem::path& made, const std::string& command)
{
    return Command{{"/bin/sh", "-c", fmt::format("rm -rf '{}' && {}", made.string(), command)}, {"LC_ALL=C"}};
}

/// A bare copy of a deck's file that waits for the disk, and a look at each of its lines. The copy before goes when
/// this one is whole, or ahead of it: what is made at the same time as it takes memory of its own.
bool CompareWithCopy(const std::string& work, const Command& command, const std::filesystem::path& deck, bool replaces,
                     double budget)
{
    const std::filesystem::path made = deck.parent_path() / "copied";
    const std::filesystem::path copied = deck.parent_path() / "copied.whole";
    std::string copying =
        fmt::format("dd if='{0}' of='{1}' bs=64k conv=fsync && grep -c '^[A-Z]' '{0}'", deck.string(), made.string());
    if (replaces) copying += fmt::format(" && mv '{}' '{}'", made.string(), copied.string());
    constexpr int mostMiB = 64;
    const bool met =
        CompareTimes(work, command, "dd conv=fsync and grep of the deck", Making(made, copying), budget, mostMiB);
    std::filesystem::remove(made);
    std::filesystem::remove(copied);
    return met;
}

bool CompareExport(const std::string& work, const std::string& deckman, const std::string& verb,
                   const std::filesystem::path& deck, const std::string& target, double budget)
{
    const std::filesystem::path made = deck.parent_path() / "export";
    const std::string exporting =
        fmt::format("'{}' {} '{}' {}'{}'", deckman, verb, deck.string(), target, made.string());
    const bool met = CompareWithCopy(work, Making(made, exporting), deck, false, budget);
    std::filesystem::remove_all(made);
    return met;
}

/// The end of an included file is looked at where more follows: that costs one look at the last of its keywords, which
/// is not held.
bool CompareListExport(const std::string& deckman, const std::filesystem::path& folder)
{
    constexpr int rows = 2500000;
    const std::filesystem::path deck = folder / "LIST.DATA";
    const std::filesystem::path whole = folder / "WHOLE.DATA";
    const std::filesystem::path list = folder / "LIST.INC";
    const std::filesystem::path made = folder / "export";
    std::ofstream(deck) << "RUNSPEC\nSCHEDULE\nINCLUDE\n 'LIST.INC' /\nTSTEP\n 1 /\n";
    for (const std::filesystem::path& file : {list, whole}) {
        std::ofstream text(file);
        text << (file == whole ? "RUNSPEC\nSCHEDULE\nWELSPECS\n" : "WELSPECS\n");
        for (int i = 0; i < rows; ++i)
            text << fmt::format(" 'P{}' G 1 1 1* OIL /\n", i);
        text << (file == whole ? "/\nTSTEP\n 1 /\n" : "/\n");
    }
    const auto flatten = [&](const std::filesystem::path& from) {
        return Making(made, fmt::format("'{}' flatten '{}' -o '{}'", deckman, from.string(), made.string()));
    };
    constexpr int mostMiB = 64;
    const bool met = CompareTimes("deckman flatten, a list of 70 MB in an include", flatten(deck),
                                  "deckman flatten of one file", flatten(whole), 2.0, mostMiB);
    for (const std::filesystem::path& file : {deck, whole, list, made})
        std::filesystem::remove(file);
    return met;
}

/// One item of a deck gets a value that it didn't have: the number of the process that does it.
bool CompareSet(const std::string& work, const std::string& deckman, const std::filesystem::path& deck,
                const std::string& place, double budget)
{
    const std::filesystem::path edited = deck.parent_path() / "EDITED.DATA";
    std::filesystem::copy_file(deck, edited, std::filesystem::copy_options::overwrite_existing);
    const std::string setting = fmt::format("exec '{}' set '{}' {} $$", deckman, edited.string(), place);
    const bool met = CompareWithCopy(work, Command{{"/bin/sh", "-c", setting}, {}}, deck, true, budget);
    std::filesystem::remove(edited);
    return met;
}

/// Many edits in one go against one, each with its commit.
bool CompareEdits(const std::string& deckman, const std::filesystem::path& deck)
{
    constexpr int edits = 1000;
    constexpr int between = 7;
    const std::filesystem::path edited = deck.parent_path() / "edited.DATA";
    const std::filesystem::path script = deck.parent_path() / "edits.txt";
    std::filesystem::copy_file(deck, edited, std::filesystem::copy_options::overwrite_existing);
    {
        std::ofstream lines(script);
        for (int i = 0; i < edits; ++i)
            lines << fmt::format("set WCONPROD#{}[1].ORAT VALUE\n", 1 + i * between);
    }
    // Another value each time: what stands there already is no edit.
    const auto shell = [](const std::string& command) {
        return Command{{"/bin/sh", "-c", "value=1$(date +%N); " + command}, {"LC_ALL=C"}};
    };
    const Command many =
        shell(fmt::format("sed s/VALUE/$value/ '{}' | '{}' apply '{}' -", script.string(), deckman, edited.string()));
    const Command one =
        shell(fmt::format("'{}' set '{}' 'WCONPROD#{}[2].ORAT' $value", deckman, edited.string(), edits * between));
    const bool met = CompareTimes(fmt::format("deckman apply, {} edits of that schedule", edits), many,
                                  "deckman set, one edit", one, 1.5);
    std::filesystem::remove(edited);
    std::filesystem::remove(script);
    return met;
}

/// Edits of every kind in one script, looked at only, against half as many: the time must not grow with the square.
bool CompareScripts(const std::string& deckman, const std::filesystem::path& deck, int edits)
{
    const auto apply = [&](int count) {
        const std::filesystem::path script = deck.parent_path() / fmt::format("script{}.txt", count);
        std::ofstream lines(script);
        constexpr int kinds = 5;
        for (int i = 0; i < count / kinds; ++i) {
            const int index = 100 + 6 * i;
            lines << fmt::format("set WCONPROD#{}[1].ORAT 7\nabove @{} new\nrm @{} --with-comment\n"
                                 "mv @{} --after @59900\ninsert --after @{} DRSDT\n",
                                 1 + 2 * i, index, index + 1, index + 2, index + 3);
        }
        return Command{{deckman, "apply", deck.string(), script.string(), "--dry-run"}, {}};
    };
    const bool met = CompareTimes(fmt::format("deckman apply, {} edits of all kinds", edits), apply(edits),
                                  fmt::format("deckman apply, {}", edits / 2), apply(edits / 2), 2.3);
    for (const int count : {edits, edits / 2})
        std::filesystem::remove(deck.parent_path() / fmt::format("script{}.txt", count));
    return met;
}

/// A keyword that is all faults against one of half as many rows: the time must not grow with the square.
bool CompareFaults(const std::string& deckman, const std::filesystem::path& folder, const std::string& what,
                   const std::string& name, const std::string& row, int rows)
{
    const auto check = [&](int count) {
        const std::filesystem::path deck = folder / fmt::format("FAULTS{}.DATA", count);
        std::ofstream text(deck);
        text << "RUNSPEC\nSTART\n 1 JAN 2000 /\nSCHEDULE\n" << name << '\n';
        for (int i = 0; i < count; ++i)
            text << fmt::format(fmt::runtime(row), i) << '\n';
        text << "/\n";
        // The status tells the faults.
        return Command{{"/bin/sh", "-c", fmt::format("'{}' check '{}' || true", deckman, deck.string())}, {}};
    };
    const bool met = CompareTimes(fmt::format("deckman check, {} {}", rows, what), check(rows),
                                  fmt::format("deckman check, {}", rows / 2), check(rows / 2), 2.3);
    for (const int count : {rows, rows / 2})
        std::filesystem::remove(folder / fmt::format("FAULTS{}.DATA", count));
    return met;
}

/// A merge against one of half the work, whose time is a budget's yardstick: the time must not grow with the square.
bool CompareMerges(const std::string& deckman, const std::filesystem::path& decks, std::int64_t share)
{
    std::vector<std::pair<std::int64_t, std::filesystem::path>> found;
    for (const auto& entry : std::filesystem::directory_iterator(decks)) {
        std::int64_t keywords = 0;
        std::int64_t users = 0;
        if (std::sscanf(entry.path().filename().c_str(), "merge_%ld_%ld", &keywords, &users) == 2 &&
            keywords / users == share)
            found.emplace_back(keywords, entry.path());
    }
    std::sort(found.begin(), found.end());
    if (found.size() != 2) throw std::runtime_error("The decks to be merged are missing");
    const auto merging = [&](const std::filesystem::path& folder) {
        return Command{
            {deckman, "merge", (folder / "last.DATA").string(), (folder / "made.DATA").string(), "--dry-run"}, {}};
    };
    const auto nameOf = [&](std::int64_t keywords) {
        return fmt::format("merge {} into {}", keywords / share, keywords);
    };
    return CompareTimes(nameOf(found[1].first), merging(found[1].second), nameOf(found[0].first),
                        merging(found[0].second), 2.3);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 4) {
        fmt::print(stderr, "usage: benchmark_table DECKMAN FOLDER_OF_GENERATED_DECKS SMALL_DECK\n");
        return 2;
    }
    try {
        Benchmarks::StartLauncher();
        const std::string deckman = argv[1];
        const std::filesystem::path decks = argv[2];
        const std::string smallDeck = argv[3];

        // First, while the process holds no freed memory in which the data could lie.
        const Benchmarks::DataReadingResult reals =
            Benchmarks::MeasureReals((decks / "REALS.DATA").string(), "PORO", repeats);

        fmt::print("Median of {} after a warm-up; peak is the largest resident size of the command.\n\n", repeats);
        fmt::print(fmt::runtime(rowFormat), "work", "measured", "yardstick", "measured", "ratio", "budget", "met",
                   "peak");
        int missed = 0;
        missed += !CompareToTime("deckman --version", Command{{deckman, "--version"}, {}}, 0.015);
        missed += !CompareToTime("deckman ls of a small deck", Command{{deckman, "ls", smallDeck}, {}}, 0.030);
        missed += !CompareTimes("ls --json, 500 MB of arrays", List(deckman, decks / "ARRAYS.DATA"),
                                "grep -c \"^[A-Z]\" of the deck", Grep(decks / "ARRAYS.DATA"), 1.0);
        missed += !CompareTimes("ls --json, schedule of 60 000 keywords", List(deckman, decks / "SCHEDULE.DATA"),
                                "grep -c \"^[A-Z]\" of the deck", Grep(decks / "SCHEDULE.DATA"), 4.0);
        missed += !CompareTimes("ls --json, 200 000 keywords, 3 000 includes", List(deckman, decks / "INCLUDES.DATA"),
                                "ls --json of one file", List(deckman, decks / "ONEFILE.DATA"), 3.0);

        const Benchmarks::KeywordMemoryResult memory =
            Benchmarks::MeasureKeywordMemory((decks / "SCHEDULE.DATA").string());
        const bool memoryMet = memory.keywords > 0 && memory.bytesPerKeyword <= 260;
        missed += !memoryMet;
        PrintRow("memory of a loaded, unparsed keyword", fmt::format("{:.0f} B", memory.bytesPerKeyword),
                 fmt::format("{} keywords", memory.keywords), "", "", "260 B", memoryMet, "");

        missed += !CompareReading(fmt::format("read {} reals of one keyword", reals.count), reals,
                                  "bare std::from_chars loop", 2.0);
        const double bytesPerReal = reals.peakBytes / static_cast<double>(reals.count);
        const bool realsMet = bytesPerReal <= 9.0;
        missed += !realsMet;
        PrintRow("peak memory of that, for a real", fmt::format("{:.2f} B", bytesPerReal), "a double", "8 B",
                 fmt::format("{:.2f}", bytesPerReal / 8), "9 B", realsMet, "");
        const Benchmarks::DataReadingResult records =
            Benchmarks::MeasureRecords((decks / "RECORDS.DATA").string(), "COMPDAT", repeats);
        missed += !CompareReading(fmt::format("read {} records of one keyword", records.count), records,
                                  "the bytes cut at blanks", 4.0);
        missed += !CompareElement(deckman, decks / "ARRAYS.DATA", "ZCORN");
        missed += !CompareReopening("reopen a schedule of a project", decks / "SCHEDULE.DATA", true, 1.0);
        missed += !CompareReopening("reopen 500 MB of arrays of a project", decks / "ARRAYS.DATA", true, 0.05);
        missed += !CompareReopening("the same with the cache as XML", decks / "ARRAYS.DATA", false, 1.0);
        missed += !CompareCheck("deckman check, 500 MB of arrays", deckman, decks / "ARRAYS.DATA", 2.0);
        missed +=
            !CompareExport("deckman flatten, 500 MB of arrays", deckman, "flatten", decks / "ARRAYS.DATA", "-o ", 1.3);
        missed += !CompareListExport(deckman, decks);
        missed += !CompareExport("deckman copy, 500 MB of arrays", deckman, "copy", decks / "ARRAYS.DATA", "", 1.3);
        missed +=
            !CompareSet("deckman set of an item, 500 MB of arrays", deckman, decks / "ARRAYS.DATA", "DIMENS.0", 1.3);
        missed += !CompareEdits(deckman, decks / "SCHEDULE.DATA");
        missed += !CompareScripts(deckman, decks / "SCHEDULE.DATA", 20000);
        missed += !CompareFaults(deckman, decks, "rows without a value", "WELSPECS", " P{} 1* 1 1 1* OIL /", 150000);
        missed += !CompareFaults(deckman, decks, "rows without a /", "WCONPROD", " P{} OPEN xx", 80000);
        missed += !CompareFaults(deckman, decks, "dates that are none", "DATES", " 30 FEB 2{} /", 40000);
        missed += !CompareMerges(deckman, decks, 100);
        missed += !CompareMerges(deckman, decks, 10);
        missed += CompareSorting(decks, 100000);
        missed += !CompareRemoval(decks, 50000);
        missed += !CompareWriting("write 10 million reals, all digits", Benchmarks::Reals::AllDigits, 1.5);
        missed += !CompareWriting("write 10 million reals, few digits", Benchmarks::Reals::FewDigits, 1.5);

        fmt::print("\n{}\n", missed == 0 ? "Every budget is met." : fmt::format("{} budgets are not met.", missed));
        return 0;
    } catch (const std::exception& failure) {
        fmt::print(stderr, "benchmark_table: {}\n", failure.what());
        return 1;
    }
}
