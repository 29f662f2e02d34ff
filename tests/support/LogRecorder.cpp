#include "tests/support/LogRecorder.h"

#include <algorithm>
#include <utility>

using Tarn::Fjel::Core::Service::Log;

namespace TestSupport {

LogRecorder::LogRecorder()
{
    m_previous = Log::SetHandler([this](std::string_view text, int severity) {
        const Log::Location place = Log::CurrentPlace();
        m_messages.push_back({std::string(text), severity, std::string(place.file), place.line, Log::IsProbing()});
    });
}

LogRecorder::~LogRecorder()
{
    Log::SetHandler(std::move(m_previous));
}

std::vector<std::string> LogRecorder::Texts() const
{
    std::vector<std::string> texts;
    for (const Message& message : m_messages)
        texts.push_back(message.text);
    return texts;
}

std::vector<std::string> LogRecorder::Texts(int severity) const
{
    std::vector<std::string> texts;
    for (const Message& message : m_messages) {
        if (message.severity == severity) texts.push_back(message.text);
    }
    return texts;
}

int LogRecorder::Count(int severity) const
{
    return static_cast<int>(std::count_if(m_messages.begin(), m_messages.end(),
                                          [&](const Message& message) { return message.severity == severity; }));
}

int LogRecorder::CountOf(std::string_view text) const
{
    return static_cast<int>(std::count_if(m_messages.begin(), m_messages.end(),
                                          [&](const Message& message) { return message.text == text; }));
}

bool LogRecorder::Contains(std::string_view part) const
{
    return std::any_of(m_messages.begin(), m_messages.end(),
                       [&](const Message& message) { return message.text.find(part) != std::string::npos; });
}

} // namespace TestSupport
