// Tests of the classes that the host defines, as a program uses them.
#include "tests/host/runtime/plugin_host.h"

#include <gtest/gtest.h>

namespace {

using namespace host;
using test::misuses;
using test::thrownBy;

TEST(BuiltInClasses, ExceptionsExistWithMessageAndNumber)
{
    Host host;
    EXPECT_TRUE(host.pluginClasses().empty());
    for (const char* name :
         {"OutOfMemoryException", "OutOfBoundsException", "NilObjectException",
          "UnsupportedOperationException", "IllegalCastException", "KeyNotFoundException"}) {
        const auto* info = host.findClass(name);
        ASSERT_TRUE(info) << name;
        EXPECT_TRUE(info->isBuiltIn);
        EXPECT_TRUE(info->isA("RuntimeException"));
        const auto exception = host.create(name);
        EXPECT_TRUE(exception.get("Message").isNil());
        EXPECT_EQ(exception.get("ErrorNumber").integer(), 0);
        exception.set("Message", "m");
        EXPECT_EQ(exception.get("Message").text(), "m");
    }
    EXPECT_EQ(misuses(), "");
}

TEST(Dictionary, StoresValuesUnderKeysOfAnyKind)
{
    Host host;
    const auto dictionary = host.create("Dictionary");
    const auto block = MemoryBlock::ofSize(1);
    EXPECT_EQ(dictionary.get("Count").integer(), 0);
    dictionary.set("Value", 1, "one");
    dictionary.set("Value", "two", 2.5);
    dictionary.set("Value", block, block);
    dictionary.set("Value", nullptr, "of nil");
    dictionary.set("Value", 1.0, "uno");
    EXPECT_EQ(dictionary.get("Count").integer(), 4) << "1 and 1.0 are the same key";
    EXPECT_EQ(dictionary.get("Value", 1).text(), "uno");
    EXPECT_EQ(dictionary.get("Value", "two").number(), 2.5);
    EXPECT_EQ(dictionary.get("Value", block).memoryBlock().get(), block.get());
    EXPECT_EQ(dictionary.get("Value", nullptr).text(), "of nil");
    EXPECT_EQ(dictionary.call("Key", 0).integer(), 1) << "keys keep the order of their first use";
    EXPECT_EQ(dictionary.call("Key", 1).text(), "two");
    EXPECT_TRUE(dictionary.call("HasKey", "two").boolean());
    EXPECT_FALSE(dictionary.call("HasKey", "Two").boolean());
    dictionary.call("Remove", "two");
    EXPECT_FALSE(dictionary.call("HasKey", "two").boolean());
    EXPECT_EQ(referenceCount(block.get()), 3u);
    dictionary.call("Clear");
    EXPECT_EQ(referenceCount(block.get()), 1u);
    EXPECT_EQ(dictionary.get("Count").integer(), 0);
    EXPECT_EQ(host.leaks().count(Kind::variant), 0u);
    EXPECT_EQ(misuses(), "");
}

TEST(Dictionary, RaisesExceptionsForMissingKeysAndIndexes)
{
    Host host;
    const auto dictionary = host.create("Dictionary");
    dictionary.set("Value", 1, 1);
    EXPECT_EQ(thrownBy<HostException>([&] { dictionary.get("Value", "x"); }),
              "KeyNotFoundException: The dictionary has no key x.");
    EXPECT_EQ(thrownBy<HostException>([&] { dictionary.call("Remove", 2); }),
              "KeyNotFoundException: The dictionary has no key 2.");
    for (int index : {-1, 1}) {
        try {
            dictionary.call("Key", index);
            ADD_FAILURE() << index;
        } catch (const HostException& error) {
            EXPECT_EQ(error.className(), "OutOfBoundsException");
        }
    }
    EXPECT_EQ(dictionary.get("Value", 1).integer(), 1);
}

TEST(Dictionary, CanContainDictionaries)
{
    Host host;
    {
        const auto outer = host.create("Dictionary");
        outer.set("Value", "inner", host.create("Dictionary"));
        outer.get("Value", "inner").object().set("Value", "deep", "yes");
        EXPECT_EQ(outer.get("Value", "inner").object().get("Value", "deep").text(), "yes");
        EXPECT_EQ(host.leaks().countOfClass("Dictionary"), 2u);
    }
    EXPECT_TRUE(host.leaks().isClean());
}

} // namespace
