#include "transfer/MergedIncludes.h"

#include <optional>
#include <set>

#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFile.h>
#include <fmt/format.h>
#include <tarn/keywords/DataAccessUtils.h>
#include <tarn/service/FileUtils.h>

#include "session/DeckSession.h"

namespace Deckman {

using Tarn::Fjel::Core::Keywords::DataAccessUtils;

MergedIncludes::MergedIncludes(const DeckManager::IDeck& oldDeck, const DeckManager::MergeReport& report)
{
    const DeckManager::IDeckKeywords& keywords = *oldDeck.GetDeckKeywords();
    std::set<const DeckManager::IKeywordFile*> seen;
    struct Found
    {
        const DeckManager::IKeyword* include;
        bool isNamedByDeck;
    };
    std::vector<Found> waiting;
    for (const auto& entry : report.entries) {
        if (entry.action == DeckManager::MergeReport::Action::Missing) waiting.push_back({entry.source, true});
    }
    for (std::size_t at = 0; at < waiting.size(); ++at) {
        const auto [include, isNamedByDeck] = waiting[at];
        const DeckManager::IKeywordFile* file = keywords.GetIncludedFile(include);
        const std::optional<std::string> name = DataAccessUtils::GetINCLUDEFileName(keywords.GetKeywordData(include));
        if (file == nullptr || !name || !seen.insert(file).second) continue;
        // A complete name is found from everywhere.
        if (!Service::FileName(*name).IsComplete()) m_files.push_back({file->GetFileName(), *name, isNamedByDeck});
        for (const DeckManager::KeywordFileIterator& below : file->GetINCLUDEKeywords())
            waiting.push_back({*below, false});
    }
}

void MergedIncludes::CopyTo(const Service::Directory& directory, bool byLeaf, Messages& messages) const
{
    bool failed = false;
    for (const File& file : m_files) {
        Service::FileName target(file.name);
        if (byLeaf && file.isNamedByDeck) target = Service::FileName(target.GetFileName());
        target.MakeComplete(directory);
        const std::string shown = messages.Shown(target.GetFullName());
        if (!file.from.FileExists()) continue;
        if (target.FileExists()) {
            messages.Warning(shown, fmt::format("The file is there already, and is not replaced by {}.",
                                                messages.Shown(file.from.GetFullName())));
            continue;
        }
        if (target.GetDirectory().Create() && Service::FileUtils::Copy(file.from, target, false)) {
            messages.Note(shown, fmt::format("Copied from {}.", messages.Shown(file.from.GetFullName())));
        } else {
            messages.Error(
                shown, fmt::format("The file could not be copied from {}.", messages.Shown(file.from.GetFullName())));
            failed = true;
        }
    }
    if (failed) throw Failure(FileFailure, "A file that the merged deck includes could not be copied to it.");
}

} // namespace Deckman
