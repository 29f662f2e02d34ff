#pragma once

#include <functional>

#include "files/FileWriteResult.h"

namespace Tarn::Fjel::Core::DeckManager {

class Context;
class Keyword;
class KeywordFile;
class LineFileWriter;
class SourceFile;

/// Writes the text of keyword files: the one road by which a commit and every copy go.
class KeywordFileWriter
{
public:
    KeywordFileWriter() = delete;

    /// How a keyword of the list is written: its text, or what it leaves when it goes.
    using WriteKeyword = std::function<void(SourceFile& source, const Keyword& keyword)>;

    /// Each keyword of the list is written by `writeKeyword`; what no keyword owns goes along. `withHead`: tag and
    /// header too; without it, only a head that counts as data. `writer` null: only what `writeKeyword` does.
    static FileWriteResult WriteFile(KeywordFile& file, LineFileWriter* writer, bool withHead, const Context& context,
                                     const WriteKeyword& writeKeyword);

    /// The text as it is now, and where its keywords come to stand. With `partial` it breaks off behind the last
    /// keyword's own text: the file's end then waits for a later commit, as it came in the result of the first that
    /// broke off. `continuing`: only what follows on the keywords that the file's text holds; `writer` stands at its
    /// end.
    static FileWriteResult WriteForCommit(KeywordFile& file, LineFileWriter& writer, const Context& context,
                                          bool partial, bool continuing);

    /// What is written from now on ends its lines as the file does, where files keep their own line ends.
    static void KeepLineEnds(LineFileWriter& writer, SourceFile& source);
};

} // namespace Tarn::Fjel::Core::DeckManager
