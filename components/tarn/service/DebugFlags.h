#pragma once

#include <string_view>

namespace Tarn::Fjel::Core::Service {

/// Process-wide switches by name, without regard to case. All are off until a host sets them; nothing is read from
/// the surroundings of the process.
class DebugFlags
{
public:
    static bool IsSet(std::string_view name);
    static void Set(std::string_view name, bool on = true);
    /// Switches all flags off.
    static void Reset();
};

} // namespace Tarn::Fjel::Core::Service
