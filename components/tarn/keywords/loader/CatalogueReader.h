#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tarn/keywords/loader/KeywordDefinition.h>

namespace Tarn::Fjel::Core::Keywords::Loader {

/// Reads catalogue files and checks what they say.
class CatalogueReader
{
public:
    /// Adds the definitions of one file's text. A broken one throws KeywordException: origin, keyword, field, and what
    /// is wrong.
    void Add(std::string_view json, const std::string& origin);

    /// Adds the definitions of a file; one that can't be read throws KeywordException.
    void AddFile(const std::string& path);

    /// Checks what needs all definitions at hand: that none hides behind an earlier one of its name, that the keywords
    /// that close a scope exist, that the ordering rules form no ring. Throws KeywordException.
    void CheckWhole() const;

    const std::vector<KeywordDefinition>& Keywords() const { return m_keywords; }

private:
    void CheckReachable() const;

    std::vector<KeywordDefinition> m_keywords;
    std::vector<std::string> m_origins; // of each keyword
};

} // namespace Tarn::Fjel::Core::Keywords::Loader
