#pragma once

#include <string>
#include <vector>

#include <deckmanager/IDeck.h>
#include <deckmanager/MergeReport.h>
#include <tarn/service/Directory.h>
#include <tarn/service/FileName.h>

#include "output/Messages.h"

namespace Deckman {

/// The files that a user's INCLUDE keywords bring in and that the merged deck can't find: they, and what they include,
/// are copied to it.
class MergedIncludes
{
public:
    MergedIncludes(const Tarn::Fjel::Core::DeckManager::IDeck& oldDeck,
                   const Tarn::Fjel::Core::DeckManager::MergeReport& report);

    /// Puts each file where its name leads from a folder. `byLeaf`: the deck was copied there with all files side by
    /// side, and so the files that it names itself go by their leaves. A file that is there stays, and is told, as is
    /// one that can't be copied: then `Failure` is thrown at the end.
    void CopyTo(const Tarn::Fjel::Core::Service::Directory& directory, bool byLeaf, Messages& messages) const;

private:
    struct File
    {
        Tarn::Fjel::Core::Service::FileName from;
        std::string name; ///< as the deck has it
        bool isNamedByDeck;
    };

    std::vector<File> m_files;
};

} // namespace Deckman
