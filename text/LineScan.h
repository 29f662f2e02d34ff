#pragma once

#include <cstdint>

namespace Tarn::Fjel::Core::DeckManager {

/// Where a scan over line heads has stopped.
struct LineScan
{
    /// The first byte of a line that begins with a letter or a dash; null if no line does.
    const char* head = nullptr;
    /// The first byte behind the last line end that was passed: `head`, or the head of the unfinished last line.
    const char* lineStart = nullptr;
    /// The number of line ends passed.
    std::int64_t lines = 0;
};

/// Looks through the bytes from `first`, which begins a line, to `end` for a line that begins with a letter (a to z in
/// either case) or a dash. Lines of any length count.
LineScan FindLineHead(const char* first, const char* end);

} // namespace Tarn::Fjel::Core::DeckManager
