// Listeners on a system without dispatch_async. In this program, the weak reference to dispatch_async is
// null.
#include "tests/listener/watched_class.h"
#include "tests/support/property_spy.h"

#include <KVXPlatform/KVXPlatform.h>

#include <thread>

namespace {

using namespace listening;

using ListenersWithoutAQueue = WatchedClass;

TEST_F(ListenersWithoutAQueue, ReceiveEventsOfTheMainThreadOnly)
{
    property_spy::reset();
    const Memory memory;
    attach(memory.object());
    construct(memory.object(), {7, 0x6E737274, 0x676C6F62, 0});
    ASSERT_EQ(property_spy::registrations().size(), 1u);
    const auto registration = property_spy::registrations()[0];
    const auto notify = [&] {
        return registration.procedure(registration.object, 1, &registration.address, registration.client);
    };

    OSStatus status = -1;
    std::thread([&] { status = notify(); }).join();
    EXPECT_EQ(status, 0);
    EXPECT_EQ(KVXPlatformDrainMainQueue(0), 0u);
    EXPECT_EQ(events, std::vector<Object>());
    EXPECT_EQ(host().notes(), fake::Notes());

    EXPECT_EQ(notify(), 0);
    EXPECT_EQ(events, std::vector<Object>{memory.object()});
    destruct(memory.object());
}

} // namespace
