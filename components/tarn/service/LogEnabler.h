#pragma once

namespace Tarn::Fjel::Core::Service {

/// Switches logging on or off until the end of the enclosing block, then puts back what was in force before.
class LogEnabler
{
public:
    explicit LogEnabler(bool enable);
    ~LogEnabler();

    LogEnabler(const LogEnabler&) = delete;
    LogEnabler& operator=(const LogEnabler&) = delete;

private:
    bool m_previous;
};

} // namespace Tarn::Fjel::Core::Service
