#include "benchmarks/DataWriting.h"

#include <charconv>
#include <cmath>
#include <random>
#include <stdexcept>
#include <vector>

#include <deckmanager/Environment.h>
#include <tarn/keywords/IKeywordListData.h>
#include <tarn/keywords/IKeywordSyntaxTable.h>
#include <tarn/keywords/KeywordDataFactory.h>

#include "benchmarks/Measure.h"
#include "keywords/KeywordDataSerializer.h"
#include "text/LineFileWriter.h"

namespace Benchmarks {

namespace {

namespace Core = Tarn::Fjel::Core;

/// What a yardstick has found is looked at, so that it can't be left out.
template <class Value>
void Keep(const Value& value)
{
    asm volatile("" : : "g"(&value) : "memory");
}

} // namespace

DataWritingResult MeasureWriting(Reals kind, int count, int repeats)
{
    std::mt19937_64 random(1);
    std::uniform_real_distribution<double> uniform(0.0, 1.0);
    std::vector<double> values(static_cast<std::size_t>(count));
    for (double& value : values) {
        value = uniform(random);
        if (kind == Reals::FewDigits) value = std::round(value * 1e4) / 1e4;
    }
    const auto* const syntax = Core::DeckManager::Environment::Instance().GetSyntaxTable()->FindSyntax("PORO", true);
    const auto data = Core::Keywords::KeywordDataFactory::Instance().ConstructSafely(*syntax);
    static_cast<Core::Keywords::IKeywordListData&>(*data).AppendReals(values);

    std::vector<double> work;
    std::vector<double> yard;
    for (int round = 0; round <= repeats; ++round) {
        Core::DeckManager::LineFileWriter writer;
        if (!writer.Open("/dev/null", false)) throw std::runtime_error("/dev/null cannot be written");
        const double seconds = Seconds([&] {
            Core::DeckManager::KeywordDataSerializer::Serialize(*data, writer, false,
                                                                Core::Keywords::SimulatorType::Any);
        });
        if (!writer.Close()) throw std::runtime_error("/dev/null cannot be written");
        const double yardSeconds = Seconds([&] {
            char text[64];
            for (const double value : values) {
                std::to_chars(text, text + sizeof text, value, std::chars_format::general, 15);
                Keep(text);
            }
        });
        if (round == 0) continue;
        work.push_back(seconds);
        yard.push_back(yardSeconds);
    }
    return {count, Median(work), Median(yard)};
}

} // namespace Benchmarks
