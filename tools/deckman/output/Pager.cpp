#include "output/Pager.h"

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "output/Terminal.h"

namespace Deckman {

namespace {

[[noreturn]] void Become(const std::string& command, int input)
{
    ::dup2(input, STDIN_FILENO);
    for (const int signal : {SIGINT, SIGPIPE, SIGXFSZ})
        std::signal(signal, SIG_DFL);
    // Quits by itself when all fits the screen, shows colours, and leaves what was read on the screen.
    ::setenv("LESS", "FRX", 0);
    ::execl("/bin/sh", "sh", "-c", command.c_str(), static_cast<char*>(nullptr));
    ::_exit(127);
}

} // namespace

Pager::~Pager()
{
    Finish();
}

bool Pager::Start(const std::string& command)
{
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return false;
    m_process = ::fork();
    if (m_process == 0) Become(command, ends[0]);
    ::close(ends[0]);
    if (m_process < 0) {
        ::close(ends[1]);
        return false;
    }
    m_input = ends[1];
    // The key that interrupts belongs to the pager now; a user who quits it ends the output, and so the program.
    std::signal(SIGINT, SIG_IGN);
    if (Terminal::IsErrors()) {
        std::fflush(stderr);
        m_errors = ::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 0);
        ::dup2(m_input, STDERR_FILENO);
    }
    return true;
}

void Pager::Finish()
{
    if (!IsRunning()) return;
    if (m_errors >= 0) {
        ::dup2(m_errors, STDERR_FILENO);
        ::close(m_errors);
        m_errors = -1;
    }
    ::close(m_input);
    m_input = -1;
    while (::waitpid(m_process, nullptr, 0) < 0 && errno == EINTR) {
    }
    m_process = -1;
    std::signal(SIGINT, SIG_DFL);
}

} // namespace Deckman
