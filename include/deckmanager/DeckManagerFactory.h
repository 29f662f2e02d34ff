#pragma once

#include <memory>
#include <string>

#include <deckmanager/IDeckManager.h>

namespace Tarn::Fjel::Core::DeckManager {

/// The entry into the library.
class DeckManagerFactory
{
public:
    /// A manager with a project directory, which must be a complete path and no file (`DeckManagerException`); it is
    /// created when it does not exist. The empty string gives a manager without one.
    static std::unique_ptr<IDeckManager> Create(const std::string& projectDir);
    static std::unique_ptr<IDeckManager> Create();
    static std::unique_ptr<IDeckManager> CreateSafely(const std::string& projectDir);
    static std::unique_ptr<IDeckManager> CreateSafely();
};

} // namespace Tarn::Fjel::Core::DeckManager
