#include <tarn/service/DelegateBase.h>

#include <algorithm>
#include <utility>

namespace Tarn::Fjel::Core::Service {

DelegateArgs::~DelegateArgs() = default;
IDelegateHandler::~IDelegateHandler() = default;

DelegateBase::DelegateBase() = default;

DelegateBase::~DelegateBase()
{
    if (!m_handlers) return;
    // A call that destroys the delegate still walks its own copy of the list.
    for (const std::shared_ptr<Entry>& entry : *m_handlers)
        entry->removed = true;
}

DelegateBase::List& DelegateBase::Editable()
{
    if (!m_handlers) {
        m_handlers = std::make_shared<List>();
    } else if (m_handlers.use_count() > 1) {
        m_handlers = std::make_shared<List>(*m_handlers);
    }
    return *m_handlers;
}

void DelegateBase::AddHandler(std::unique_ptr<IDelegateHandler> handler)
{
    if (!handler) return;
    auto entry = std::make_shared<Entry>();
    entry->handler = std::move(handler);
    Editable().push_back(std::move(entry));
}

bool DelegateBase::RemoveHandler(std::unique_ptr<IDelegateHandler> handler)
{
    return handler && RemoveHandler(*handler);
}

bool DelegateBase::RemoveHandler(const IDelegateHandler& handler)
{
    if (!m_handlers) return false;
    const auto isEqual = [&](const std::shared_ptr<Entry>& entry) { return entry->handler->Equals(handler); };
    const auto found = std::find_if(m_handlers->begin(), m_handlers->end(), isEqual);
    if (found == m_handlers->end()) return false;

    (*found)->removed = true;
    const auto index = found - m_handlers->begin();
    List& handlers = Editable();
    handlers.erase(handlers.begin() + index);
    return true;
}

void DelegateBase::Call(DelegateArgs& args)
{
    if (!HasHandlers()) return;
    const std::shared_ptr<const List> handlers = m_handlers;
    for (const std::shared_ptr<Entry>& entry : *handlers) {
        if (!entry->removed) entry->handler->Handle(args);
    }
}

bool DelegateBase::HasHandlers() const
{
    return m_handlers && !m_handlers->empty();
}

} // namespace Tarn::Fjel::Core::Service
