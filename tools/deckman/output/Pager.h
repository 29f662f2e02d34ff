#pragma once

#include <string>

#include <sys/types.h>

namespace Deckman {

/// The program through which a user reads long output. From its start on, messages go the same way where they would
/// run into it on the terminal.
class Pager
{
public:
    Pager() = default;
    ~Pager();
    Pager(const Pager&) = delete;
    Pager& operator=(const Pager&) = delete;

    /// False when it could not be started.
    bool Start(const std::string& command);
    bool IsRunning() const { return m_process > 0; }
    /// Where its input goes.
    int Input() const { return m_input; }
    /// Ends its input, and waits until the user has done.
    void Finish();

private:
    pid_t m_process = -1;
    int m_input = -1;
    int m_errors = -1; ///< what standard error was
};

} // namespace Deckman
