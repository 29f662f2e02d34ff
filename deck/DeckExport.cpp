#include "deck/DeckKeywords.h"

#include <deckmanager/Exporter.h>

namespace Tarn::Fjel::Core::DeckManager {

bool DeckKeywords::ExportToDirectory(const std::string& directory, const std::string& fileName,
                                     Keywords::SimulatorType simulator, bool forceRewrite) const
{
    ExportOptions options;
    options.simulator = simulator;
    options.forceRewrite = forceRewrite;
    return Exporter::CopyToDirectory(*this, directory, fileName, options, nullptr);
}

bool DeckKeywords::ExportToDirectory(const std::string& directory, Keywords::SimulatorType simulator,
                                     bool forceRewrite) const
{
    return ExportToDirectory(directory, {}, simulator, forceRewrite);
}

} // namespace Tarn::Fjel::Core::DeckManager
