#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "keywords/Keyword.h"

namespace Tarn::Fjel::Core::Service {
class Directory;
class FileName;
} // namespace Tarn::Fjel::Core::Service

namespace Tarn::Fjel::Core::DeckManager {

class ExportedFileMap;

/// A keyword that names another file, which belongs to the deck as the keyword does.
class FileReferencingKeyword : public Keyword
{
public:
    /// The keyword as one that names a file; null for any other keyword and for null.
    static const FileReferencingKeyword* From(const IKeyword* keyword);

    /// Decides what the keyword is to say in a copy of the deck in `directory`, where all files lie side by side, and
    /// notes in `fileMap` which files come along. No value: the keyword stays as it is.
    virtual std::optional<std::string> NameInCopy(const Service::Directory& directory, const Context& context,
                                                  ExportedFileMap& fileMap) const = 0;

    /// The data text of the keyword with another file's name in the place of its own, and everything else as it is. No
    /// value where that is no change, and for a name that no text can hold.
    std::optional<std::string> TextWithName(const std::string& name, const Context& context) const;

    /// Where the token stands that is the file's name in a data text or at the head of its line, quotes and a repeat
    /// included: begin and size. No size when there is none.
    static std::pair<std::size_t, std::size_t> NameToken(std::string_view text);
    /// The token in the place of the name, where that is all in which `text` differs from the data text of the keyword.
    std::optional<std::string> TokenAlone(const std::string& text) const;

    /// Writes the keyword for a copy of the deck in `directory`. The files that come along wait in `fileMap`.
    void ExportTo(ILineWriter& writer, const Service::Directory& directory, const Context& context,
                  Keywords::SimulatorType simulator, ExportedFileMap& fileMap) const;

    /// The file that the keyword names, completed against the folder of the deck's top file where it stands in a deck.
    /// Not set without a name, and for text that can't be one.
    Service::FileName NamedFile(const Context& context) const;

protected:
    using Keyword::Keyword;

    /// The file's name in data of this keyword; no value while it is unset.
    virtual std::optional<std::string> NameIn(const Keywords::IKeywordData* data) const = 0;
    virtual void PutName(Keywords::IKeywordData& data, const std::string& name) const = 0;

    std::optional<std::string> NamedText(const Context& context) const;

private:
    std::unique_ptr<Keyword> Blank() const;
};

} // namespace Tarn::Fjel::Core::DeckManager
