#pragma once

#include <cstdint>

namespace Tarn::Fjel::Core::DeckManager {

/// What the writer of a keyword file's text has written, in byte offsets of the new text; -1 for what isn't there.
struct FileWriteResult
{
    bool ok = false; ///< every keyword was written
    std::int64_t headerBegin = -1;
    std::int64_t headerEnd = -1; ///< of the header's last byte
    std::int64_t tailBegin = -1;
};

} // namespace Tarn::Fjel::Core::DeckManager
