#include "Output.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>

#include <fmt/format.h>
#include <unistd.h>

namespace Deckman {

namespace {

/// Colours are for people: on a terminal that knows them, and never against the user's wish.
bool WantsColours()
{
    const char* noColour = std::getenv("NO_COLOR");
    if (noColour != nullptr && *noColour != '\0') return false;
    const char* terminal = std::getenv("TERM");
    return ::isatty(STDOUT_FILENO) != 0 && terminal != nullptr && std::strcmp(terminal, "dumb") != 0;
}

std::string_view Begin(Style style)
{
    switch (style) {
    case Style::Heading:
        return "\x1b[4m";
    case Style::Strong:
        return "\x1b[1m";
    case Style::Faint:
        return "\x1b[2m";
    case Style::Alert:
        return "\x1b[31m";
    case Style::Plain:
        break;
    }
    return {};
}

} // namespace

Output::Output() : m_buffer(new char[capacity]), m_colours(WantsColours())
{
    // A closed pipe then shows as an error of the write, like any other.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that grows beyond what the process may write.
    std::signal(SIGXFSZ, SIG_IGN);
}

Output::~Output()
{
    Flush();
}

void Output::AppendNumber(long long value)
{
    const fmt::format_int digits(value);
    Append(std::string_view(digits.data(), digits.size()));
}

void Output::Append(std::string_view text, Style style)
{
    if (!m_colours || style == Style::Plain) {
        Append(text);
        return;
    }
    Append(Begin(style));
    Append(text);
    Append("\x1b[0m");
}

void Output::AppendBlanks(std::size_t count)
{
    for (; count > 0; --count)
        Append(' ');
}

void Output::AppendSlowly(std::string_view text)
{
    Flush();
    if (text.size() > capacity) {
        Write(text);
        return;
    }
    text.copy(m_buffer.get(), text.size());
    m_size = text.size();
}

void Output::Flush()
{
    Write(std::string_view(m_buffer.get(), m_size));
    m_size = 0;
}

void Output::Write(std::string_view text)
{
    while (!text.empty() && !m_closed && m_failure == 0) {
        const ssize_t written = ::write(STDOUT_FILENO, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EPIPE)
            m_closed = true;
        else if (errno != EINTR)
            m_failure = errno;
    }
}

} // namespace Deckman
