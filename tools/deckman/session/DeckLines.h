#pragma once

#include <climits>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;

/// Knows in a walk over a deck which keywords are skipped: those between SKIP and ENDSKIP, whatever simulator reads the
/// deck, and between SKIP100 or SKIP300 and ENDSKIP for that simulator.
class SkipTracker
{
public:
    explicit SkipTracker(std::optional<Tarn::Fjel::Core::Keywords::SimulatorType> simulator) : m_simulator(simulator) {}

    /// To be asked for each keyword of the walk. What opens and closes a region is not hidden by it.
    bool Hides(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword);
    /// What follows is hidden.
    bool IsInside() const { return m_depth > 0; }

private:
    std::optional<Tarn::Fjel::Core::Keywords::SimulatorType> m_simulator;
    int m_depth = 0; ///< regions around, from the outermost that hides
};

/// Which keyword stands on which line of a deck's files, and which lines the deck has no use for: those behind its end,
/// behind the end of an included file, and in skipped regions.
class DeckLines
{
public:
    /// Walks the deck, and so loads its files. With `all` nothing is hidden behind an end.
    DeckLines(DeckSession& session, std::optional<Tarn::Fjel::Core::Keywords::SimulatorType> simulator, bool all);

    /// The deck makes nothing of that line of that file; the line -1 is the file as a whole.
    bool IsHidden(std::string_view file, int line) const;

    /// The name of the keyword whose line it is.
    std::string_view KeywordOn(std::string_view file, int line);
    /// The name of the keyword that holds the line; empty ahead of a file's first keyword.
    std::string_view KeywordAround(std::string_view file, int line);

    /// Gives the full name of each file to `take`, in the order of the deck.
    template <class Take>
    void NameFiles(const Take& take) const
    {
        for (const std::string_view name : m_order)
            take(std::string(name));
    }

    long long KeywordCount() const { return m_keywords; }
    /// How many files there are that exist.
    long long FileCount() const;

private:
    struct File
    {
        Tarn::Fjel::Core::DeckManager::IKeywordFile* file;
        int lastLine = INT_MAX;
        std::vector<std::pair<int, int>> skipped = {};               ///< first line, and the line behind the last
        std::vector<std::pair<int, std::string_view>> keywords = {}; ///< by line; found on demand
    };

    File& Enter(Tarn::Fjel::Core::DeckManager::IKeywordFile* file, bool all);
    void HideBehindEnd(DeckSession& session);
    const std::pair<int, std::string_view>* LastUpTo(std::string_view file, int line);

    std::unordered_map<std::string_view, File> m_files; // by full name, which the file owns
    std::vector<std::string_view> m_order;
    long long m_keywords = 0;
};

} // namespace Deckman
