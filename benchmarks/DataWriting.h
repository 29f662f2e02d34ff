#pragma once

namespace Benchmarks {

struct DataWritingResult
{
    long long count = 0;         ///< values that were written
    double seconds = 0;          ///< to write them as a keyword's data, through a file writer
    double yardstickSeconds = 0; ///< for a bare std::to_chars loop of 15 digits over the same values
};

/// Which reals are written.
enum class Reals
{
    AllDigits, ///< as many as a double holds
    FewDigits  ///< four behind the point, as most of a deck's are
};

/// Writes `count` reals. Medians of `repeats` after a warm-up, taken in turn. Nothing reaches a disk.
DataWritingResult MeasureWriting(Reals kind, int count, int repeats);

} // namespace Benchmarks
