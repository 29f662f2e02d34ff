#include "output/Progress.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <unistd.h>

#include "output/Terminal.h"

namespace Deckman {

namespace {

using Clock = std::chrono::steady_clock;

constexpr auto patience = std::chrono::seconds(1);
constexpr auto pause = std::chrono::milliseconds(200);

class Line
{
public:
    Line() : m_begin(Clock::now()), m_thread([this](const std::stop_token& stop) { Run(stop); }) {}

    void Tell(long long count, const char* what)
    {
        m_what.store(what, std::memory_order_relaxed);
        m_count.store(count, std::memory_order_relaxed);
    }

    void Stop()
    {
        m_thread.request_stop();
        m_thread.join();
        Wipe();
    }

    void Wipe()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_shown) Write("\r\x1b[K");
        m_shown = false;
    }

private:
    void Run(const std::stop_token& stop)
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        auto wait = std::chrono::duration_cast<Clock::duration>(patience);
        while (!m_wake.wait_for(lock, stop, wait, [&stop] { return stop.stop_requested(); })) {
            wait = pause;
            const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - m_begin).count();
            const char* what = m_what.load(std::memory_order_relaxed);
            const long long count = m_count.load(std::memory_order_relaxed);
            Write(what != nullptr ? fmt::format("\r{} {}, {} s\x1b[K", count, what, seconds)
                                  : fmt::format("\r{} s\x1b[K", seconds));
            m_shown = true;
        }
    }

    static void Write(const std::string& text)
    {
        // A line that is lost is no loss.
        if (::write(STDERR_FILENO, text.data(), text.size()) < 0) return;
    }

    const Clock::time_point m_begin;
    std::atomic<long long> m_count = 0;
    std::atomic<const char*> m_what = nullptr;
    std::mutex m_mutex;
    std::condition_variable_any m_wake;
    bool m_shown = false;
    std::jthread m_thread; ///< the last to begin and the first to end
};

std::unique_ptr<Line>& TheLine()
{
    static std::unique_ptr<Line> line;
    return line;
}

} // namespace

void Progress::Begin()
{
    if (Terminal::IsErrors() && !TheLine()) TheLine() = std::make_unique<Line>();
}

void Progress::Tell(long long count, const char* what)
{
    if (Line* line = TheLine().get()) line->Tell(count, what);
}

void Progress::Wipe()
{
    if (Line* line = TheLine().get()) line->Wipe();
}

void Progress::End()
{
    if (Line* line = TheLine().get()) line->Stop();
    TheLine().reset();
}

} // namespace Deckman
