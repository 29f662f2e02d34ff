#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include <deckmanager/IDeck.h>
#include <deckmanager/IDeckKeywords.h>
#include <deckmanager/IDeckManager.h>
#include <tarn/service/Exception.h>
#include <tarn/service/FileName.h>
#include <tarn/service/FileStatus.h>

#include "command/Failure.h"
#include "command/Options.h"
#include "output/Messages.h"

namespace Tarn::Fjel::Core::DeckManager {
class IDeckKeywordsEditor;
class IKeyword;
class IKeywordFile;
} // namespace Tarn::Fjel::Core::DeckManager

namespace Deckman {

namespace DeckManager = Tarn::Fjel::Core::DeckManager;
namespace Service = Tarn::Fjel::Core::Service;

/// Sets up what the process has once, as the options say. To be called before the library is used.
void SetUpProcess(const Options& options);

/// The complete name of a directory as the user gave it. Throws `Failure` for a text that can't be one.
Service::Directory ToDirectory(const std::string& path);
/// The same for the directory of a project, which must be there.
Service::Directory ToProjectDirectory(const std::string& path);

class PlaceIndex;

/// One deck, opened for one command.
class DeckSession
{
public:
    /// Opens the deck of that top file, with the cache of the project in that directory; empty: without one. Throws
    /// `Failure` when either can't be read.
    DeckSession(const std::string& path, Messages& messages, const std::string& projectDir = {});
    ~DeckSession();

    const DeckManager::IDeck& Deck() const { return *m_deck; }
    const DeckManager::IDeckKeywords& Keywords() const { return *m_keywords; }
    Messages& Log() const { return m_messages; }

    /// The top file, complete.
    const Service::FileName& TopFile() const { return m_topFile; }

    /// A number for each file, in the order in which they were first asked for.
    int FileNumber(DeckManager::IKeywordFile* file);
    /// A file's name relative to the folder of the top file where it lies in it, else its full name. Good until the
    /// next `FileNumber`.
    const std::string& FileShown(int number) const { return m_shownFiles[static_cast<std::size_t>(number)]; }
    std::string Shown(const Service::FileName& file) const;
    /// The same for a full name.
    std::string ShownName(std::string_view name) const;
    /// The same in the way of messages: as a user would type it here.
    std::string PlaceOf(const DeckManager::IKeywordFile& file) const;
    /// File and line of a keyword, in the way of messages.
    std::string PlaceOf(const DeckManager::IKeyword& keyword) const;

    /// A further deck in the care of the same manager. Throws `Failure` when it can't be read.
    DeckManager::IDeck& OpenBeside(const std::string& path);
    DeckManager::IDeckManager& Manager() const { return *m_manager; }
    DeckManager::IDeck& EditedDeck() const { return *m_deck; }
    /// The editor, working on the deck.
    DeckManager::IDeckKeywordsEditor& Editor();
    /// All files of the deck, each once, in deck order; what stands behind the ends of files counts too.
    std::vector<DeckManager::IKeywordFile*> FilesInDeckOrder() const;

    /// The keywords by their places; with `all` those behind the end too.
    PlaceIndex& Places(bool all);

    /// Stores what is known of the deck's files in the cache of the project. A session that ends does so by itself.
    void SaveCache();

    /// Some file of the deck exists and can't be read.
    bool HasUnreadableFile() const;
    /// Throws `Failure` then: what can't be read may be what a change is about, or would be counted with it.
    void RequireReadable() const;

private:
    void Open(const std::string& path, const std::string& projectDir);
    DeckManager::IDeck& Import(const std::string& path, const char* name);

    Messages& m_messages;
    std::unique_ptr<DeckManager::IDeckManager> m_manager;
    DeckManager::IDeck* m_deck = nullptr;
    DeckManager::IDeckKeywords* m_keywords = nullptr;
    Service::FileName m_topFile;
    std::string m_topFolder; // ends in a separator
    std::unordered_map<DeckManager::IKeywordFile*, int> m_fileNumbers;
    std::vector<std::string> m_shownFiles;
    std::unique_ptr<PlaceIndex> m_places[2]; ///< without what stands behind the end, and with it
};

} // namespace Deckman
