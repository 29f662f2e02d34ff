#include "editing/EditScript.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

#include "session/DeckSession.h"

namespace Deckman {

namespace {

class ScriptReader
{
public:
    ScriptReader(std::string_view text, const std::string& name) : m_text(text), m_name(name) {}

    std::vector<ScriptCommand> Read()
    {
        std::vector<ScriptCommand> commands;
        while (m_at < m_text.size()) {
            ScriptCommand command{m_line, {}};
            ReadLine(command.words);
            for (const auto& [word, end] : m_wanted)
                command.words[word] = HereText(end, command.line);
            m_wanted.clear();
            if (!command.words.empty()) commands.push_back(std::move(command));
        }
        return commands;
    }

private:
    Failure Unended(int line, const std::string& text) const
    {
        return Failure(WrongUsage, text, fmt::format("{}:{}", m_name, line));
    }

    char Take()
    {
        const char c = m_text[m_at++];
        if (c == '\n') ++m_line;
        return c;
    }

    /// The words up to the line's end, which may stand some lines below.
    void ReadLine(std::vector<std::string>& words)
    {
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == '\n') {
                Take();
                return;
            }
            if (c == ' ' || c == '\t' || c == '\r') {
                Take();
            } else if (c == '#') {
                m_at = std::min(m_text.find('\n', m_at), m_text.size());
            } else if (m_text.substr(m_at, 2) == "\\\n") {
                Take();
                Take();
            } else if (m_text.substr(m_at, 2) == "<<") {
                m_at += 2;
                m_wanted.emplace_back(words.size(), ReadWord());
                if (m_wanted.back().second.empty())
                    throw Unended(m_line, "A word is expected behind <<, by which the text ends.");
                words.emplace_back();
            } else {
                words.push_back(ReadWord());
            }
        }
    }

    std::string ReadWord()
    {
        std::string word;
        while (m_at < m_text.size()) {
            const char c = m_text[m_at];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n') break;
            Take();
            if (c == '\'' || c == '"') {
                ReadQuoted(c, word);
            } else if (c == '\\' && m_at < m_text.size()) {
                if (const char next = Take(); next != '\n') word += next;
            } else {
                word += c;
            }
        }
        return word;
    }

    void ReadQuoted(char quote, std::string& word)
    {
        const int begin = m_line;
        while (m_at < m_text.size()) {
            const char c = Take();
            if (c == quote) return;
            const bool escapes =
                quote == '"' && c == '\\' && m_at < m_text.size() && (m_text[m_at] == '"' || m_text[m_at] == '\\');
            word += escapes ? Take() : c;
        }
        throw Unended(begin, fmt::format("What begins with {} here is never ended.", quote));
    }

    std::string HereText(const std::string& end, int line)
    {
        std::string text;
        while (m_at < m_text.size()) {
            const std::size_t lineEnd = std::min(m_text.find('\n', m_at), m_text.size());
            const std::string_view next = m_text.substr(m_at, lineEnd - m_at);
            m_at = std::min(lineEnd + 1, m_text.size());
            ++m_line;
            if (next == end) return text;
            text.append(next).append(1, '\n');
        }
        throw Unended(line, fmt::format("The text behind <<{0} is never ended: there is no line {0}.", end));
    }

    std::string_view m_text;
    const std::string& m_name;
    std::size_t m_at = 0;
    int m_line = 1;
    std::vector<std::pair<std::size_t, std::string>> m_wanted; ///< words that stand for texts below, and their ends
};

} // namespace

std::vector<ScriptCommand> ReadScript(std::string_view text, const std::string& name)
{
    return ScriptReader(text, name).Read();
}

} // namespace Deckman
