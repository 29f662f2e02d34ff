#include "output/Messages.h"

#include <algorithm>
#include <cstdio>
#include <functional>
#include <utility>

#include <fmt/format.h>
#include <tarn/service/Directory.h>
#include <tarn/service/Strings.h>

#include "output/Progress.h"
#include "output/Terminal.h"

namespace Deckman {

using Tarn::Fjel::Core::Service::Log;

Messages::Messages()
    : m_currentDirectory(Tarn::Fjel::Core::Service::Directory::Current().Name()),
      m_colours(Terminal::HasColours(Terminal::IsErrors()))
{
    if (!m_currentDirectory.ends_with('/')) m_currentDirectory += '/';
    m_previous = Log::SetHandler([this](std::string_view text, int severity) { Take(text, severity); });
}

Messages::~Messages()
{
    Log::SetHandler(std::move(m_previous));
}

namespace {

/// The scan's own words on a place ("… near line 7 in FILE.", "…, at line 7 in FILE") go where deckman's place says the
/// same more exactly.
std::string WithoutPlace(std::string_view text, std::string_view file)
{
    const std::string inFile = fmt::format(" in {}", file);
    const std::string_view sentence = text.ends_with('.') ? text.substr(0, text.size() - 1) : text;
    const std::size_t begin = std::min(text.rfind(" near line "), text.rfind(", at line "));
    return begin != std::string_view::npos && sentence.ends_with(inFile) ? std::string(text.substr(0, begin)) + "."
                                                                         : std::string(text);
}

} // namespace

void Messages::Take(std::string_view givenText, int severity)
{
    m_hasUnknownWords = m_hasUnknownWords || givenText.find(" is not recognized") != std::string_view::npos;
    // Behind a deck's end people keep notes.
    if (Log::IsProbing() || (Log::IsAside() && !m_taker && !m_showsAsides)) return;

    std::string text(givenText);
    std::string place;
    const Log::Location location = Log::CurrentPlace();
    if (m_taker) {
        if (location.IsKnown() && location.line > 0) text = WithoutPlace(text, location.file);
        m_taker({location.file, location.line, severity, text});
        return;
    }
    const BadValue value = BadValueOf(text);
    const std::string quantity = Tarn::Fjel::Core::Service::Uppercased(value.word);
    if (value.IsForNumber() && IsQuantityName(quantity)) {
        text = fmt::format("{} stands in the place of a number, as a quantity of UDQ may.", quantity);
        severity = 0;
    }
    if (location.IsKnown()) {
        place = Shown(location.file);
        if (location.line > 0) {
            text = WithoutPlace(text, location.file);
            place += fmt::format(":{}", location.line);
        }
    }
    if (severity >= Log::Error)
        Error(place, text);
    else if (severity == Log::Warning)
        Warning(place, text);
    else
        Note(place, text);
}

std::string_view Messages::WordOf(std::string_view text)
{
    if (text.starts_with("Keyword ")) {
        text.remove_prefix(8);
    } else if (text.find(" should only appear once") == std::string_view::npos) {
        return {};
    }
    return text.substr(0, text.find(' '));
}

Messages::BadValue Messages::BadValueOf(std::string_view text)
{
    constexpr std::string_view opening = ". Item value \"";
    constexpr std::string_view middle = "\" is not valid. Must be ";
    const std::size_t begin = text.find(opening);
    const std::size_t end = text.rfind(middle);
    if (begin == std::string_view::npos || end == std::string_view::npos || end < begin + opening.size()) return {};
    std::string_view wanted = text.substr(end + middle.size());
    if (wanted.ends_with('.')) wanted.remove_suffix(1);
    const std::size_t word = begin + opening.size();
    return {text.substr(word, end - word), wanted};
}

bool Messages::IsQuantityName(std::string_view word)
{
    return word.size() > 2 && std::string_view("CFGRSWAB").find(word[0]) != std::string_view::npos && word[1] == 'U';
}

std::string Messages::Shown(std::string_view file) const
{
    if (file.starts_with(m_currentDirectory)) file.remove_prefix(m_currentDirectory.size());
    return std::string(file);
}

void Messages::MakeHarmless(std::string& text)
{
    for (char& c : text) {
        if ((static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') || c == 0x7F) c = '?';
    }
}

bool Messages::Print(std::string_view place, std::string_view severity, std::string_view text)
{
    std::string line = fmt::format("{}: {}: {}", place.empty() ? "deckman" : place, severity,
                                   Tarn::Fjel::Core::Service::TrimmedRight(text));
    MakeHarmless(line);
    if (!place.empty() && !m_told.insert(std::hash<std::string>()(line)).second) return false;
    Tarn::Fjel::Core::Service::StringReplace(line, "\n", "\n    ");
    line += '\n';
    if (m_colours) {
        const std::size_t at = (place.empty() ? std::string_view("deckman") : place).size() + 2;
        const std::string_view colour = severity == "error" ? "\x1b[31m" : "\x1b[1m";
        line = fmt::format("{}{}{}\x1b[0m{}", line.substr(0, at), colour, severity, line.substr(at + severity.size()));
    }
    Progress::Wipe();
    std::fwrite(line.data(), 1, line.size(), stderr);
    return true;
}

} // namespace Deckman
