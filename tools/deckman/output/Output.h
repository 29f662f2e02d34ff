#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

#include "output/Pager.h"

namespace Deckman {

/// How a piece of text looks on a terminal. Elsewhere all look the same.
enum class Style : unsigned char
{
    Plain,
    Heading,
    Strong,
    Faint,
    Alert,
    Added,
};

/// Standard output behind one large buffer. On a terminal, what is longer than the screen goes through the user's
/// pager.
///
/// A reader that goes away (`deckman ls DECK | head`) is no failure: what follows is dropped quietly, and `Closed`
/// tells long work to stop. Any other write error is kept for `Failure`.
class Output
{
public:
    explicit Output(bool mayPage = true);
    ~Output();
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    void Append(std::string_view text)
    {
        if (text.size() > capacity - m_size) {
            AppendSlowly(text);
            return;
        }
        text.copy(m_buffer.get() + m_size, text.size());
        m_size += text.size();
    }
    void Append(char c)
    {
        if (m_size == capacity) Flush();
        m_buffer[m_size++] = c;
    }
    void AppendNumber(long long value);
    void Append(std::string_view text, Style style);
    void AppendBlanks(std::size_t count);

    void Flush();
    /// Flushes, and waits until the user has read it.
    void Finish();
    /// The columns that a line may have; 0 where nobody counts them.
    std::size_t Columns() const { return m_columns; }
    /// Nobody reads any more.
    bool Closed() const { return m_closed; }
    /// The errno of the first write that failed; 0 when none did.
    int Failure() const { return m_failure; }

private:
    static constexpr std::size_t capacity = 256 * 1024;

    void AppendSlowly(std::string_view text);
    void Write(std::string_view text);
    void BeginOnTerminal(std::string_view text);
    bool FitsScreen(std::string_view text) const;

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_size = 0;
    bool m_isTerminal;
    bool m_mayPage;
    bool m_colours;
    bool m_begun = false; ///< something has been written
    std::size_t m_columns;
    Pager m_pager;
    bool m_closed = false;
    int m_failure = 0;
};

} // namespace Deckman
