#pragma once

#include <string>

namespace TestSupport {

/// What the exception of that kind says that a call throws; empty when it throws none. One of another kind goes on.
template <class Exception, class Call>
std::string Thrown(const Call& call)
{
    try {
        call();
    } catch (const Exception& thrown) {
        return thrown.what();
    }
    return {};
}

} // namespace TestSupport
