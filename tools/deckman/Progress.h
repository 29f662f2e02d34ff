#pragma once

#include <chrono>
#include <string_view>

namespace Deckman {

/// Tells people how far work has come that takes longer than a second: one line on standard error that is written over
/// and in the end wiped. Only when that is a terminal, and standard output, which would run into it, is none.
class Progress
{
public:
    Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    /// Wipes the line, if there is one.
    void Finish();

    /// `count` of `what` are done. Cheap enough for every few dozen.
    void Tell(long long count, std::string_view what)
    {
        if (m_enabled) Show(count, what);
    }

private:
    using Clock = std::chrono::steady_clock;

    void Show(long long count, std::string_view what);

    bool m_enabled;
    bool m_shown = false;
    Clock::time_point m_next;
};

} // namespace Deckman
