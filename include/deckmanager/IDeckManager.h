#pragma once

#include <list>
#include <string>

#include <deckmanager/ProjectMovePlan.h>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;
class IDeckKeywordsEditor;
class IKeywordFile;

/// The object through which a host works: it owns keyword files, decks and at most one editor. Destroying it drops
/// every uncommitted change.
///
/// Use it, its decks and `Environment` from one thread at a time.
class IDeckManager
{
public:
    virtual ~IDeckManager() = default;

    /// The first free name of the form "Deck_1", "Deck_2", ...
    virtual std::string GenerateDeckName() const = 0;

    /// CLEARS ITS PLACE ON DISK: with a project directory everything in the deck's folder is deleted, without one the
    /// file of the deck's name in the working directory. Makes a new, empty deck; null when the name is taken. To open
    /// a file that a user names, use `ImportDeck`.
    virtual IDeck* CreateDeck(const std::string& name, bool allowVariables) = 0;

    /// A deck whose root file is the file at `path`. Null when the name is taken or the file cannot be used. Throws
    /// `DeckManagerException` for a managed import, and with `checkDataFiles` when a file of the tree is missing.
    virtual IDeck* ImportDeck(const std::string& name, const std::string& path, bool managed, bool allowVariables,
                              bool checkDataFiles) = 0;

    /// A deck named after the stem of `path`, made current in the editor; its root file is the one that a deck of that
    /// name has. Null when the name is taken.
    virtual IDeck* OpenDeck(const std::string& path, bool allowVariables) = 0;

    /// A deck on the file that a deck of that name has; nothing is cleared. Null when the name is taken.
    virtual IDeck* OpenExistingDeck(const std::string& name, bool allowVariables) = 0;

    /// Reads the deck's files anew. Throws `DeckManagerException` when one of them has uncommitted changes made through
    /// another deck; uncommitted changes of the deck itself go without question.
    virtual void RefreshDeck(const std::string& name) = 0;

    /// Closes and destroys a deck. False for a deck of another manager.
    virtual bool RemoveDeck(IDeck* deck) = 0;

    /// Closes and destroys all decks and files.
    virtual void Clear() = 0;

    /// The decks in order of creation. The reference is good for the manager's life.
    virtual const std::list<IDeck*>& GetDecks() const = 0;
    virtual bool ContainsDeck(const IDeck* deck) const = 0;

    /// The deck of that name, without regard to case; null when there is none.
    virtual IDeck* FindDeck(const std::string& name) const = 0;

    /// Changes the deck's name only: no file and no directory moves. False when the name is taken.
    virtual bool RenameDeck(IDeck* deck, const std::string& name) = 0;

    /// The editor, switched to `deck` (uncommitted changes of the deck that was current are dropped). A deck of another
    /// manager, or null, leaves the editor as it is. Owned by the manager.
    virtual IDeckKeywordsEditor* GetEditor(IDeck* deck) = 0;

    /// The editor, made on first use.
    virtual IDeckKeywordsEditor* GetEditor() = 0;

    /// CLEARS ITS NEW PLACE: what stands at `path` is replaced. Moves the project to that directory, or with
    /// `deleteOld` false copies it there and goes on with the copy. Open decks stay open, and their uncommitted changes
    /// are written to the new place. In all text files below the folders of the project the paths of INCLUDE keywords
    /// are corrected, so that each leads to the file that it led to before; a path that leads nowhere, or holds a
    /// variable or an alias, stays as it is.
    ///
    /// Nothing happens without a project, and for the place where it lies. Throws `DeckManagerException` for a path
    /// that is incomplete or a file's, for one inside the project or around it, and when the project can't be moved:
    /// the text says in which of the two directories it is whole then. What could not be deleted in the end is told
    /// at severity 3.
    virtual void MoveProjectDir(const std::string& path, bool deleteOld) = 0;

    /// Tells the manager that someone else has renamed a file. Throws `DeckManagerException` for a file that the
    /// manager does not hold, and when nothing stands under the new name.
    virtual void UpdateKeywordFilePath(const std::string& oldName, const std::string& newName) = 0;

    /// Tells the manager that someone else has deleted a directory of the project.
    virtual void NotifyDirectoryDeleted(const std::string& directory) = 0;

    /// Does nothing; keeps a place in the interface.
    virtual void ReservedOperation() = 0;

    /// Empties the cache of keyword positions.
    virtual void FlushCache() = 0;

    /// A second directory whose files count as if they lay in the project; the empty text clears it.
    virtual void SetTempProjectDir(const std::string& directory) = 0;

    /// All keyword files, in order of creation. The list owns nothing.
    virtual std::list<IKeywordFile*> GetKeywordFiles() const = 0;

    /// The changes in the files of the project that `MoveProjectDir` would make; nothing is done. Throws as it does
    /// before it has begun.
    virtual ProjectMovePlan PlanProjectDirMove(const std::string& path) = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
