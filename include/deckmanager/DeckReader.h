#pragma once

#include <memory>
#include <string>

#include <deckmanager/IDeckManager.h>

namespace Tarn::Fjel::Core::DeckManager {

/// Reads single deck files with a manager of its own.
class DeckReader
{
public:
    DeckReader();
    ~DeckReader();
    DeckReader(const DeckReader&) = delete;
    DeckReader& operator=(const DeckReader&) = delete;

    /// The deck of that file; null when it is no file. The reader owns it: it lives as long as the reader.
    IDeck* Read(const std::string& fileName);

private:
    std::unique_ptr<std::unique_ptr<IDeckManager>> m_manager;
};

} // namespace Tarn::Fjel::Core::DeckManager
