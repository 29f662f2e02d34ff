#include "benchmarks/DataReading.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string_view>
#include <vector>

#include <malloc.h>

#include <deckmanager/DeckManagerFactory.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/KeywordIterator.h>
#include <deckmanager/ReadKeywordData.h>
#include <deckmanager/ReadKeywordElement.h>
#include <tarn/keywords/IKeywordListData.h>

#include "benchmarks/Measure.h"

namespace Benchmarks {

namespace {

using namespace Tarn::Fjel::Core;
using namespace Tarn::Fjel::Core::DeckManager;

/// A deck that was walked once, with no data read.
class OpenDeck
{
public:
    explicit OpenDeck(const std::string& deckFile) : m_manager(DeckManagerFactory::Create())
    {
        IDeck* const deck = m_manager->ImportDeck("Deck", deckFile, false, true, false);
        if (!deck) throw std::runtime_error(deckFile + ": cannot be opened");
        m_keywords = deck->GetDeckKeywords();
        for (KeywordIterator position = m_keywords->Begin(); position != m_keywords->End(); ++position) {
        }
    }

    const IDeckKeywords& Keywords() const { return *m_keywords; }

    const IKeyword& First(const std::string& name) const
    {
        for (KeywordIterator position = m_keywords->Begin(); position != m_keywords->End(); ++position)
            if (position->GetName() == name) return **position;
        throw std::runtime_error("the deck has no " + name);
    }

private:
    std::unique_ptr<IDeckManager> m_manager;
    const IDeckKeywords* m_keywords;
};

/// A line "NAME: n kB" of this process's status, in bytes.
double StatusBytes(const char* name)
{
    std::FILE* const file = std::fopen("/proc/self/status", "r");
    if (!file) return 0;
    char line[256];
    double bytes = 0;
    while (std::fgets(line, sizeof line, file))
        if (std::strncmp(line, name, std::strlen(name)) == 0) std::sscanf(line + std::strlen(name), ": %lf", &bytes);
    std::fclose(file);
    return bytes * 1024;
}

/// The largest resident size counts anew from here.
void ResetPeak()
{
    malloc_trim(0);
    if (std::FILE* const file = std::fopen("/proc/self/clear_refs", "w")) {
        std::fputs("5", file);
        std::fclose(file);
    }
}

/// What a yardstick has found is looked at, so that it can't be left out.
template <class Value>
void Keep(const Value& value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

template <class Yardstick>
DataReadingResult Measure(const std::string& deckFile, const std::string& keyword, int repeats,
                          const Yardstick& yardstick)
{
    DataReadingResult result;
    {
        // The whole road once, in a process that has not read data yet: what it gains is the memory of the data.
        const OpenDeck deck(deckFile);
        const IKeyword& found = deck.First(keyword);
        ResetPeak();
        const double before = StatusBytes("VmRSS");
        const auto* const data =
            dynamic_cast<const Keywords::IKeywordListData*>(deck.Keywords().GetKeywordData(&found));
        if (!data) throw std::runtime_error(keyword + " is no list");
        result.count = data->GetElementCount();
        result.peakBytes = std::max(0.0, StatusBytes("VmHWM") - before);
    }
    std::string text;
    {
        const OpenDeck deck(deckFile);
        text = *deck.Keywords().GetDataText(&deck.First(keyword));
    }
    std::vector<double> work;
    std::vector<double> yard;
    for (int round = 0; round <= repeats; ++round) {
        const OpenDeck deck(deckFile);
        const IKeyword& found = deck.First(keyword);
        const double seconds = Seconds([&] { deck.Keywords().GetKeywordData(&found); });
        const double yardSeconds = Seconds([&] { yardstick(text); });
        if (round == 0) continue;
        work.push_back(seconds);
        yard.push_back(yardSeconds);
    }
    result.seconds = Median(work);
    result.yardstickSeconds = Median(yard);
    return result;
}

bool IsBlank(char c)
{
    return c == ' ' || (c >= '\t' && c <= '\r');
}

void ParseBare(const std::string& text)
{
    const char* at = text.data();
    const char* const end = at + text.size();
    double sum = 0;
    while (at != end) {
        while (at != end && IsBlank(*at))
            ++at;
        double value = 0;
        const auto [stop, error] = std::from_chars(at, end, value);
        if (error != std::errc()) break;
        sum += value;
        at = stop;
    }
    Keep(sum);
}

void CutAtBlanks(const std::string& text)
{
    std::vector<std::string_view> words;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        while (at != end && IsBlank(*at))
            ++at;
        const char* const begin = at;
        while (at != end && !IsBlank(*at))
            ++at;
        if (at != begin) words.emplace_back(begin, static_cast<std::size_t>(at - begin));
    }
    Keep(words);
}

/// Reads that part of the file through a buffer of the size that the system's own readers use.
void FindLineEnds(const std::string& fileName, long long position, long long size)
{
    std::FILE* const file = std::fopen(fileName.c_str(), "rb");
    if (!file) throw std::runtime_error(fileName + ": cannot be opened");
    std::setvbuf(file, nullptr, _IONBF, 0);
    std::fseek(file, static_cast<long>(position), SEEK_SET);
    std::vector<char> buffer(256 * 1024);
    long long lines = 0;
    while (size > 0) {
        const auto wanted = static_cast<std::size_t>(std::min<long long>(size, static_cast<long long>(buffer.size())));
        const std::size_t read = std::fread(buffer.data(), 1, wanted, file);
        if (read == 0) break;
        const char* at = buffer.data();
        const char* const end = at + read;
        while (const void* found = std::memchr(at, '\n', static_cast<std::size_t>(end - at))) {
            at = static_cast<const char*>(found) + 1;
            ++lines;
        }
        size -= static_cast<long long>(read);
    }
    std::fclose(file);
    Keep(lines);
}

} // namespace

DataReadingResult MeasureReals(const std::string& deckFile, const std::string& keyword, int repeats)
{
    return Measure(deckFile, keyword, repeats, ParseBare);
}

DataReadingResult MeasureRecords(const std::string& deckFile, const std::string& keyword, int repeats)
{
    return Measure(deckFile, keyword, repeats, CutAtBlanks);
}

DataReadingResult MeasureElement(const std::string& deckFile, const std::string& keyword, int repeats)
{
    const OpenDeck deck(deckFile);
    const IKeyword& found = deck.First(keyword);
    const auto miss = ReadKeywordElement(deck.Keywords(), found, -1);
    if (!miss || miss->count == 0) throw std::runtime_error(keyword + " is no list of values");
    DataReadingResult result;
    result.count = miss->count;
    std::vector<double> work;
    std::vector<double> yard;
    for (int round = 0; round <= repeats; ++round) {
        const double seconds = Seconds([&] { ReadKeywordElement(deck.Keywords(), found, miss->count - 1); });
        const double yardSeconds = Seconds([&] { FindLineEnds(deckFile, found.GetPosition(), found.GetSize()); });
        if (round == 0) continue;
        work.push_back(seconds);
        yard.push_back(yardSeconds);
    }
    result.seconds = Median(work);
    result.yardstickSeconds = Median(yard);
    return result;
}

double MeasureAllData(const std::string& deckFile, int repeats)
{
    std::vector<double> work;
    for (int round = 0; round <= repeats; ++round) {
        const OpenDeck deck(deckFile);
        const double seconds = Seconds([&] {
            for (KeywordIterator at = deck.Keywords().Begin(); at != deck.Keywords().End(); ++at)
                ReadKeywordData(deck.Keywords(), **at);
        });
        if (round > 0) work.push_back(seconds);
    }
    return Median(work);
}

} // namespace Benchmarks
