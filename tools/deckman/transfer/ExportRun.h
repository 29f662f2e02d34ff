#pragma once

#include <functional>
#include <optional>
#include <string>

#include <deckmanager/ExportOptions.h>
#include <deckmanager/ExportReport.h>

namespace Deckman {

class DeckSession;
class Output;
struct Options;

Tarn::Fjel::Core::DeckManager::ExportOptions ToExportOptions(const Options& options);

/// Does an export, and warns of the files that don't exist. `target` names it in messages. Without a value it could not
/// be done, and that has been told; throws `Failure` for an exception, and where --rewrite would lose something.
std::optional<Tarn::Fjel::Core::DeckManager::ExportReport>
RunExport(DeckSession& session, const Options& options, const std::string& target,
          const std::function<bool(Tarn::Fjel::Core::DeckManager::ExportReport&)>& write);

/// The keywords that an export changes: as a unified diff, or as a JSON line each.
void PrintChanges(const DeckSession& session, const Tarn::Fjel::Core::DeckManager::ExportReport& report, bool json,
                  Output& out);

} // namespace Deckman
