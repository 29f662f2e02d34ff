#pragma once

#include <cstddef>
#include <memory>
#include <string_view>

namespace Deckman {

/// How a piece of text looks on a terminal. Elsewhere all look the same.
enum class Style : unsigned char
{
    Plain,
    Heading,
    Strong,
    Faint,
    Alert,
};

/// Standard output behind one large buffer.
///
/// A reader that goes away (`deckman ls DECK | head`) is no failure: what follows is dropped quietly, and `Closed`
/// tells long work to stop. Any other write error is kept for `Failure`.
class Output
{
public:
    Output();
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
    /// Nobody reads any more.
    bool Closed() const { return m_closed; }
    /// The errno of the first write that failed; 0 when none did.
    int Failure() const { return m_failure; }

private:
    static constexpr std::size_t capacity = 256 * 1024;

    void AppendSlowly(std::string_view text);
    void Write(std::string_view text);

    std::unique_ptr<char[]> m_buffer;
    std::size_t m_size = 0;
    bool m_colours;
    bool m_closed = false;
    int m_failure = 0;
};

} // namespace Deckman
