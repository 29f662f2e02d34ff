#include "output/Output.h"

#include <cerrno>
#include <csignal>

#include <fmt/format.h>
#include <unistd.h>

#include "output/Progress.h"
#include "output/Terminal.h"

namespace Deckman {

namespace {

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
    case Style::Added:
        return "\x1b[32m";
    case Style::Plain:
        break;
    }
    return {};
}

} // namespace

Output::Output(bool mayPage)
    : m_buffer(new char[capacity]), m_isTerminal(Terminal::IsOutput()), m_mayPage(mayPage),
      m_colours(Terminal::HasColours(m_isTerminal)),
      m_columns(m_isTerminal ? static_cast<std::size_t>(Terminal::Columns()) : 0)
{
    // A closed pipe then shows as an error of the write, like any other.
    std::signal(SIGPIPE, SIG_IGN);
    // So is a file that grows beyond what the process may write.
    std::signal(SIGXFSZ, SIG_IGN);
}

Output::~Output()
{
    Finish();
}

void Output::Finish()
{
    Flush();
    m_pager.Finish();
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

/// Of text with colours: whether it has no more lines than the screen, with those counted that go on in the next row.
bool Output::FitsScreen(std::string_view text) const
{
    const std::size_t rows = static_cast<std::size_t>(Terminal::Rows());
    std::size_t lines = 1; // of the shell behind it
    std::size_t column = 0;
    bool isEscape = false;
    for (const char c : text) {
        if (isEscape) {
            isEscape = c != 'm';
        } else if (c == '\x1b') {
            isEscape = true;
        } else if (c == '\n') {
            ++lines;
            column = 0;
        } else if ((c & 0xC0) != 0x80 && ++column > m_columns) {
            ++lines;
            column = 1;
        }
        if (lines > rows) return false;
    }
    return true;
}

void Output::BeginOnTerminal(std::string_view text)
{
    Progress::End();
    if (!m_mayPage || FitsScreen(text)) return;
    if (const std::string command = Terminal::PagerCommand(); !command.empty()) m_pager.Start(command);
}

void Output::Write(std::string_view text)
{
    if (text.empty()) return;
    if (m_isTerminal && !m_begun) BeginOnTerminal(text);
    // Who reads it may be a pager, on the terminal where the progress would be.
    if (!m_begun && Terminal::IsPiped()) Progress::End();
    m_begun = true;
    const int target = m_pager.IsRunning() ? m_pager.Input() : STDOUT_FILENO;
    while (!text.empty() && !m_closed && m_failure == 0) {
        const ssize_t written = ::write(target, text.data(), text.size());
        if (written >= 0)
            text.remove_prefix(static_cast<std::size_t>(written));
        else if (errno == EPIPE)
            m_closed = true;
        else if (errno != EINTR)
            m_failure = errno;
    }
}

} // namespace Deckman
