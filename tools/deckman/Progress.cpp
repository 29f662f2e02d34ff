#include "Progress.h"

#include <cstdio>
#include <string>

#include <fmt/format.h>
#include <unistd.h>

namespace Deckman {

namespace {

constexpr auto patience = std::chrono::seconds(1);
constexpr auto pause = std::chrono::milliseconds(200);

} // namespace

Progress::Progress()
    : m_enabled(::isatty(STDERR_FILENO) != 0 && ::isatty(STDOUT_FILENO) == 0), m_next(Clock::now() + patience)
{
}

void Progress::Finish()
{
    if (m_shown) std::fputs("\r\x1b[K", stderr);
    m_shown = false;
}

void Progress::Show(long long count, std::string_view what)
{
    const Clock::time_point now = Clock::now();
    if (now < m_next) return;
    m_next = now + pause;
    m_shown = true;
    const std::string line = fmt::format("\r{} {}\x1b[K", count, what);
    std::fputs(line.c_str(), stderr);
}

} // namespace Deckman
