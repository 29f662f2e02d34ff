#pragma once

#include <tarn/service/IDelegateHandler.h>

namespace Tarn::Fjel::Core::Service {

/// A handler that calls a member function of an object. The object isn't owned, and has to take its handlers away
/// before it goes.
template <class Object, class Args>
class DelegateHandler : public IDelegateHandler
{
public:
    using Method = void (Object::*)(Args&);

    DelegateHandler(Object* object, Method method) : m_object(object), m_method(method) {}

    /// REQUIRES: args is an Args.
    void Handle(DelegateArgs& args) override { (m_object->*m_method)(static_cast<Args&>(args)); }

    bool Equals(const IDelegateHandler& other) const override
    {
        const auto* handler = dynamic_cast<const DelegateHandler*>(&other);
        return handler != nullptr && handler->m_object == m_object && handler->m_method == m_method;
    }

private:
    Object* m_object;
    Method m_method;
};

} // namespace Tarn::Fjel::Core::Service
