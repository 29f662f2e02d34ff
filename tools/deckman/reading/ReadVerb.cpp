#include <algorithm>
#include <exception>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <deckmanager/DeckUtils.h>
#include <deckmanager/KeywordVariables.h>
#include <deckmanager/ReadKeywordData.h>
#include <fmt/format.h>
#include <tarn/keywords/IKeywordData.h>
#include <tarn/keywords/IKeywordSyntax.h>
#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>
#include <tarn/service/Strings.h>

#include "command/Verbs.h"
#include "data/DataJson.h"
#include "data/DataText.h"
#include "output/Json.h"
#include "session/DeckSession.h"
#include "session/InputText.h"

namespace Deckman {

namespace {

using Service::Log;

/// Finds in a text the lines of its keywords, in the order in which they stand there.
class KeywordLines
{
public:
    explicit KeywordLines(std::string_view text) : m_text(text) {}

    /// The line of the next keyword of that name, or of the next line that begins with that word, be it indented; -1
    /// when there is none.
    int Next(std::string_view name, bool mayBeIndented = false)
    {
        if (name.empty()) return -1;
        while (m_at < m_text.size()) {
            const std::size_t end = std::min(m_text.find('\n', m_at), m_text.size());
            std::string_view line = m_text.substr(m_at, end - m_at);
            if (mayBeIndented) line = Service::TrimmedLeft(line);
            const std::string_view word = line.substr(0, line.find_first_of(" \t\r"));
            m_at = end + 1;
            ++m_line;
            if (word.size() >= name.size() && Service::NoCaseStringEqual(word.substr(0, name.size()), name))
                return m_line;
        }
        return -1;
    }

    /// The line on which `data` begin, which stand behind the line found last.
    int LineOf(std::string_view data) const
    {
        const std::size_t from = std::min(m_at, m_text.size());
        const std::size_t begin = data.empty() ? std::string_view::npos : m_text.find(data, from);
        if (begin == std::string_view::npos) return m_line + 1;
        const std::string_view between = m_text.substr(from, begin - from);
        return m_line + 1 + static_cast<int>(std::count(between.begin(), between.end(), '\n'));
    }

private:
    std::string_view m_text;
    std::size_t m_at = 0;
    int m_line = 0;
};

/// Where the import's own words place it.
int LineOfError(std::string_view error, std::string_view text)
{
    constexpr std::string_view prefix = "Error extracting data for keyword: ";
    if (error.starts_with(prefix)) return KeywordLines(text).Next(error.substr(prefix.size()));
    constexpr std::string_view mark = ", at line ";
    int line = 0;
    if (const std::size_t at = error.rfind(mark); at != std::string_view::npos) {
        for (const char c : error.substr(at + mark.size()))
            line = Service::IsDigit(c) && line < 100'000'000 ? line * 10 + (c - '0') : line;
    }
    return line > 0 ? line : -1;
}

/// One read of one text.
class Reading
{
public:
    Reading(Messages& messages, const Options& options, Output& out)
        : m_messages(messages), m_out(out), m_json(options.json), m_text(ReadInputText(options.file)),
          m_file(options.file == "-" ? "standard input" : options.file)
    {
        m_reading.simulator = options.simulator.value_or(Keywords::SimulatorType::Any);
    }

    void Run();

private:
    void Cut();
    void Print(std::size_t index, int line);
    std::unique_ptr<Keywords::IKeywordData> DataOf(std::size_t index, int line,
                                                   DeckManager::KeywordVariables& variables);
    std::string Place(int line) const { return line > 0 ? fmt::format("{}:{}", m_file, line) : m_file; }

    Messages& m_messages;
    Output& m_out;
    bool m_json;
    std::string m_text;
    std::string m_file;
    DataReading m_reading;
    std::vector<std::string> m_names;
    std::vector<std::string> m_data;
    std::vector<const Keywords::IKeywordSyntax*> m_syntaxes;
};

void Reading::Run()
{
    Cut();
    KeywordLines lines(m_text);
    for (std::size_t i = 0; i < m_names.size() && !m_out.Closed(); ++i) {
        lines.Next(m_names[i]);
        Print(i, lines.LineOf(m_data[i]));
    }
    Service::MessageCapper::instance().flush();
}

void Reading::Cut()
{
    std::string errors;
    {
        // The scan of a text tells words without their lines, in the order of the text.
        KeywordLines lines(m_text);
        const Messages::Diversion diversion(m_messages, [&](const Messages::Message& message) {
            KeywordLines ahead = lines;
            const int line = ahead.Next(Messages::WordOf(message.text), true);
            if (line > 0) lines = ahead;
            if (message.severity >= Log::Error)
                m_messages.Error(Place(line), message.text);
            else
                m_messages.Warning(Place(line), message.text);
        });
        DeckManager::DeckUtils::getKeywordsAndDataFromString(m_text, m_names, m_data, m_syntaxes, errors);
    }
    for (std::string_view rest = errors; !rest.empty();) {
        const std::string_view error = rest.substr(0, rest.find('\n'));
        m_messages.Error(Place(LineOfError(error, m_text)), error);
        rest.remove_prefix(std::min(error.size() + 1, rest.size()));
    }
}

std::unique_ptr<Keywords::IKeywordData> Reading::DataOf(std::size_t index, int line,
                                                        DeckManager::KeywordVariables& variables)
{
    try {
        const Log::Place place(m_file, line);
        return DeckManager::ReadKeywordData(*m_syntaxes[index], m_names[index], m_data[index], &variables);
    } catch (const std::exception& exception) {
        m_messages.Error(Place(line), fmt::format("{} ({})", exception.what(), m_names[index]));
        return nullptr;
    }
}

void Reading::Print(std::size_t index, int line)
{
    DeckManager::KeywordVariables variables;
    const std::unique_ptr<Keywords::IKeywordData> data = DataOf(index, line, variables);
    m_reading.variables = &variables;
    if (m_json) {
        m_out.Append("{\"name\":");
        AppendJsonString(m_out, m_names[index]);
        m_out.Append(",\"data\":");
        if (data)
            WriteJson(m_out, {data.get(), -1}, m_reading);
        else
            m_out.Append("null");
        m_out.Append(",\"text\":");
        AppendJsonString(m_out, m_data[index]);
        m_out.Append("}\n");
        return;
    }
    if (index > 0) m_out.Append('\n');
    m_out.Append(m_names[index], Style::Strong);
    m_out.Append('\n');
    if (data) {
        WriteText(m_out, {data.get(), -1}, m_names[index], m_reading, UnitSystem::Metric);
    } else if (!m_data[index].empty()) {
        m_out.Append(m_data[index]);
        m_out.Append('\n');
    }
}

} // namespace

ExitStatus RunRead(Messages& messages, const Options& options, Output& out)
{
    Reading(messages, options, out).Run();
    return Done;
}

} // namespace Deckman
