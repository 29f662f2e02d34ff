#pragma once

#include <string>
#include <vector>

#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::Keywords {
class IKeywordSyntax;
}

namespace Tarn::Fjel::Core::DeckManager {

class ILineReader;
class ISectionContextQuery;
class KeywordFileReader;

/// A keyword that opens or closes a skipped region.
struct SkippedKeyword
{
    std::string name;
    long long position;
};

/// Where a scan stands among nested skipped regions.
struct SkipState
{
    Keywords::SimulatorType simulator = Keywords::SimulatorType::Any;
    bool enabled = false;
    int depth = 0;
    int activeDepth = 0; ///< the depth at which the text began to be skipped; 0: it isn't
};

/// Discards the keywords of skipped regions while a file is scanned.
class SkipRegion
{
public:
    /// Called with each keyword that the scan finds; the reader stands behind its line. Where the keyword opens a
    /// region that the simulator skips, reads to the end of the region. Gives the skip keywords met, the first one
    /// included; nothing for any other keyword. `file` is for messages.
    static std::vector<SkippedKeyword> Consume(SkipState& state, const std::string& name, long long position,
                                               const Keywords::IKeywordSyntax* syntax, ILineReader& reader,
                                               const ISectionContextQuery& query, KeywordFileReader& file);

    /// A keyword that opens or closes a region: in the list it has no text of its own.
    static bool IsSkipKeyword(const Keywords::IKeywordSyntax& syntax);

private:
    static bool IsOpener(const Keywords::IKeywordSyntax& syntax);
    static bool IsActiveSkip(const Keywords::IKeywordSyntax& syntax, Keywords::SimulatorType simulator);
};

} // namespace Tarn::Fjel::Core::DeckManager
