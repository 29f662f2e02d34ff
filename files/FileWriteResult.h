#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace Tarn::Fjel::Core::DeckManager {

class Keyword;
class KeywordFileReader;

/// Where a keyword stands in a text that was written: from its own line, behind a comment that an edit has put ahead of
/// it, to the next keyword, or to text that no keyword owns.
struct WrittenExtent
{
    const Keyword* keyword;
    std::int64_t begin;
    std::int64_t end;
};

/// What is left of a file's end when its text breaks off behind the last keyword's own: a stretch of the file as it
/// stands, or text.
struct RestOfFile
{
    std::int64_t begin = 0;
    std::int64_t gap = 0; ///< from here on the stretch is no keyword's
    std::int64_t end = 0;
    std::string text; ///< where it isn't empty, in the place of the stretch
};

/// The end of a file, in the text in which it stands: what the file's text that broke off lacks.
struct RestBehindText
{
    std::vector<RestOfFile> pieces;
    std::shared_ptr<KeywordFileReader> reader;
};

/// What the writer of a keyword file's text has written, in byte offsets of the new text; -1 for what isn't there.
struct FileWriteResult
{
    bool ok = false; ///< every keyword was written
    std::int64_t headerBegin = -1;
    std::int64_t headerEnd = -1; ///< of the header's last byte
    std::int64_t tailBegin = -1;

    // For a commit alone.
    std::vector<WrittenExtent> extents; ///< in the order of the list
    std::vector<RestOfFile> rest;       ///< what a text that breaks off doesn't hold
};

} // namespace Tarn::Fjel::Core::DeckManager
