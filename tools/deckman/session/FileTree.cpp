#include "session/FileTree.h"

#include <algorithm>
#include <exception>

#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <deckmanager/KeywordText.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordKind.h>
#include <tarn/service/Strings.h>

#include "session/DeckSession.h"

namespace Deckman {

namespace {

using Tarn::Fjel::Core::Keywords::DataAccessUtils;
using Tarn::Fjel::Core::Keywords::KeywordKind;

/// The keywords that name a grid file, with the extensions that complete a name without one.
struct GridKeyword
{
    std::string_view name;
    std::string_view extensions;
    std::optional<std::string> (*value)(const Tarn::Fjel::Core::Keywords::IKeywordData*);
};
constexpr GridKeyword gridKeywords[] = {{"GDFILE", "F?E?GRID", &DataAccessUtils::GetGDFILEName},
                                        {"ORDGRID", "OPF", &DataAccessUtils::GetORDGRIDName}};

/// The root of a leaf as a regular expression that matches nothing else.
std::string Quoted(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (!Service::IsAlnum(c) && c != '_' && static_cast<unsigned char>(c) < 0x80) result += '\\';
        result += c;
    }
    return result;
}

} // namespace

std::string WrittenIncludeName(const DeckManager::IKeyword& include)
{
    const DeckManager::KeywordText text(include);
    const std::string_view data = Service::Trimmed(text.Data());
    const bool quoted = data.starts_with('\'');
    const std::string_view name =
        quoted ? data.substr(1, data.find_first_of("'\n", 1) - 1) : data.substr(0, data.find_first_of("/ \t\n"));
    return std::string(name.empty() ? data.substr(0, data.find('\n')) : name);
}

FileLink FileTree::Top() const
{
    FileLink link = MakeLink(FileLink::Kind::Include, m_session.TopFile());
    link.file = m_session.Keywords().GetDataFile();
    return link;
}

const FileContents& FileTree::ContentsOf(DeckManager::IKeywordFile* file)
{
    const auto [place, isNew] = m_contents.try_emplace(file);
    FileContents& contents = place->second;
    if (!isNew) return contents;

    const DeckManager::KeywordFileIterator end = file->End();
    for (DeckManager::KeywordFileIterator position = file->Begin(); position != end; ++position) {
        const DeckManager::IKeyword& keyword = **position;
        ++contents.keywords;
        if (keyword.GetSyntax()->GetKind() == KeywordKind::Include)
            contents.links.push_back(LinkOf(keyword));
        else if (std::optional<FileLink> grid = GridLinkOf(keyword))
            contents.links.push_back(std::move(*grid));
    }
    return contents;
}

FileLink FileTree::LinkOf(const DeckManager::IKeyword& include) const
{
    if (DeckManager::IKeywordFile* file = m_session.Keywords().GetIncludedFile(&include)) {
        FileLink link = MakeLink(FileLink::Kind::Include, file->GetFileName());
        link.file = file;
        return link;
    }

    FileLink link;
    link.kind = FileLink::Kind::Refused;
    const std::optional<std::string> text =
        DataAccessUtils::GetINCLUDEFileName(m_session.Keywords().GetKeywordData(&include));
    if (!text) {
        // A name that nothing gives a value, such as a variable: what stands in the deck says more than nothing.
        link.shown = WrittenIncludeName(include);
        return link;
    }
    link.shown = *text;
    try {
        Service::FileName name(link.shown);
        if (name.IsSet() && name.MakeComplete(m_session.TopFile().GetDirectory()))
            link = MakeLink(FileLink::Kind::Refused, name);
    } catch (const std::exception&) {
        // The library has said that the name is no path; it is shown as it stands.
    }
    return link;
}

/// As the library guesses the grid file of a deck, but for each keyword that names one.
std::optional<FileLink> FileTree::GridLinkOf(const DeckManager::IKeyword& keyword) const
{
    const auto* const known = std::find_if(std::begin(gridKeywords), std::end(gridKeywords),
                                           [&](const GridKeyword& k) { return k.name == keyword.GetName(); });
    if (known == std::end(gridKeywords)) return std::nullopt;
    const std::optional<std::string> value = known->value(m_session.Keywords().GetKeywordData(&keyword));
    if (!value || Service::AllBlanks(*value)) return std::nullopt;

    try {
        Service::FileName name(*value);
        name.MakeComplete(m_session.TopFile().GetDirectory());
        if (name.GetExtension().empty()) {
            const std::string pattern = "^" + Quoted(name.GetRootName()) + "\\." + std::string(known->extensions) + "$";
            if (const auto matches = name.FindFilesByPattern(pattern); !matches.empty())
                name.SetFileName(matches.front());
        }
        return MakeLink(FileLink::Kind::Grid, name);
    } catch (const std::exception&) {
        FileLink link;
        link.kind = FileLink::Kind::Grid;
        link.shown = *value;
        return link;
    }
}

FileLink FileTree::MakeLink(FileLink::Kind kind, const Service::FileName& name) const
{
    FileLink link;
    link.kind = kind;
    link.shown = m_session.Shown(name);
    link.exists = name.FileExists();
    link.bytes = name.IsFile() ? std::max<long long>(0, name.FileLength()) : 0;
    return link;
}

} // namespace Deckman
