#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordSyntaxTable.h>

#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

/// A look-up stands on the way of every line of a deck: it takes no memory. A sanitizer has operators of its own.

#if !DECK_IS_SANITIZED

namespace {

long long allocations = 0;

void* Allocate(std::size_t size)
{
    ++allocations;
    if (void* const memory = std::malloc(size > 0 ? size : 1)) return memory;
    throw std::bad_alloc();
}

} // namespace

void* operator new(std::size_t size)
{
    return Allocate(size);
}

void* operator new[](std::size_t size)
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace Tarn::Fjel::Core::Keywords {

TEST(SyntaxLookUp, TakesNoMemory)
{
    const KeywordSyntaxTable& table = *KeywordSyntaxTable::Instance(false, true);
    const std::vector<std::string> words{"WELSPECS", "welspecs", "FUANYTHINGLONG", "NOSUCH", "", "RPR__NORTH", "GRID"};
    std::size_t found = 0;
    const long long before = allocations;
    for (const std::string& word : words) {
        found += table.FindSyntax(word, true) != nullptr ? 1u : 0u;
        found += table.FindSyntax(word, SectionType::SCHEDULE, true) != nullptr ? 1u : 0u;
        for (const IKeywordSyntax* syntax : table.FindSyntaxes(word))
            found += syntax->IsValidForSection(SectionType::SUMMARY, SimulatorType::Any) ? 1u : 0u;
    }
    EXPECT_EQ(allocations - before, 0);
    EXPECT_GT(found, words.size());
}

} // namespace Tarn::Fjel::Core::Keywords

#endif
