#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/merge/Merging.h"

namespace MergeTests {

/// Pairs of decks by chance: what a generator has made, a user has edited, and the generator has made anew. Each
/// keyword of the user has a number of its own in its data.
class DeckPairs
{
public:
    explicit DeckPairs(unsigned seed);

    Texts oldFiles;
    Texts newFiles;
    /// The numbers of the user's keywords that stand in files of the generator's.
    std::vector<int> userNumbers;
    /// The comments in those files, each there once.
    std::vector<std::string> comments;

private:
    struct Item
    {
        std::string name;
        std::string data;
        std::vector<Item> inside; ///< a scope, or the file of an INCLUDE
        std::string closer;
        bool isFile = false;
    };
    using Items = std::vector<Item>;

    bool Chance(int percent) { return static_cast<int>(m_chance() % 100) < percent; }
    std::size_t Below(std::size_t n) { return m_chance() % n; }
    Items MakeSection(const std::string& section, int depth);
    Item MakeKeyword(const std::string& section, int depth);
    std::string UserKeyword(const std::string& section);
    std::string OldText(const Items& items, const std::string& section, int percentUser);
    std::string NewText(const Items& items, const std::string& section);
    std::string EndOfFile();
    void Close(std::string& text, const Item& item);

    std::mt19937 m_chance;
    int m_nextFile = 1;
    int m_nextUser = 1000;
    int m_day = 0;
    bool m_countsUsers = true;
};

} // namespace MergeTests
