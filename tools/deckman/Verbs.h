#pragma once

#include "ExitStatus.h"
#include "Options.h"
#include "Output.h"

namespace Deckman {

class DeckSession;

/// The verbs, a source file each. They print to `out`, tell trouble through the session's messages or by `Failure`, and
/// change nothing on disk.
ExitStatus RunLs(DeckSession& session, const Options& options, Output& out);
ExitStatus RunTree(DeckSession& session, const Options& options, Output& out);
ExitStatus RunSections(DeckSession& session, const Options& options, Output& out);
ExitStatus RunScopes(DeckSession& session, const Options& options, Output& out);
ExitStatus RunShow(DeckSession& session, const Options& options, Output& out);
ExitStatus RunFind(DeckSession& session, const Options& options, Output& out);

} // namespace Deckman
