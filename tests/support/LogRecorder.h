#pragma once

#include <tarn/service/Log.h>

#include <string>
#include <string_view>
#include <vector>

namespace TestSupport {

/// Records every message of the log until the end of the scope, then puts the former handler back.
class LogRecorder
{
public:
    struct Message
    {
        std::string text;
        int severity = 0;
        std::string file; ///< of the place that was read; empty when not known
        int line = -1;
        bool probe = false;
    };

    LogRecorder();
    ~LogRecorder();

    LogRecorder(const LogRecorder&) = delete;
    LogRecorder& operator=(const LogRecorder&) = delete;

    const std::vector<Message>& Messages() const { return m_messages; }
    bool Empty() const { return m_messages.empty(); }
    /// All texts, or those of one severity, in order.
    std::vector<std::string> Texts() const;
    std::vector<std::string> Texts(int severity) const;
    int Count() const { return static_cast<int>(m_messages.size()); }
    int Count(int severity) const;
    /// How many messages have exactly this text.
    int CountOf(std::string_view text) const;
    /// Some message holds part in its text.
    bool Contains(std::string_view part) const;
    void Clear() { m_messages.clear(); }

private:
    std::vector<Message> m_messages;
    Tarn::Fjel::Core::Service::Log::Handler m_previous;
};

} // namespace TestSupport
