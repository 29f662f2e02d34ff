#pragma once

namespace Tarn::Fjel::Core::Keywords {

/// What ends the text of a container.
enum class Termination : int
{
    None = 0,     ///< its count, or the end of the text
    Slash = 1,    ///< a "/"
    EndOfLine = 2 ///< the end of the line
};

} // namespace Tarn::Fjel::Core::Keywords
