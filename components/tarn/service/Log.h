#pragma once

#include <tarn/service/LogEnabler.h>

#include <functional>
#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// The one way out for messages to the user. Messages go to the host's handler; without one they are dropped.
class Log
{
public:
    static constexpr int Warning = 2;
    static constexpr int Error = 3;

    using Handler = std::function<void(std::string_view text, int severity)>;

    /// Where in a text the library is reading.
    struct Location
    {
        std::string_view file; ///< empty when not known; good only during the handler's call
        int line = -1;         ///< from 1; -1 when not known
        bool IsKnown() const { return !file.empty(); }
    };

    /// Installs handler and returns the one it replaces; an empty one drops all messages, as does the default.
    static Handler SetHandler(Handler handler);

    /// Sends text as it stands (no % in it is read) to the handler, unless logging is off.
    static void SendLogMessage(std::string_view text, int severity);

    /// Sends a warning, formatted as printf does.
#if defined(__GNUC__)
    [[gnu::format(printf, 1, 2)]]
#endif
    static void
    LogWF(const char* format, ...);

    /// False inside the scope of a LogEnabler(false).
    static bool isEnabled();

    /// The innermost Place in scope, with its line at this moment. For handlers.
    static Location CurrentPlace();
    /// True while a Probe is in scope: the messages are those of a read whose failure is an expected answer.
    static bool IsProbing();
    /// True while an Aside is in scope: the messages are about text that no run would read.
    static bool IsAside();

    /// Tells handlers which file is read, and which line, until the end of the enclosing block. It costs nothing until
    /// a handler asks. REQUIRES: file, line and context outlive the scope; scopes nest.
    class Place
    {
    public:
        /// Gives the line (from 1, or -1) from context at the moment of the question.
        using LineSource = int (*)(const void* context);

        /// A line that stays.
        Place(std::string_view file, int line);
        /// The line is what *line holds at the moment of the question.
        Place(std::string_view file, const int* line);
        Place(std::string_view file, LineSource source, const void* context);
        ~Place();

        Place(const Place&) = delete;
        Place& operator=(const Place&) = delete;

    private:
        friend class Log;

        std::string_view m_file;
        LineSource m_source;
        const void* m_context;
        int m_fixedLine;
        Place* m_outer;
    };

    /// Marks the messages sent until the end of the enclosing block as those of a probe. Probes nest.
    class Probe
    {
    public:
        Probe();
        ~Probe();

        Probe(const Probe&) = delete;
        Probe& operator=(const Probe&) = delete;
    };

    /// Marks the messages sent until it goes as those about text that no run would read: what stands behind the end of
    /// a deck or of a file. Several may hold at once, and go in any order.
    class Aside
    {
    public:
        Aside();
        ~Aside();

        Aside(const Aside&) = delete;
        Aside& operator=(const Aside&) = delete;
    };

    /// Counts the messages that are sent until the end of the enclosing block, also those that logging being off keeps
    /// from the handler. Of witnesses that nest the innermost counts alone. Messages of a Probe begun within it don't
    /// count.
    class Witness
    {
    public:
        Witness();
        ~Witness();

        Witness(const Witness&) = delete;
        Witness& operator=(const Witness&) = delete;

        int Count() const { return m_count; }

    private:
        friend class Log;

        int m_count = 0;
        int m_probes;
        Witness* m_outer;
    };

    /// Drops the handler and switches logging on, as at the start of the process.
    static void Reset();
};

} // namespace Tarn::Fjel::Core::Service
