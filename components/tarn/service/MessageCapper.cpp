#include <tarn/service/Log.h>
#include <tarn/service/MessageCapper.h>

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace Tarn::Fjel::Core::Service {

namespace {

struct CappedMessage
{
    std::string text;
    int count = 0;
    std::string file; ///< of the first message held back
    int line = -1;
};

} // namespace

struct MessageCapper::State
{
    std::string keyword;
    /// In the order of their first occurrence. Only a few texts are capped, so a walk finds one soonest.
    std::vector<CappedMessage> messages;
};

MessageCapper::MessageCapper() : m_state(std::make_unique<State>()) {}

MessageCapper::~MessageCapper() = default;

MessageCapper& MessageCapper::instance()
{
    static MessageCapper capper;
    return capper;
}

void MessageCapper::setCurrentKeyword(std::string_view name)
{
    flush();
    m_state->keyword.assign(name);
}

void MessageCapper::logW(std::string_view text)
{
    if (!Log::isEnabled() || Log::IsProbing()) {
        Log::SendLogMessage(text, Log::Warning);
        return;
    }
    std::vector<CappedMessage>& messages = m_state->messages;
    auto message = std::find_if(messages.begin(), messages.end(),
                                [&](const CappedMessage& candidate) { return candidate.text == text; });
    if (message == messages.end()) message = messages.insert(messages.end(), {std::string(text), 0, {}, -1});

    ++message->count;
    if (message->count <= maxMessages) {
        Log::SendLogMessage(text, Log::Warning);
    } else if (message->count == maxMessages + 1) {
        const Log::Location place = Log::CurrentPlace();
        message->file.assign(place.file);
        message->line = place.line;
    }
}

void MessageCapper::flush()
{
    if (m_state->messages.empty()) return;
    // The list goes first: a handler may log through here again.
    const std::vector<CappedMessage> messages = std::exchange(m_state->messages, {});
    for (const CappedMessage& message : messages) {
        const int more = message.count - maxMessages;
        if (more <= 0) continue;
        const Log::Place place(message.file, message.line);
        const std::string keyword = m_state->keyword.empty() ? "" : " in keyword " + m_state->keyword;
        Log::SendLogMessage(
            fmt::format("{} more message{} of this kind{}: {}", more, more == 1 ? "" : "s", keyword, message.text),
            Log::Warning);
    }
}

void MessageCapper::reset()
{
    m_state->keyword.clear();
    m_state->messages.clear();
}

} // namespace Tarn::Fjel::Core::Service
