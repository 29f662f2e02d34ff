#include "tests/support/UnprivilegedUser.h"

#include <filesystem>
#include <stdexcept>

#include <unistd.h>

namespace TestSupport {

namespace {

constexpr uid_t nobody = 65534;

void Give(const std::string& path)
{
    if (lchown(path.c_str(), nobody, nobody) != 0) throw std::runtime_error("cannot give away " + path);
}

} // namespace

UnprivilegedUser::UnprivilegedUser(const TempDir& directory) : m_user(geteuid()), m_group(getegid())
{
    if (m_user != 0) return;
    Give(directory.Path());
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory.Path())) {
        Give(entry.path().string());
    }
    if (setegid(nobody) != 0 || seteuid(nobody) != 0) throw std::runtime_error("cannot become an ordinary user");
}

UnprivilegedUser::~UnprivilegedUser()
{
    if (m_user != 0) return;
    if (seteuid(m_user) != 0 || setegid(m_group) != 0) std::terminate();
}

} // namespace TestSupport
