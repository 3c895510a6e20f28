// The machine-word types, the accessor sentinels and the entry point's name and types. The compiler checks
// the types.
#include "abi/accessor_sentinels.h"
#include "abi/entry_point.h"
#include "abi/word.h"

#include <gtest/gtest.h>

#include <type_traits>

namespace {

static_assert(sizeof(Word) == sizeof(void*));
static_assert(sizeof(HostInteger) == sizeof(Word));
static_assert(sizeof(AnyFunction) == sizeof(Word));
static_assert(std::is_unsigned_v<Word> && std::is_signed_v<HostInteger>);
static_assert(sizeof(HostBoolean) == 1);

static_assert(REALstandardGetter != 0 && REALstandardSetter != 0 && REALstandardGetter != REALstandardSetter);

static_assert(std::is_same_v<REALResolver, void* (*)(const char*)>);
static_assert(std::is_same_v<REALPluginMainFunction, void (*)(REALResolver)>);

TEST(EntryPoint, HasTheExportedName) { EXPECT_STREQ(pluginMainName, "REALPluginMain"); }

} // namespace
