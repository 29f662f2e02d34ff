#pragma once

#include <tarn/service/IDelegateHandler.h>

#include <memory>
#include <vector>

namespace Tarn::Fjel::Core::Service {

/// A list of handlers that are called in the order in which they were added. A handler may add and remove handlers,
/// and may destroy the delegate, while a call is under way: those added meanwhile are not called by it, those removed
/// meanwhile are skipped. An exception of a handler ends the call and passes on.
class DelegateBase
{
public:
    DelegateBase();
    ~DelegateBase();

    DelegateBase(const DelegateBase&) = delete;
    DelegateBase& operator=(const DelegateBase&) = delete;

    /// Takes handler over. The same handler may be added more than once; it is then called as often.
    void AddHandler(std::unique_ptr<IDelegateHandler> handler);
    /// Takes handler over, removes the first handler that equals it, and tells whether there was one.
    bool RemoveHandler(std::unique_ptr<IDelegateHandler> handler);
    /// The same for a handler that the caller keeps.
    bool RemoveHandler(const IDelegateHandler& handler);

    void Call(DelegateArgs& args);

    bool HasHandlers() const;

private:
    struct Entry
    {
        std::unique_ptr<IDelegateHandler> handler;
        bool removed = false;
    };
    using List = std::vector<std::shared_ptr<Entry>>;

    /// The list, copied first when a call that is under way still walks it.
    List& Editable();

    std::shared_ptr<List> m_handlers;
};

} // namespace Tarn::Fjel::Core::Service
