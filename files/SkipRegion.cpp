#include "files/SkipRegion.h"

#include "text/KeywordFileReader.h"
#include "text/LineStreamReader.h"
#include <deckmanager/ILineReader.h>
#include <deckmanager/ISectionContextQuery.h>
#include <deckmanager/LineReaderUtil.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/keywords/KeywordSyntaxUtils.h>
#include <tarn/service/Log.h>

namespace Tarn::Fjel::Core::DeckManager {

using Keywords::KeywordKind;
using Keywords::KeywordSyntaxUtils;
using Keywords::SimulatorType;

namespace {

/// The line of the word that the scan of a region stands on.
struct SkippedLine
{
    ILineReader& reader;
    KeywordFileReader& file;
    const long long& position;

    static int Of(const void* word)
    {
        const auto& self = *static_cast<const SkippedLine*>(word);
        const LineStreamReader* const lines = self.reader.Lines();
        const int known = lines != nullptr ? lines->LineNumber() : -1;
        return known > 0 ? known : self.file.LineNumberAt(self.position);
    }
};

} // namespace

std::vector<SkippedKeyword> SkipRegion::Consume(SkipState& state, const std::string& firstName, long long firstPosition,
                                                const Keywords::IKeywordSyntax* firstSyntax, ILineReader& reader,
                                                const ISectionContextQuery& query, KeywordFileReader& file)
{
    std::vector<SkippedKeyword> skipped;
    if (!state.enabled || firstSyntax == nullptr) return skipped;

    std::string name = firstName;
    long long position = firstPosition;
    const Keywords::IKeywordSyntax* syntax = firstSyntax;
    const SkippedLine word{reader, file, position};
    const Service::Log::Place place(file.GetPath(), &SkippedLine::Of, &word);
    for (bool firstPass = true;;) {
        if (syntax != nullptr && syntax->GetKind() == KeywordKind::EndSkip) {
            skipped.push_back({name, position});
            if (state.activeDepth != 0 && state.activeDepth == state.depth) state.activeDepth = 0;
            if (--state.depth < 0) {
                state.depth = 0;
                state.activeDepth = 0;
                const int line = SkippedLine::Of(&word);
                Service::Log::LogWF(
                    "Encountered ENDSKIP without SKIP/SKIP100/SKIP300 near line %d in %s. Please ensure "
                    "that SKIP and ENDSKIP are both in the same file.",
                    line, file.GetPath().c_str());
            }
            if (state.activeDepth == 0) return skipped;
        } else {
            const bool isOpener = syntax != nullptr && IsOpener(*syntax);
            if (isOpener) {
                skipped.push_back({name, position});
                ++state.depth;
            }
            if (isOpener && IsActiveSkip(*syntax, state.simulator)) {
                firstPass = false;
                if (state.activeDepth == 0) state.activeDepth = state.depth;
            } else if (firstPass) {
                return skipped;
            }
        }

        // On to the next word that could be a keyword; the text between is discarded.
        do {
            if (!LineReaderUtil::ReadNextValidLineAsKeyword(reader, name, &position, false, nullptr, nullptr)) {
                return skipped;
            }
        } while (name.empty());
        syntax = LineReaderUtil::FindSyntax(name, query);
    }
}

bool SkipRegion::IsSkipKeyword(const Keywords::IKeywordSyntax& syntax)
{
    return syntax.GetKind() == KeywordKind::EndSkip || IsOpener(syntax);
}

bool SkipRegion::IsOpener(const Keywords::IKeywordSyntax& syntax)
{
    if (!syntax.IsScopeStart()) return false;
    const std::vector<const Keywords::IKeywordSyntax*>& closers = syntax.GetScopeEndSyntaxes();
    return !closers.empty() && closers.front() != nullptr && closers.front()->GetKind() == KeywordKind::EndSkip;
}

bool SkipRegion::IsActiveSkip(const Keywords::IKeywordSyntax& syntax, SimulatorType simulator)
{
    if (KeywordSyntaxUtils::IsSKIP100(&syntax)) return simulator == SimulatorType::S100;
    if (KeywordSyntaxUtils::IsSKIP300(&syntax)) return simulator == SimulatorType::S300;
    return true;
}

} // namespace Tarn::Fjel::Core::DeckManager
