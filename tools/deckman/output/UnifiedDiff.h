#pragma once

#include <map>
#include <string>
#include <string_view>

#include "output/Output.h"

namespace Deckman {

/// Prints what changes in files as a unified diff: a heading for each file, and a hunk for each change, in the order in
/// which they are told.
class UnifiedDiff
{
public:
    explicit UnifiedDiff(Output& out) : m_out(out) {}

    /// From line `line` of `file` on (from 1), `before` becomes `after`. Both with "\n" between lines, and whole lines.
    void Add(const std::string& file, int line, std::string_view before, std::string_view after);

    /// The whole of `file`: as many hunks as there are changes that don't lie close to each other.
    void AddFile(const std::string& file, std::string_view before, std::string_view after);

private:
    void PrintHeading(const std::string& file);
    void PrintLine(char mark, std::string_view text);

    Output& m_out;
    std::string m_file;
    std::map<std::string, long long> m_shifts; ///< by how many lines what follows has moved, for each file
};

} // namespace Deckman
