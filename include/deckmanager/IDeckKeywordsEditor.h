#pragma once

#include <string>

namespace Tarn::Fjel::Core::DeckManager {

class IDeck;

/// The editor of a deck manager. It works on one current deck at a time.
class IDeckKeywordsEditor
{
public:
    /// The current deck; null when there is none.
    virtual IDeck* GetDeck() const = 0;

    /// Drops uncommitted changes; then the editor has no deck.
    virtual void Close() = 0;

    /// Drops the uncommitted changes of the current deck.
    virtual void Discard() = 0;

    /// Puts the current deck on the file of that name. False when the file cannot be used; throws
    /// `DeckManagerException` when `managed` is asked for, and with `checkDataFiles` when a file of the tree is
    /// missing.
    virtual bool ImportDeck(const std::string& fileName, bool managed, bool checkDataFiles) = 0;

    virtual ~IDeckKeywordsEditor() = default;
};

} // namespace Tarn::Fjel::Core::DeckManager
