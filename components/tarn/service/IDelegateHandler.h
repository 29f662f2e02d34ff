#pragma once

#include <tarn/service/DelegateArgs.h>

namespace Tarn::Fjel::Core::Service {

/// One subscriber of a delegate.
class IDelegateHandler
{
public:
    virtual ~IDelegateHandler();

    virtual void Handle(DelegateArgs& args) = 0;
    /// True when other calls the same member function of the same object.
    virtual bool Equals(const IDelegateHandler& other) const = 0;

protected:
    IDelegateHandler() = default;
    IDelegateHandler(const IDelegateHandler&) = default;
    IDelegateHandler& operator=(const IDelegateHandler&) = default;
};

} // namespace Tarn::Fjel::Core::Service
