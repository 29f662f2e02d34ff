#include <tarn/service/Log.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>

namespace Tarn::Fjel::Core::Service {

namespace {

struct LogState
{
    std::shared_ptr<const Log::Handler> handler;
    bool enabled = true;
    int probes = 0;
    int asides = 0;
    Log::Place* place = nullptr;
    Log::Witness* witness = nullptr;
};

// Never destroyed: messages may still be sent by destructors of static objects.
LogState& State()
{
    static LogState& state = *new LogState;
    return state;
}

int ReadLine(const void* line)
{
    return *static_cast<const int*>(line);
}

} // namespace

Log::Handler Log::SetHandler(Handler handler)
{
    LogState& state = State();
    Handler previous = state.handler ? *state.handler : Handler();
    state.handler = handler ? std::make_shared<const Handler>(std::move(handler)) : nullptr;
    return previous;
}

void Log::SendLogMessage(std::string_view text, int severity)
{
    Witness* const witness = State().witness;
    if (witness != nullptr && State().probes == witness->m_probes) ++witness->m_count;
    if (!State().enabled) return;
    // A handler may put another one in its place.
    const std::shared_ptr<const Handler> handler = State().handler;
    if (handler) (*handler)(text, severity);
}

void Log::LogWF(const char* format, ...)
{
    const bool isHeard = State().enabled && State().handler;
    if (!isHeard && State().witness == nullptr) return;
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list again;
    va_copy(again, arguments);
    const int size = std::vsnprintf(nullptr, 0, format, arguments);
    va_end(arguments);
    std::string text;
    if (size > 0) {
        text.resize(static_cast<std::size_t>(size) + 1);
        std::vsnprintf(text.data(), text.size(), format, again);
        text.pop_back();
    }
    va_end(again);
    SendLogMessage(text, Warning);
}

bool Log::isEnabled()
{
    return State().enabled;
}

Log::Location Log::CurrentPlace()
{
    const Place* place = State().place;
    if (place == nullptr) return {};
    return {place->m_file, place->m_source != nullptr ? place->m_source(place->m_context) : place->m_fixedLine};
}

bool Log::IsProbing()
{
    return State().probes > 0;
}

bool Log::IsAside()
{
    return State().asides > 0;
}

void Log::Reset()
{
    State().handler = nullptr;
    State().enabled = true;
}

Log::Place::Place(std::string_view file, int line)
    : m_file(file), m_source(nullptr), m_context(nullptr), m_fixedLine(line),
      m_outer(std::exchange(State().place, this))
{
}

Log::Place::Place(std::string_view file, const int* line) : Place(file, &ReadLine, line) {}

Log::Place::Place(std::string_view file, LineSource source, const void* context)
    : m_file(file), m_source(source), m_context(context), m_fixedLine(-1), m_outer(std::exchange(State().place, this))
{
}

Log::Place::~Place()
{
    State().place = m_outer;
}

Log::Probe::Probe()
{
    ++State().probes;
}

Log::Probe::~Probe()
{
    --State().probes;
}

Log::Aside::Aside()
{
    ++State().asides;
}

Log::Aside::~Aside()
{
    --State().asides;
}

Log::Witness::Witness() : m_probes(State().probes), m_outer(std::exchange(State().witness, this)) {}

Log::Witness::~Witness()
{
    State().witness = m_outer;
}

LogEnabler::LogEnabler(bool enable) : m_previous(std::exchange(State().enabled, enable)) {}

LogEnabler::~LogEnabler()
{
    State().enabled = m_previous;
}

} // namespace Tarn::Fjel::Core::Service
