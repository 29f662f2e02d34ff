#pragma once

#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include <tarn/service/FileName.h>

namespace Tarn::Fjel::Core::DeckManager {
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

class DeckSession;

/// The name in the data of an `INCLUDE` as it is written there, without quotes; the first line of the data when there
/// is no name.
std::string WrittenIncludeName(const Tarn::Fjel::Core::DeckManager::IKeyword& include);

/// What a file of the deck brings in.
struct FileLink
{
    enum class Kind
    {
        Include,
        Refused, ///< an INCLUDE that brings in nothing: its name closes a ring, or is no file's
        Grid,
    };

    Kind kind = Kind::Include;
    Tarn::Fjel::Core::DeckManager::IKeywordFile* file = nullptr; ///< of an `Include`
    std::string shown;
    bool exists = false;
    long long bytes = 0;
};

/// A file of keywords, with what it brings in, in file order.
struct FileContents
{
    long long keywords = 0;
    std::vector<FileLink> links;
};

/// The files of a deck and what includes what. A file is looked through once, however often it is included.
class FileTree
{
public:
    explicit FileTree(DeckSession& session) : m_session(session) {}

    FileLink Top() const;
    /// Loads the file. The reference lasts as long as the tree.
    const FileContents& ContentsOf(Tarn::Fjel::Core::DeckManager::IKeywordFile* file);
    /// The grid file that the keyword names; empty for a keyword that names none.
    std::optional<FileLink> GridLinkOf(const Tarn::Fjel::Core::DeckManager::IKeyword& keyword) const;

private:
    FileLink LinkOf(const Tarn::Fjel::Core::DeckManager::IKeyword& include) const;
    FileLink MakeLink(FileLink::Kind kind, const Tarn::Fjel::Core::Service::FileName& name) const;

    DeckSession& m_session;
    std::unordered_map<Tarn::Fjel::Core::DeckManager::IKeywordFile*, FileContents> m_contents;
};

} // namespace Deckman
