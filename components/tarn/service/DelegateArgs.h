#pragma once

namespace Tarn::Fjel::Core::Service {

/// Base of what is handed to the handlers of a delegate.
class DelegateArgs
{
public:
    virtual ~DelegateArgs();

protected:
    DelegateArgs() = default;
    DelegateArgs(const DelegateArgs&) = default;
    DelegateArgs(DelegateArgs&&) = default;
    DelegateArgs& operator=(const DelegateArgs&) = default;
    DelegateArgs& operator=(DelegateArgs&&) = default;
};

} // namespace Tarn::Fjel::Core::Service
