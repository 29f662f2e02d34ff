#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// The sections of a deck in their order. None: no section, or (as the section of a keyword) several of them.
enum class SectionType : int
{
    RUNSPEC = 0,
    GRID = 1,
    EDIT = 2,
    PROPS = 3,
    REGIONS = 4,
    SOLUTION = 5,
    SUMMARY = 6,
    SCHEDULE = 7,
    OPTIMIZE = 8,
    None = 10
};

/// How many sections there are; their values run from 0 to SectionCount - 1.
inline constexpr int SectionCount = 9;

} // namespace Tarn::Fjel::Core::Keywords
