#pragma once

#include "tests/support/TempDir.h"

#include <sys/types.h>

namespace TestSupport {

/// Permissions hold until the end of the scope: a process that runs as root, to whom every file is open, becomes an
/// ordinary user, to whom all in directory is given. For anyone else it does nothing.
class UnprivilegedUser
{
public:
    explicit UnprivilegedUser(const TempDir& directory);
    ~UnprivilegedUser();

    UnprivilegedUser(const UnprivilegedUser&) = delete;
    UnprivilegedUser& operator=(const UnprivilegedUser&) = delete;

private:
    uid_t m_user;
    gid_t m_group;
};

} // namespace TestSupport
