#pragma once

#include <tarn/keywords/SimulatorType.h>

namespace Tarn::Fjel::Core::DeckManager {

/// How an export is done.
struct ExportOptions
{
    /// Keywords are written for that simulator; a copy to a directory leaves out those that it doesn't know.
    Keywords::SimulatorType simulator = Keywords::SimulatorType::Any;
    /// Keywords are written from their data, and not copied as they stand.
    bool forceRewrite = false;
    /// Nothing is written. The report tells what would be.
    bool planOnly = false;
};

} // namespace Tarn::Fjel::Core::DeckManager
