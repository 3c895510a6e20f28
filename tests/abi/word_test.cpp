// The machine-word types, the accessor sentinels and the entry point's name and types.
#include "abi/accessor_sentinels.h"
#include "abi/entry_point.h"
#include "abi/word.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

TEST(Word, IsAsWideAsAPointerAndAnInteger)
{
    EXPECT_EQ(sizeof(Word), sizeof(void*));
    EXPECT_EQ(sizeof(HostInteger), sizeof(Word));
    EXPECT_EQ(sizeof(AnyFunction), sizeof(Word));
    EXPECT_TRUE(std::is_unsigned_v<Word>);
    EXPECT_TRUE(std::is_signed_v<HostInteger>);
    EXPECT_EQ(sizeof(HostBoolean), 1u);
    if (sizeof(void*) == 4) EXPECT_EQ(sizeof(Word), 4u);
}

TEST(AccessorSentinels, AreDistinctAndNotNull)
{
    EXPECT_NE(REALstandardGetter, 0u);
    EXPECT_NE(REALstandardSetter, 0u);
    EXPECT_NE(REALstandardGetter, REALstandardSetter);
}

TEST(EntryPoint, HasTheExportedNameAndTakesAResolver)
{
    EXPECT_STREQ(pluginMainName, "REALPluginMain");
    EXPECT_TRUE((std::is_same_v<REALResolver, void* (*)(const char*)>));
    EXPECT_TRUE((std::is_same_v<REALPluginMainFunction, void (*)(REALResolver)>));
}

} // namespace
