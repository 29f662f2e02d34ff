#pragma once

namespace Tarn::Fjel::Core::Keywords {
enum class SectionType : int;
}

namespace Tarn::Fjel::Core::DeckManager {

/// Tells the scanner which section is in force at the line that it reads.
class ISectionContextQuery
{
public:
    virtual ~ISectionContextQuery() = default;

    /// The section, or `SectionType::None` before the first section keyword. Asked only for words that the syntax table
    /// knows.
    virtual Keywords::SectionType GetSection() const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
