#pragma once

#include <array>
#include <optional>
#include <string_view>

#include <tarn/keywords/SectionType.h>
#include <tarn/service/Strings.h>

namespace Deckman {

using Tarn::Fjel::Core::Keywords::SectionType;

/// The section keywords by the value of their section.
inline constexpr std::array<std::string_view, Tarn::Fjel::Core::Keywords::SectionCount> sectionNames{
    "RUNSPEC", "GRID", "EDIT", "PROPS", "REGIONS", "SOLUTION", "SUMMARY", "SCHEDULE", "OPTIMIZE"};

/// The section of that name, without regard to case.
inline std::optional<SectionType> FindSection(std::string_view name)
{
    for (std::size_t i = 0; i < sectionNames.size(); ++i) {
        if (Tarn::Fjel::Core::Service::NoCaseStringEqual(sectionNames[i], name)) return static_cast<SectionType>(i);
    }
    return std::nullopt;
}

/// Empty for `None`.
constexpr std::string_view NameOf(SectionType section)
{
    const auto index = static_cast<std::size_t>(section);
    return index < sectionNames.size() ? sectionNames[index] : std::string_view();
}

} // namespace Deckman
