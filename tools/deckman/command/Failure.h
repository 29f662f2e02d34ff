#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "command/ExitStatus.h"

namespace Deckman {

/// Ends a command with a message and an exit status.
class Failure : public std::runtime_error
{
public:
    Failure(ExitStatus status, const std::string& text, std::string place = {})
        : std::runtime_error(text), m_status(status), m_place(std::move(place))
    {
    }
    ExitStatus Status() const { return m_status; }
    const std::string& Place() const { return m_place; }

private:
    ExitStatus m_status;
    std::string m_place;
};

} // namespace Deckman
