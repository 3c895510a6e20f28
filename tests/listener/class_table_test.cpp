// The class table of CoreAudioListenerKVX, compared with the tables in this file.
#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "listener/listener.h"
#include "plugin/classes.h"
#include "tests/support/class_table.h"

#include <gtest/gtest.h>

namespace {

static_assert(sizeof(listener::ListenerData) == 20 || sizeof(void*) != 4);

TEST(ListenerClass, HasItsNameSizeAndCounts)
{
    support::ClassFacts facts = {"CoreAudioListenerKVX", sizeof(listener::ListenerData), 5, 2, 1};
    facts.hasLifetimeFunctions = false; // the constructor and the destructor are methods
    support::expectClass(coreAudioListenerClass, facts);
}

TEST(ListenerClass, HasFiveReadOnlyPropertiesInOrder)
{
    using support::Access;
    support::expectProperties(coreAudioListenerClass, {
                                                          {"LastError", "Integer", Access::field},
                                                          {"ObjectID", "UInt32", Access::getter},
                                                          {"PropertySelector", "UInt32", Access::getter},
                                                          {"PropertyScope", "UInt32", Access::getter},
                                                          {"PropertyElement", "UInt32", Access::getter},
                                                      });
}

TEST(ListenerClass, GettersIgnoreTheirParameter)
{
    listener::ListenerData data = {-1, 0x80000041, 0xF0000001, 0xE0000002, 0xD0000003};
    ASSERT_EQ(coreAudioListenerClass.dataOffset, 0u)
        << "without a registration the class data starts at the object";
    const auto object = reinterpret_cast<REALobjectStruct*>(&data);
    const auto* rows = static_cast<const REALproperty*>(coreAudioListenerClass.properties);
    support::expectValue(rows[1], object, "2147483713");
    support::expectValue(rows[2], object, "4026531841");
    support::expectValue(rows[3], object, "3758096386");
    support::expectValue(rows[4], object, "3489660931");
}

TEST(ListenerClass, HasTwoMethodsInOrder)
{
    support::expectMethods(coreAudioListenerClass.methods, coreAudioListenerClass.methodCount,
                           {
                               {"Constructor(ObjectID as UInt32, PropertySelector as UInt32, "
                                "PropertyScope as UInt32, PropertyElement as UInt32)"},
                               {"Destructor"},
                           });
}

TEST(ListenerClass, HasOneEventWithoutParametersOrResult)
{
    const auto* event = static_cast<const REALevent*>(coreAudioListenerClass.events);
    EXPECT_STREQ(event->declaration, "Changed");
    EXPECT_EQ(event->systemUse, 0u) << "the host writes it";
    EXPECT_EQ(event->trailing[0], 0u);
    EXPECT_EQ(event->trailing[1], 0u);
}

} // namespace
