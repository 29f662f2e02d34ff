#pragma once

#include <string>

#include <tarn/service/Exception.h>

namespace Tarn::Fjel::Core::DeckManager {

/// What the library refuses as an error. Carries a message for the user.
class DeckManagerException : public Service::Exception
{
public:
    using Service::Exception::Exception;
};

} // namespace Tarn::Fjel::Core::DeckManager
