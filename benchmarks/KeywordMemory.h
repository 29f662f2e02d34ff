#pragma once

#include <string>

namespace Benchmarks {

struct KeywordMemoryResult
{
    long long keywords = 0;
    double bytesPerKeyword = 0;
};

/// Loads a deck, walks it without reading any data, and divides what the heap has gained by the number of keywords: the
/// keyword with its list node, its control block and the allocator's own overhead. Throws `std::runtime_error` when the
/// deck can't be opened.
KeywordMemoryResult MeasureKeywordMemory(const std::string& deckFile);

} // namespace Benchmarks
