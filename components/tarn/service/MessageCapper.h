#pragma once

#include <memory>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// Keeps one bad keyword from filling the log: of each warning text the first ten for a keyword pass, the others are
/// counted, and one message tells their number when the next keyword begins.
class MessageCapper
{
public:
    /// How many messages of one text pass for a keyword.
    static constexpr int maxMessages = 10;

    static MessageCapper& instance();

    /// Tells what was held back for the keyword so far, and starts to count afresh for the keyword of that name.
    void setCurrentKeyword(std::string_view name);
    /// Sends text as a warning, or counts it. While logging is off nothing is sent or counted; the messages of a probe
    /// pass uncounted.
    void logW(std::string_view text);
    /// Tells what was held back so far, as at the end of an operation.
    void flush();
    /// Forgets keyword and counts, without a message.
    void reset();

    MessageCapper(const MessageCapper&) = delete;
    MessageCapper& operator=(const MessageCapper&) = delete;

private:
    MessageCapper();
    ~MessageCapper();

    struct State;
    std::unique_ptr<State> m_state;
};

} // namespace Tarn::Fjel::Core::Service
