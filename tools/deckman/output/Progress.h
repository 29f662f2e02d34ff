#pragma once

#include <string_view>

namespace Deckman {

/// Tells people how far work has come that takes longer than a second: one line on standard error that is written over
/// and wiped before anything else comes to the terminal. Only when standard error is one. A thread of its own looks at
/// the clock, so that long work of any kind shows; it touches nothing but the line.
class Progress
{
public:
    /// From now on the time counts.
    static void Begin();
    /// `count` of `what` are done; `what` lasts as long as the program. Cheap enough for every few dozen.
    static void Tell(long long count, const char* what);
    /// Wipes the line, if there is one, for something else that is to be printed. It may come again.
    static void Wipe();
    /// Wipes the line for good: the output begins.
    static void End();
};

} // namespace Deckman
