// The registration of a listener with the platform, and its removal.
#include "plugin/services.h"
#include "tests/listener/watched_class.h"
#include "tests/support/property_spy.h"

#include <climits>

namespace {

using namespace listening;
using spy::Calls;

class ListenerObject : public WatchedClass {
protected:
    ListenerObject() { property_spy::reset(); }

    /// Text of the expected platform call; `procedure` is the spy's name of the listener function.
    static std::string call(const char* function, const Address& address, const char* procedure)
    {
        char text[160];
        std::snprintf(text, sizeof text, "%s(0x%X, {0x%X, 0x%X, 0x%X}, %s, object)", function, address.object,
                      address.selector, address.scope, address.element, procedure);
        return text;
    }

    static void expectProperties(Object object, const Address& address)
    {
        EXPECT_EQ(read(object, "ObjectID"), address.object);
        EXPECT_EQ(read(object, "PropertySelector"), address.selector);
        EXPECT_EQ(read(object, "PropertyScope"), address.scope);
        EXPECT_EQ(read(object, "PropertyElement"), address.element);
    }
};

const Address addresses[] = {
    {0x80000041, 0xF0000001, 0xE0000002, 0xD0000003}, // address with four different values
    {1, 0x64657623, 0x676C6F62, 0},                   // address of the system's device list
    {7, 0x2A2A2A2A, 0x2A2A2A2A, 0xFFFFFFFF},          // address with wildcards
    {0, 0, 0, 0},
    {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF},
};

constexpr OSStatus badObject = 0x216F626A; // platform status '!obj'
const OSStatus statuses[] = {0, badObject, 1, -1, -50, INT_MAX, INT_MIN};

TEST_F(ListenerObject, RegistersAndUnregistersWithTheSameArguments)
{
    for (const Address& address : addresses) {
        property_spy::reset();
        const Memory memory;
        spy::name(memory.object(), "object");
        construct(memory.object(), address);
        EXPECT_EQ(memory.lastError(), 0);
        EXPECT_EQ(spy::calls(), Calls{call("AudioObjectAddPropertyListener", address, "memory")});
        ASSERT_EQ(property_spy::registrations().size(), 1u);

        spy::name(reinterpret_cast<const void*>(property_spy::registrations()[0].procedure), "procedure");
        spy::forgetCalls();
        destruct(memory.object());
        EXPECT_EQ(memory.lastError(), 0);
        EXPECT_EQ(spy::calls(), Calls{call("AudioObjectRemovePropertyListener", address, "procedure")});
        EXPECT_TRUE(property_spy::registrations().empty());
    }
}

TEST_F(ListenerObject, StoresBothStatusesAndKeepsItsProperties)
{
    for (const Address& address : addresses)
        for (const OSStatus status : statuses) {
            property_spy::reset();
            spy::answer("AudioObjectAddPropertyListener").status = status;
            spy::answer("AudioObjectRemovePropertyListener").status = status;
            const Memory memory;
            construct(memory.object(), address);
            EXPECT_EQ(memory.lastError(), status);
            expectProperties(memory.object(), address);

            memory.lastError() = 4711;
            destruct(memory.object());
            EXPECT_EQ(memory.lastError(), status);
            expectProperties(memory.object(), address);
            EXPECT_EQ(spy::calls().size(), 2u) << "a refused listener is removed as well";
        }
}

TEST_F(ListenerObject, HasStatusMinusOneAndItsPropertiesDuringEachCall)
{
    const Address address = addresses[0];
    const Memory memory;
    int seen = 0;
    const auto look = [&] {
        ++seen;
        EXPECT_EQ(memory.lastError(), -1);
        expectProperties(memory.object(), address);
    };
    spy::answer("AudioObjectAddPropertyListener").during = look;
    spy::answer("AudioObjectRemovePropertyListener").during = look;
    construct(memory.object(), address);
    destruct(memory.object());
    EXPECT_EQ(seen, 2);
}

TEST_F(ListenerObject, RaisesNoException)
{
    spy::answer("AudioObjectAddPropertyListener").status = badObject;
    const Memory memory;
    construct(memory.object(), addresses[0]);
    destruct(memory.object());
    EXPECT_EQ(host().notes(), fake::Notes()) << "the host is not called";
}

TEST_F(ListenerObject, PassesNoExceptionToTheHost)
{
    struct Thrown {};
    for (const bool addThrows : {true, false}) {
        property_spy::reset();
        const Memory memory;
        const auto throws = [] { throw Thrown(); };
        if (addThrows) spy::answer("AudioObjectAddPropertyListener").during = throws;
        spy::answer("AudioObjectRemovePropertyListener").during = throws;
        EXPECT_NO_THROW(construct(memory.object(), addresses[0]));
        EXPECT_EQ(memory.lastError(), addThrows ? -1 : 0);
        memory.lastError() = 4711;
        EXPECT_NO_THROW(destruct(memory.object()));
        EXPECT_EQ(memory.lastError(), -1);
    }
}

TEST_F(ListenerObject, HasItsPropertiesInEveryLayout)
{
    for (HostInteger layout = 9; layout <= 13; ++layout) {
        SCOPED_TRACE(layout);
        registerFor(layout);
        const Memory memory;
        construct(memory.object(), addresses[0]);
        expectProperties(memory.object(), addresses[0]);
        destruct(memory.object());
    }
}

} // namespace
