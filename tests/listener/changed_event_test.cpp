// The way from the platform's notification to the host program's handler: directly on the main thread,
// through the main queue on other threads.
#include "plugin/classes.h"
#include "tests/listener/dispatch_spy.h"
#include "tests/listener/watched_class.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/property_spy.h"

#include <stdexcept>
#include <thread>

namespace {

using namespace listening;
using Events = std::vector<Object>;
using fake::Notes;

struct Thrown {};

constexpr Address address = {7, 0x6E737274, 0x676C6F62, 0};

class ChangedEvent : public WatchedClass {
protected:
    ChangedEvent()
    {
        property_spy::reset();
        dispatch_spy::reset();
    }
    ~ChangedEvent() override
    {
        EXPECT_EQ(spy::faults(), spy::Calls());
        dispatch_spy::reset();
    }

    /// Attach a handler, construct the object and return the object's registration with the platform.
    property_spy::Registration listen(Object object)
    {
        attach(object);
        construct(object, address);
        return property_spy::registrations().back();
    }

    static OSStatus notify(const property_spy::Registration& registration)
    {
        return registration.procedure(registration.object, 1, &registration.address, registration.client);
    }

    static OSStatus notifyFromThread(const property_spy::Registration& registration, int times = 1)
    {
        OSStatus status = noErr;
        std::thread([&] {
            for (int i = 0; i < times; ++i) status |= notify(registration);
        }).join();
        return status;
    }
};

// ---- on the main thread ----

TEST_F(ChangedEvent, IsRaisedSynchronouslyOnTheMainThread)
{
    for (HostInteger layout = 9; layout <= 13; ++layout) {
        SCOPED_TRACE(layout);
        registerFor(layout);
        events.clear();
        const Memory memory;
        const auto registration = listen(memory.object());
        EXPECT_EQ(notify(registration), 0);
        EXPECT_EQ(events, Events{memory.object()}) << "with the key that the host wrote";
        EXPECT_EQ(dispatch_spy::waiting(), 0u);
        destruct(memory.object());
    }
}

// In layout 9, a copy of the event contains the key for the handler, so a missing copy drops the event.
TEST_F(ChangedEvent, IsDroppedWithoutTheCopyOfItsRecord)
{
    constexpr int copies = 3; // copies of the properties, of the methods and of the event
    c_library_spy::refuseCalloc(copies);
    registerFor(9);
    c_library_spy::refuseCalloc(0);
    ASSERT_EQ(coreAudioListenerClass.events, nullptr);
    const Memory memory;
    const auto registration = listen(memory.object());
    EXPECT_EQ(memory.lastError(), 0);
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(notifyFromThread(registration, 3), 0);
    EXPECT_EQ(dispatch_spy::run(), 3u);
    EXPECT_EQ(events, Events{});
    EXPECT_EQ(host().notes(), Notes{}) << "the host is not called";
    destruct(memory.object());
    EXPECT_TRUE(property_spy::registrations().empty());
}

TEST_F(ChangedEvent, IsRaisedOncePerNotification)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    const AudioObjectPropertyAddress three[3] = {};
    EXPECT_EQ(registration.procedure(7, 3, three, registration.client), 0);
    EXPECT_EQ(events.size(), 1u);
    EXPECT_EQ(registration.procedure(7, 0, nullptr, registration.client), 0);
    EXPECT_EQ(events.size(), 2u);
    EXPECT_EQ(registration.procedure(99, 1, three, registration.client), 0);
    EXPECT_EQ(events.size(), 3u);
    destruct(memory.object());
}

TEST_F(ChangedEvent, CallsTheHostOnlyForTheHandler)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    notify(registration);
    ASSERT_EQ(host().calls().size(), 1u) << "no reference is taken";
    EXPECT_EQ(host().calls()[0].rfind("GetEventInstance(", 0), 0u);
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsDroppedWithoutAHandler)
{
    const Memory memory;
    construct(memory.object(), address);
    const auto registration = property_spy::registrations().back();
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(notifyFromThread(registration), 0);
    EXPECT_EQ(dispatch_spy::run(), 1u);
    EXPECT_EQ(events, Events());
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsDroppedWithoutTheHostsService)
{
    const Memory memory;
    host().withhold("GetEventInstance");
    const auto registration = listen(memory.object());
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(notifyFromThread(registration), 0);
    dispatch_spy::run();
    EXPECT_EQ(events, Events());
    host().provide("GetEventInstance");
    notify(registration);
    EXPECT_EQ(events, Events{memory.object()}) << "a failed look-up is repeated";
    destruct(memory.object());
}

TEST_F(ChangedEvent, PassesNoExceptionToThePlatform)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    const std::function<void(Object)> throwers[] = {
        [](Object) { throw Thrown(); },
        [](Object) { throw std::runtime_error("from the host program"); },
        [](Object) { throw 42; },
    };
    for (const auto& throws : throwers) {
        events.clear();
        inHandler = throws;
        EXPECT_NO_THROW(EXPECT_EQ(notify(registration), 0));
        EXPECT_EQ(events.size(), 1u);

        EXPECT_EQ(notifyFromThread(registration), 0);
        EXPECT_NO_THROW(dispatch_spy::run()) << "the queue belongs to the platform";
        EXPECT_EQ(events.size(), 2u);
    }
    inHandler = nullptr;
    host().inNext("GetEventInstance", [] { throw Thrown(); });
    EXPECT_NO_THROW(EXPECT_EQ(notify(registration), 0));

    spy::answer("dispatch_async").during = [] { throw Thrown(); };
    EXPECT_EQ(notifyFromThread(registration), 0) << "an exception would end the process";
    dispatch_spy::reset();
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsRaisedForItsListenerOnly)
{
    const Memory first, second;
    const auto firstRegistration = listen(first.object()), secondRegistration = listen(second.object());
    notify(secondRegistration);
    EXPECT_EQ(events, Events{second.object()});
    notifyFromThread(firstRegistration);
    notifyFromThread(secondRegistration);
    notifyFromThread(firstRegistration);
    dispatch_spy::run();
    EXPECT_EQ(events, (Events{second.object(), first.object(), second.object(), first.object()}));
    destruct(first.object());
    destruct(second.object());
}

// ---- on other threads ----

TEST_F(ChangedEvent, IsQueuedForTheMainThreadOnOtherThreads)
{
    for (HostInteger layout = 9; layout <= 13; ++layout) {
        SCOPED_TRACE(layout);
        registerFor(layout);
        events.clear();
        const Memory memory;
        const auto registration = listen(memory.object());
        EXPECT_EQ(notifyFromThread(registration), 0);
        EXPECT_EQ(events, Events());
        EXPECT_EQ(host().notes(), fake::Notes()) << "the platform's thread does not call the host";
        EXPECT_EQ(dispatch_spy::waiting(), 1u);
        EXPECT_EQ(dispatch_spy::run(), 1u);
        EXPECT_EQ(events, Events{memory.object()});
        destruct(memory.object());
    }
}

TEST_F(ChangedEvent, IsRaisedOncePerQueuedNotification)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    notifyFromThread(registration, 100);
    EXPECT_EQ(dispatch_spy::run(), 100u);
    EXPECT_EQ(events, Events(100, memory.object()));
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsDroppedForADestroyedListener)
{
    auto memory = std::make_unique<Memory>();
    const auto registration = listen(memory->object());
    notifyFromThread(registration, 3);
    destruct(memory->object());
    memory.reset(); // memory freed, so that the address sanitizer reports any access
    host().forget();
    EXPECT_EQ(dispatch_spy::run(), 3u);
    EXPECT_EQ(events, Events());
    EXPECT_EQ(host().calls(), fake::Notes());
}

TEST_F(ChangedEvent, IsNotRaisedForANewListenerAtTheSameAddress)
{
    const Memory memory;
    const auto first = listen(memory.object());
    notifyFromThread(first, 2);
    destruct(memory.object());
    const auto second = listen(memory.object());
    EXPECT_EQ(second.client, first.client);
    dispatch_spy::run();
    EXPECT_EQ(events, Events()) << "the event is from before the construction";
    notifyFromThread(second);
    dispatch_spy::run();
    EXPECT_EQ(events, Events{memory.object()});

    // Two notifications in one run of the queue: only the one after the second construction is delivered.
    events.clear();
    notifyFromThread(second);
    destruct(memory.object());
    const auto third = listen(memory.object());
    notifyFromThread(third);
    EXPECT_EQ(dispatch_spy::run(), 2u);
    EXPECT_EQ(events, Events{memory.object()});
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsRaisedAfterALiveListenerIsConstructedAgain)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    notifyFromThread(registration, 2);
    construct(memory.object(), address);
    dispatch_spy::run();
    EXPECT_EQ(events, Events(2, memory.object()));
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsRaisedUntilThePlatformRemovesTheListener)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    spy::answer("AudioObjectRemovePropertyListener").during = [&] { notify(registration); };
    destruct(memory.object());
    EXPECT_EQ(events, Events{memory.object()});
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(events.size(), 1u) << "not after the removal";
}

TEST_F(ChangedEvent, IsDroppedForAListenerWhoseRemovalThrew)
{
    const Memory memory;
    const auto registration = listen(memory.object());
    spy::answer("AudioObjectRemovePropertyListener").during = [] { throw Thrown(); };
    destruct(memory.object());
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(events, Events());
}

TEST_F(ChangedEvent, IsIndependentOfOtherListeners)
{
    const Memory memory, other;
    const auto registration = listen(memory.object());
    notifyFromThread(registration);
    listen(other.object());
    destruct(other.object());
    listen(other.object());
    notifyFromThread(registration);
    dispatch_spy::run();
    EXPECT_EQ(events, Events(2, memory.object()));
    destruct(other.object());
    notifyFromThread(registration);
    dispatch_spy::run();
    EXPECT_EQ(events, Events(3, memory.object()));
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsRaisedForEachOfManyListeners)
{
    std::vector<std::unique_ptr<Memory>> memories;
    std::vector<property_spy::Registration> registrations;
    for (int i = 0; i < 1000; ++i) {
        memories.push_back(std::make_unique<Memory>());
        registrations.push_back(listen(memories.back()->object()));
    }
    for (std::size_t i = 0; i < memories.size(); i += 3) destruct(memories[i]->object());
    Events expected;
    for (std::size_t i = 0; i < memories.size(); ++i) {
        notify(registrations[i]);
        if (i % 3 != 0) expected.push_back(memories[i]->object());
    }
    EXPECT_EQ(events, expected);
    for (std::size_t i = 0; i < memories.size(); ++i)
        if (i % 3 != 0) destruct(memories[i]->object());
}

TEST_F(ChangedEvent, MayDestroyItsListener)
{
    auto memory = std::make_unique<Memory>();
    const auto registration = listen(memory->object());
    notifyFromThread(registration, 3);
    inHandler = [&](Object object) {
        destruct(object);
        memory.reset();
    };
    EXPECT_EQ(dispatch_spy::run(), 3u);
    EXPECT_EQ(events.size(), 1u);
}

TEST_F(ChangedEvent, MayConstructListeners)
{
    const Memory memory, other;
    const auto registration = listen(memory.object());
    inHandler = [&](Object object) {
        if (object != memory.object()) return;
        notifyFromThread(listen(other.object()));
    };
    notifyFromThread(registration);
    EXPECT_EQ(dispatch_spy::run(), 2u);
    EXPECT_EQ(events, (Events{memory.object(), other.object()}));
    destruct(other.object());
    destruct(memory.object());
}

// ---- without memory ----

TEST_F(ChangedEvent, IsDroppedForAListenerWithoutMemory)
{
    const long blocks = c_library_spy::liveBlocks();
    const Memory memory;
    c_library_spy::refuseCalloc(1);
    const auto registration = listen(memory.object());
    EXPECT_EQ(memory.lastError(), 0) << "the platform accepted the registration";
    EXPECT_EQ(notify(registration), 0);
    EXPECT_EQ(notifyFromThread(registration), 0);
    EXPECT_EQ(dispatch_spy::run(), 1u);
    EXPECT_EQ(events, Events());
    destruct(memory.object());
    EXPECT_EQ(c_library_spy::liveBlocks(), blocks);

    notify(listen(memory.object()));
    EXPECT_EQ(events, Events{memory.object()}) << "the next listener receives events";
    destruct(memory.object());
    EXPECT_EQ(c_library_spy::liveBlocks(), blocks);
}

TEST_F(ChangedEvent, IsDroppedForALaterListenerWithoutMemory)
{
    const Memory memory;
    const auto first = listen(memory.object());
    notifyFromThread(first);
    destruct(memory.object());
    c_library_spy::refuseCalloc(1);
    const auto second = listen(memory.object());
    notifyFromThread(second);
    EXPECT_EQ(dispatch_spy::run(), 2u);
    EXPECT_EQ(events, Events());
    destruct(memory.object());
}

TEST_F(ChangedEvent, IsNotRaisedAfterARefusedRegistration)
{
    const Memory memory;
    attach(memory.object());
    spy::answer("AudioObjectAddPropertyListener").status = 0x216F626A; // platform status '!obj'
    construct(memory.object(), address);
    EXPECT_TRUE(property_spy::registrations().empty());
    EXPECT_EQ(memory.lastError(), 0x216F626A);
    EXPECT_EQ(events, Events());
    EXPECT_EQ(dispatch_spy::waiting(), 0u);
    destruct(memory.object());
}

} // namespace
