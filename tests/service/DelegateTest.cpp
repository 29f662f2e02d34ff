#include <tarn/service/DebugFlags.h>
#include <tarn/service/Delegate.h>

#include <functional>

namespace Tarn::Fjel::Core::Service {
namespace {

struct Event : DelegateArgs
{
    std::string heard;
};

struct Listener
{
    std::string name;
    std::function<void()> act;

    void OnEvent(Event& event)
    {
        event.heard += name;
        if (act) act();
    }
    void OnOther(Event& event) { event.heard += name + "'"; }
};

std::string Raise(Delegate<Event>& delegate)
{
    Event event;
    delegate.Raise(event);
    return event.heard;
}

TEST(Delegate, RemovesOneHandlerThatIsEqualInObjectAndMethod)
{
    Delegate<Event> delegate;
    Listener a{"a", {}};
    Listener b{"b", {}};
    EXPECT_EQ(Raise(delegate), "");
    delegate.Add(&a, &Listener::OnEvent);
    delegate.Add(&b, &Listener::OnEvent);
    delegate.Add(&a, &Listener::OnOther);
    delegate.Add(&a, &Listener::OnEvent);
    EXPECT_EQ(Raise(delegate), "aba'a");
    EXPECT_TRUE(delegate.Remove(&a, &Listener::OnEvent));
    EXPECT_EQ(Raise(delegate), "ba'a");
    EXPECT_FALSE(delegate.Remove(&b, &Listener::OnOther));
    EXPECT_TRUE(delegate.Remove(&a, &Listener::OnEvent));
    EXPECT_FALSE(delegate.Remove(&a, &Listener::OnEvent));
    EXPECT_EQ(Raise(delegate), "ba'");
}

TEST(Delegate, TheUntypedListTakesHandlersOver)
{
    DelegateBase delegate;
    Listener a{"a", {}};
    const auto handler = [&] { return std::make_unique<DelegateHandler<Listener, Event>>(&a, &Listener::OnEvent); };
    delegate.AddHandler(handler());
    delegate.AddHandler(nullptr);
    Event event;
    delegate.Call(event);
    EXPECT_EQ(event.heard, "a");
    EXPECT_FALSE(delegate.RemoveHandler(std::unique_ptr<IDelegateHandler>()));
    EXPECT_TRUE(delegate.RemoveHandler(handler()));
    EXPECT_FALSE(delegate.HasHandlers());
}

TEST(Delegate, HandlersMayChangeTheListWhileItIsCalled)
{
    Delegate<Event> delegate;
    Listener a{"a", {}}, b{"b", {}}, c{"c", {}};
    a.act = [&] {
        delegate.Remove(&a, &Listener::OnEvent); // itself
        delegate.Remove(&b, &Listener::OnEvent); // one that has not been called
        delegate.Add(&a, &Listener::OnOther);    // not called by this call
    };
    c.act = [&] { delegate.Remove(&a, &Listener::OnEvent); };
    delegate.Add(&a, &Listener::OnEvent);
    delegate.Add(&b, &Listener::OnEvent);
    delegate.Add(&c, &Listener::OnEvent);
    EXPECT_EQ(Raise(delegate), "ac");
    EXPECT_EQ(Raise(delegate), "ca'");
}

TEST(Delegate, AHandlerMayRaiseAgainAndDestroyTheDelegate)
{
    auto delegate = std::make_unique<Delegate<Event>>();
    Listener a{"a", {}}, b{"b", {}};
    int depth = 0;
    a.act = [&] {
        if (++depth == 1) {
            EXPECT_EQ(Raise(*delegate), "ab");
        } else if (depth == 3) {
            delegate.reset();
        }
    };
    delegate->Add(&a, &Listener::OnEvent);
    delegate->Add(&b, &Listener::OnEvent);
    EXPECT_EQ(Raise(*delegate), "ab");
    EXPECT_EQ(Raise(*delegate), "a");
}

TEST(DebugFlags, AreOffUntilSet)
{
    EXPECT_FALSE(DebugFlags::IsSet("useolddrillingqueues"));
    DebugFlags::Set("UseOldDrillingQueues");
    EXPECT_TRUE(DebugFlags::IsSet("useolddrillingqueues"));
    DebugFlags::Set("useolddrillingqueues", false);
    EXPECT_FALSE(DebugFlags::IsSet("useolddrillingqueues"));
    DebugFlags::Set("x");
    DebugFlags::Reset();
    EXPECT_FALSE(DebugFlags::IsSet("x"));
}

} // namespace
} // namespace Tarn::Fjel::Core::Service
