// The class table of CoreAudioListenerKVX, compared with the tables in this file.
#include "abi/accessor_sentinels.h"
#include "abi/class_definition.h"
#include "listener/listener.h"
#include "plugin/classes.h"
#include "tests/support/property_value.h"

#include <gtest/gtest.h>

namespace {

TEST(ListenerClass, HasItsNameSizeAndCountsInTheNewestLayout)
{
    const REALclassDefinition& c = coreAudioListenerClass;
    EXPECT_EQ(c.version, 13u);
    EXPECT_STREQ(c.name, "CoreAudioListenerKVX");
    EXPECT_EQ(c.superName, nullptr);
    if (sizeof(void*) == 4) EXPECT_EQ(c.dataSize, 20u);
    EXPECT_EQ(c.constructor, nullptr) << "the constructor is a method";
    EXPECT_EQ(c.destructor, nullptr) << "the destructor is a method";
    EXPECT_EQ(c.propertyCount, 5u);
    EXPECT_EQ(c.methodCount, 2u);
    EXPECT_EQ(c.eventCount, 1u);
    EXPECT_EQ(c.eventInstances, nullptr);
    EXPECT_EQ(c.eventInstanceCount, 0u);
    EXPECT_EQ(c.interfaces, nullptr);
    EXPECT_EQ(c.constants, nullptr);
    EXPECT_EQ(c.constantCount, 0u);
    EXPECT_EQ(c.flags, 4u);
    EXPECT_EQ(c.sharedProperties, nullptr);
    EXPECT_EQ(c.sharedPropertyCount, 0u);
    EXPECT_EQ(c.sharedMethods, nullptr);
    EXPECT_EQ(c.sharedMethodCount, 0u);
}

TEST(ListenerClass, HasFiveReadOnlyPropertiesInOrder)
{
    const struct {
        const char* name;
        const char* type;
        bool isField;
    } expected[] = {
        {"LastError", "Integer", true},        {"ObjectID", "UInt32", false},
        {"PropertySelector", "UInt32", false}, {"PropertyScope", "UInt32", false},
        {"PropertyElement", "UInt32", false},
    };
    const auto* rows = static_cast<const REALproperty*>(coreAudioListenerClass.properties);
    ASSERT_EQ(coreAudioListenerClass.propertyCount, std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        SCOPED_TRACE(expected[i].name);
        EXPECT_STREQ(rows[i].name, expected[i].name);
        EXPECT_STREQ(rows[i].type, expected[i].type);
        EXPECT_EQ(rows[i].flags, 6u);
        EXPECT_EQ(rows[i].setter, nullptr);
        EXPECT_EQ(reinterpret_cast<Word>(rows[i].getter) == REALstandardGetter, expected[i].isField);
        EXPECT_NE(rows[i].getter, nullptr);
        EXPECT_EQ(rows[i].parameter, 0);
        EXPECT_EQ(rows[i].editor, nullptr);
        EXPECT_EQ(rows[i].enumeration, nullptr);
        EXPECT_EQ(rows[i].tenth, 0u);
        EXPECT_EQ(rows[i].trailing[0], 0u);
        EXPECT_EQ(rows[i].trailing[1], 0u);
    }
}

TEST(ListenerClass, GettersIgnoreTheirParameter)
{
    listener::ListenerData data = {-1, 0x80000041, 0xF0000001, 0xE0000002, 0xD0000003};
    ASSERT_EQ(coreAudioListenerClass.dataOffset, 0u)
        << "without a registration the class data starts at the object";
    const auto object = reinterpret_cast<REALobjectStruct*>(&data);
    const auto* rows = static_cast<const REALproperty*>(coreAudioListenerClass.properties);
    for (const HostInteger parameter : support::anyParameter) {
        EXPECT_EQ(support::valueOf(rows[1], object, parameter), "2147483713");
        EXPECT_EQ(support::valueOf(rows[2], object, parameter), "4026531841");
        EXPECT_EQ(support::valueOf(rows[3], object, parameter), "3758096386");
        EXPECT_EQ(support::valueOf(rows[4], object, parameter), "3489660931");
    }
}

TEST(ListenerClass, HasTwoMethodsInOrder)
{
    const char* const expected[] = {
        "Constructor(ObjectID as UInt32, PropertySelector as UInt32, PropertyScope as UInt32, "
        "PropertyElement as UInt32)",
        "Destructor",
    };
    const auto* rows = static_cast<const REALmethod*>(coreAudioListenerClass.methods);
    ASSERT_EQ(coreAudioListenerClass.methodCount, std::size(expected));
    for (std::size_t i = 0; i < std::size(expected); ++i) {
        EXPECT_STREQ(rows[i].declaration, expected[i]);
        EXPECT_EQ(rows[i].flags, 4u);
        EXPECT_NE(rows[i].function, nullptr);
        EXPECT_EQ(rows[i].setter, nullptr);
        EXPECT_EQ(rows[i].trailing[0], 0u);
        EXPECT_EQ(rows[i].trailing[1], 0u);
    }
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
