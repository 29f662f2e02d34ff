#pragma once

#include <tarn/service/DelegateBase.h>
#include <tarn/service/DelegateHandler.h>

#include <memory>

namespace Tarn::Fjel::Core::Service {

/// A delegate whose handlers take one type of arguments, derived from DelegateArgs. Only the calls are typed, the rest
/// is DelegateBase.
template <class Args>
class Delegate : private DelegateBase
{
public:
    /// REQUIRES: object removes the handler before it dies, or outlives the delegate.
    template <class Object>
    void Add(Object* object, void (Object::*method)(Args&))
    {
        AddHandler(std::make_unique<DelegateHandler<Object, Args>>(object, method));
    }
    /// Removes one handler of that object and method; false when there is none.
    template <class Object>
    bool Remove(Object* object, void (Object::*method)(Args&))
    {
        return RemoveHandler(DelegateHandler<Object, Args>(object, method));
    }

    /// Calls all handlers with args.
    void Raise(Args& args) { Call(args); }

    using DelegateBase::HasHandlers;
};

} // namespace Tarn::Fjel::Core::Service
