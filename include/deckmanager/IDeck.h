#pragma once

#include <string>

#include <tarn/keywords/SectionType.h>
#include <tarn/keywords/SimulatorType.h>
#include <tarn/service/Directory.h>

namespace Tarn::Fjel::Core::DeckManager {

class DeckInconsistencyInfo;
class IDeckKeywords;

/// A named handle on one root keyword file and whatever that file includes. Owned by its deck manager.
class IDeck
{
public:
    virtual const std::string& GetName() const = 0;

    /// The deck's keywords; owned by the deck.
    virtual IDeckKeywords* GetDeckKeywords() const = 0;

    /// Whether a simulator knows all keywords of a section (`None`, or a section that the deck lacks: of the deck).
    /// What a simulator skips does not count. With `info`, the unknown ones are listed there; without, the first one
    /// ends the test. The simulator `Any` knows every keyword.
    virtual bool IsValidForSimulator(Keywords::SimulatorType simulator, DeckInconsistencyInfo* info,
                                     Keywords::SectionType section) const = 0;

    virtual bool AllowsVariables() const = 0;
    virtual ~IDeck() = default;

    /// The project directory with the name at creation appended; without a project, the working directory.
    virtual Service::Directory GetDirectory() const = 0;
};

} // namespace Tarn::Fjel::Core::DeckManager
