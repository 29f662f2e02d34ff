#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <deckmanager/ILineReader.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The path from which all keywords of a file read their text. They share this object: a commit moves them all to the
/// new file by changing it.
class KeywordFileReader
{
public:
    explicit KeywordFileReader(std::string path) : m_path(std::move(path)), m_file(m_path) {}
    /// For the text of `file` that stands at `path` until it takes its place.
    KeywordFileReader(std::string path, std::string file) : m_path(std::move(path)), m_file(std::move(file)) {}

    const std::string& GetPath() const { return m_path; }
    /// The file whose text it is.
    const std::string& GetFile() const { return m_file; }
    /// The file is called so now; its text is where it was.
    void SetFile(const std::string& file) { m_file = file; }
    /// Goes over to another path, of the file itself.
    void SetPath(const std::string& path);

    /// A reader at the beginning of the file; null if it can't be opened. When a reader is `required` and there is no
    /// regular file, throws `DeckManagerException`.
    std::unique_ptr<ILineReader> OpenLineReader(bool required) const;

    /// The number, counted from 1, of the first line at or behind `position` whose first character, white space aside,
    /// is a letter (behind suppress markers too); -1 if there is none. Reads the file once, at the first call.
    int LineNumberAt(long long position);

private:
    struct LineStart
    {
        long long position;
        std::int32_t number;
    };

    void ReadLineStarts();

    std::string m_path;
    std::string m_file;
    std::unique_ptr<std::vector<LineStart>> m_lineStarts;
};

} // namespace Tarn::Fjel::Core::DeckManager
