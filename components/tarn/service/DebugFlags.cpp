#include <tarn/service/DebugFlags.h>
#include <tarn/service/Strings.h>

#include <set>
#include <string>

namespace Tarn::Fjel::Core::Service {

namespace {

std::set<std::string>& Flags()
{
    static std::set<std::string> flags;
    return flags;
}

} // namespace

bool DebugFlags::IsSet(std::string_view name)
{
    return !Flags().empty() && Flags().contains(Lowercased(name));
}

void DebugFlags::Set(std::string_view name, bool on)
{
    if (on) {
        Flags().insert(Lowercased(name));
    } else {
        Flags().erase(Lowercased(name));
    }
}

void DebugFlags::Reset()
{
    Flags().clear();
}

} // namespace Tarn::Fjel::Core::Service
