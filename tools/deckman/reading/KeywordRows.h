#pragma once

#include <optional>
#include <string>

#include "command/Options.h"
#include "output/Output.h"
#include "output/Table.h"
#include "session/DeckWalk.h"

namespace Deckman {

class DeckSession;

/// Whether the keyword on which the walk stands passes the filter.
bool Passes(const KeywordFilter& filter, const DeckWalk& walk);

/// Lists keywords as `ls` does: for machines one object a line at once, for people a table at the end.
class KeywordRows
{
public:
    KeywordRows(const DeckSession& session, Output& out, bool json);

    /// The keyword on which the walk stands.
    void Add(const DeckWalk& walk);
    void Finish();

private:
    void AddJson(const DeckWalk& walk);
    void AddRow(const DeckWalk& walk);

    const DeckSession& m_session;
    Output& m_out;
    bool m_json;
    std::optional<Table> m_table;
    std::string m_middle; // `,"section":…,"file":…,"line":` of the stretch
    int m_stretch = -1;
};

} // namespace Deckman
