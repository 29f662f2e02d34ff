#pragma once

#include <stdexcept>
#include <string>

namespace Tarn::Fjel::Core::Service {

/// Base of what the libraries of this family throw. It holds a message for the user.
class Exception : public std::runtime_error
{
public:
    explicit Exception(const std::string& message) : std::runtime_error(message) {}
    ~Exception() override;

    Exception(const Exception&) = default;
    Exception(Exception&&) = default;
    Exception& operator=(const Exception&) = default;
    Exception& operator=(Exception&&) = default;

    /// The message text, the same as what().
    std::string Message() const { return what(); }
};

} // namespace Tarn::Fjel::Core::Service
