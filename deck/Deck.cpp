#include "deck/Deck.h"

#include <vector>

#include "deck/DeckFactory.h"
#include "deck/DeckKeywords.h"
#include "deck/DeckKeywordsFactory.h"
#include "files/KeywordFile.h"
#include <deckmanager/DeckInconsistencyInfo.h>
#include <deckmanager/DeckManagerException.h>
#include <deckmanager/Environment.h>
#include <deckmanager/IKeyword.h>
#include <deckmanager/IKeywordFileManager.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/keywords/KeywordSyntaxUtils.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileUtils.h>

namespace Tarn::Fjel::Core::DeckManager {

using Core::Keywords::KeywordSyntaxUtils;
using Core::Keywords::SectionType;
using Core::Keywords::SimulatorType;

std::unique_ptr<Deck> DeckFactory::Create(IKeywordFileManager& fileManager, const std::string& name, bool openExisting,
                                          bool allowVariables)
{
    return std::make_unique<Deck>(fileManager, name, openExisting, allowVariables);
}

Deck::Deck(IKeywordFileManager& fileManager, const std::string& name, bool openExisting, bool allowVariables)
    : m_fileManager(fileManager), m_name(name), m_directoryName(name), m_variablesAllowed(allowVariables)
{
    const Service::Directory directory = Deck::GetDirectory();
    Service::FileName file(name);
    if (file.GetExtension() != "VFP") file.SetExtension("DATA");
    file = directory;
    if (!openExisting) {
        if (m_fileManager.HasProjectDir()) {
            // A name such as ".." or the empty one leads to no folder of its own: nobody asked to lose what is there.
            const bool isOwn = directory.IsDescendantOf(m_fileManager.ProjectDir());
            if (isOwn && directory.Exists()) directory.DeleteContent();
        } else if (file.FileExists()) {
            Service::FileUtils::Remove(file);
        }
    }
    m_keywords = DeckKeywordsFactory::Create(m_fileManager.GetKeywordFile(file, allowVariables), allowVariables);
}

Deck::~Deck() = default;

IDeckKeywords* Deck::GetDeckKeywords() const
{
    return m_keywords.get();
}

Service::Directory Deck::GetDirectory() const
{
    if (!m_fileManager.ProjectDir().IsSet()) return Service::Directory::Current();
    Service::Directory directory = m_fileManager.ProjectDir();
    directory.Append(m_directoryName);
    return directory;
}

bool Deck::ImportDeck(const std::string& path, bool managed, bool checkDataFiles)
{
    const Service::FileName file(path);
    const std::shared_ptr<KeywordFile> previous = m_keywords->RootFile();
    std::vector<std::string> missing;
    bool result = false;

    if (!file.FileAccessibleAndExists()) {
        missing.push_back(file.GetFullName());
    } else {
        if (managed) throw DeckManagerException("Deck::ImportDeck: managed import not yet supported");
        if (const std::shared_ptr<KeywordFile> newRoot = m_fileManager.GetKeywordFile(file, m_variablesAllowed)) {
            if (newRoot == previous) {
                m_keywords->Refresh(false);
            } else {
                m_keywords->SetDataFile(newRoot);
                if (Environment::Instance().AllowCacheRebuild()) m_keywords->Refresh(true);
            }
            if (checkDataFiles) {
                for (const KeywordFile* member : m_keywords->FilesInDeckOrder()) {
                    if (!member->GetFileName().FileExists()) missing.push_back(member->GetFileName().GetFullName());
                }
            }
            result = missing.empty();
        }
    }

    if (checkDataFiles && !missing.empty()) {
        m_keywords->SetDataFile(previous);
        std::string message = "The following file(s) does not exist:\n\n";
        for (const std::string& name : missing) {
            message += name + "\n";
        }
        throw DeckManagerException(message);
    }
    return result;
}

bool Deck::IsValidForSimulator(SimulatorType simulator, DeckInconsistencyInfo* info, SectionType section) const
{
    if (info != nullptr) info->Keywords().clear();
    if (simulator == SimulatorType::Any) return true;

    KeywordIterator position = m_keywords->Begin();
    KeywordIterator end = m_keywords->End();
    if (section != SectionType::None) {
        const KeywordIterator& sectionBegin = m_keywords->SectionBegin(section);
        const KeywordIterator& sectionEnd = m_keywords->SectionEnd(section);
        if (sectionBegin != sectionEnd) {
            position = sectionBegin;
            end = sectionEnd;
        }
    }

    bool ok = true;
    bool skipping = false;
    for (; position != end && *position != nullptr; ++position) {
        const Core::Keywords::IKeywordSyntax* syntax = position->GetSyntax();
        if (skipping && !KeywordSyntaxUtils::IsENDSKIP(syntax)) continue;
        skipping = false;
        if (syntax->IsSupportedBy(simulator)) {
            skipping = KeywordSyntaxUtils::IsSKIP(syntax) ||
                       (simulator == SimulatorType::S100 && KeywordSyntaxUtils::IsSKIP100(syntax)) ||
                       (simulator == SimulatorType::S300 && KeywordSyntaxUtils::IsSKIP300(syntax));
            continue;
        }
        ok = false;
        if (info == nullptr) break;
        info->Keywords().push_back(*position);
    }
    return ok;
}

} // namespace Tarn::Fjel::Core::DeckManager
