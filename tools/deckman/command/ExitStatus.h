#pragma once

namespace Deckman {

/// What the program's exit status says. The values are a promise to scripts.
enum ExitStatus : int
{
    Done = 0,        ///< also with warnings, unless they are to be taken strictly
    NotThere = 1,    ///< the deck has errors, or the thing asked for isn't there
    WrongUsage = 2,  ///< the command line makes no sense
    FileFailure = 3, ///< a file could not be read or written
};

} // namespace Deckman
