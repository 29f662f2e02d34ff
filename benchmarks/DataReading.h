#pragma once

#include <string>

namespace Benchmarks {

struct DataReadingResult
{
    long long count = 0;         ///< elements of the keyword that was read
    double seconds = 0;          ///< to read its data
    double yardstickSeconds = 0; ///< for the yardstick over the same bytes
    double peakBytes = 0;        ///< what the process has gained at most while the data were read
};

/// The real numbers of the first keyword of that name, read through the deck's view; the yardstick is a bare
/// `std::from_chars` loop over the same bytes in memory. Medians of `repeats` after a warm-up, taken in turn. Throws
/// `std::runtime_error` when the deck can't be read.
DataReadingResult MeasureReals(const std::string& deckFile, const std::string& keyword, int repeats);

/// The records of a keyword; the yardstick cuts the same bytes at blanks into string views.
DataReadingResult MeasureRecords(const std::string& deckFile, const std::string& keyword, int repeats);

/// The last element of a list, read alone, the deck being open; the yardstick reads the keyword's bytes from the file
/// and finds their line ends. `count` is that of the whole list.
DataReadingResult MeasureElement(const std::string& deckFile, const std::string& keyword, int repeats);

/// The data of all keywords of the deck, read one after the other and let go, the deck being open: seconds of the
/// median.
double MeasureAllData(const std::string& deckFile, int repeats);

} // namespace Benchmarks
