// The class definition of QTSoundStreamKVX, compared with the tables in this file.
#include "abi/accessor_sentinels.h"
#include "plugin/process_state.h"
#include "plugin/register_class.h"
#include "tests/plugin/service_caches.h"
#include "tests/soundstream/stream_object.h"
#include "tests/support/fake_host.h"
#include "tests/support/property_value.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <iterator>
#include <set>

namespace {

using soundstream::SoundStreamData;

enum Access { field, getter, accessors };

// clang-format off
const struct {
    const char* name;
    const char* type;
    Access access;
    HostInteger offset; // offset of a field in the class data of this build
    HostInteger offsetOn32Bits; // offset of a field in the class data of the 32-bit product
} properties[] = {
    {"PostsStatusNotifications",   "Boolean", accessors, 0,                                       0},
    {"IsStreamActive",             "Boolean", getter,    0,                                       0},
    {"IsOpen",                     "Boolean", getter,    0,                                       0},
    {"SoundOutputComponentHandle", "Integer", getter,    0,                                       0},
    {"Handle",                     "Integer", field,     HostInteger(offsetof(SoundStreamData, state)),     0},
    {"Release",                    "Boolean", field,     HostInteger(offsetof(SoundStreamData, ownsState)), 4},
};

const char* const methods[] = {
    "CloseComponent",
    "OpenComponent",
    "InitComponent",
    "OpenDefaultAudioUnitOutputComponent as integer",
    "AttachToAudioUnitComponent(componenthandle as integer) as integer",
    "AttachToAudioUnitComponent(componenthandle as integer, element as integer) as integer",
    "AudioUnitInitialize(componenthandle as integer) as integer",
    "AudioOutputUnitStart(componenthandle as integer) as integer",
};

const struct { std::size_t offset, size, offsetOn32Bits, sizeOn32Bits; const char* name; } record[] = {
#define FIELD(member) offsetof(SoundStreamData, member), sizeof(SoundStreamData::member)
    {FIELD(state),         0, 4, "state"},
    {FIELD(ownsState),     4, 1, "ownsState"},
    {FIELD(attachedUnit),  8, 4, "attachedUnit"},
    {FIELD(lastStatus),   12, 4, "lastStatus"},
    {FIELD(unused),       16, 4, "unused"},
};
// clang-format on

TEST(SoundStreamClass, HasTheFieldsOfItsRecordInOrder)
{
    std::size_t end = 0;
    for (const auto& fact : record) {
        SCOPED_TRACE(fact.name);
        EXPECT_GE(fact.offset, end);
        end = fact.offset + fact.size;
        if (sizeof(void*) != 4) continue;
        EXPECT_EQ(fact.offset, fact.offsetOn32Bits);
        EXPECT_EQ(fact.size, fact.sizeOn32Bits);
    }
    if (sizeof(void*) == 4) {
        EXPECT_EQ(sizeof(SoundStreamData), 20u);
    }
}

TEST(SoundStreamClass, HasItsNameSizeAndCounts)
{
    const REALclassDefinition& definition = soundStreamClass;
    EXPECT_EQ(definition.version, 13u);
    EXPECT_STREQ(definition.name, "QTSoundStreamKVX");
    EXPECT_EQ(definition.superName, nullptr);
    EXPECT_EQ(definition.dataSize, sizeof(SoundStreamData));
    EXPECT_NE(definition.constructor, nullptr);
    EXPECT_NE(definition.destructor, nullptr);
    EXPECT_EQ(definition.flags, 4u);
    EXPECT_EQ(definition.propertyCount, 6u);
    EXPECT_EQ(definition.methodCount, 8u);

    EXPECT_EQ(definition.events, nullptr);
    EXPECT_EQ(definition.eventCount, 0u);
    EXPECT_EQ(definition.eventInstances, nullptr);
    EXPECT_EQ(definition.eventInstanceCount, 0u);
    EXPECT_EQ(definition.interfaces, nullptr);
    EXPECT_EQ(definition.constants, nullptr);
    EXPECT_EQ(definition.constantCount, 0u);
    EXPECT_EQ(definition.sharedProperties, nullptr);
    EXPECT_EQ(definition.sharedPropertyCount, 0u);
    EXPECT_EQ(definition.sharedMethods, nullptr);
    EXPECT_EQ(definition.sharedMethodCount, 0u);
    for (const Word word : definition.unused) EXPECT_EQ(word, 0u);
    for (const Word word : definition.newer) EXPECT_EQ(word, 0u);
}

TEST(SoundStreamClass, HasSixPropertiesInOrder)
{
    ASSERT_EQ(soundStreamClass.propertyCount, std::size(properties));
    const auto fieldGetter = reinterpret_cast<AnyFunction>(REALstandardGetter);
    const auto fieldSetter = reinterpret_cast<AnyFunction>(REALstandardSetter);
    const auto* row = static_cast<const REALproperty*>(soundStreamClass.properties);
    for (const auto& expected : properties) {
        SCOPED_TRACE(expected.name);
        EXPECT_STREQ(row->group, "");
        EXPECT_STREQ(row->name, expected.name);
        EXPECT_STREQ(row->type, expected.type);
        EXPECT_EQ(row->flags, 6u);
        EXPECT_NE(row->getter, nullptr);
        EXPECT_EQ(row->getter == fieldGetter, expected.access == field);
        EXPECT_EQ(row->setter == fieldSetter, expected.access == field);
        EXPECT_EQ(row->setter == nullptr, expected.access == getter);
        EXPECT_EQ(row->parameter, expected.offset);
        if (sizeof(void*) == 4) {
            EXPECT_EQ(row->parameter, expected.offsetOn32Bits);
        }
        EXPECT_EQ(row->editor, nullptr);
        EXPECT_EQ(row->enumeration, nullptr);
        EXPECT_EQ(row->tenth, 0u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

TEST(SoundStreamClass, GettersIgnoreTheirParameter)
{
    soundstream_test::StreamObject object;
    object.construct();
    soundstream::StreamState state = {};
    state.component = reinterpret_cast<Component>(0x1234);
    state.streamActive = 1;
    state.postsStatusNotifications = 1;
    const struct {
        const char* property;
        const char* withState;
        const char* without;
    } facts[] = {
        {"PostsStatusNotifications", "true", "false"},
        {"IsStreamActive", "true", "false"},
        {"IsOpen", "true", "false"},
        {"SoundOutputComponentHandle", "4660", "0"},
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.property);
        const REALproperty& row = soundstream_test::propertyRow(fact.property);
        for (const HostInteger parameter : support::anyParameter) {
            object.data().state = &state;
            EXPECT_EQ(support::valueOf(row, object.get(), parameter), fact.withState);
            object.data().state = nullptr;
            EXPECT_EQ(support::valueOf(row, object.get(), parameter), fact.without);
        }
    }
}

TEST(SoundStreamClass, HasEightMethodsInOrder)
{
    ASSERT_EQ(soundStreamClass.methodCount, std::size(methods));
    std::set<AnyFunction> functions;
    const auto* row = static_cast<const REALmethod*>(soundStreamClass.methods);
    for (const char* const declaration : methods) {
        SCOPED_TRACE(declaration);
        EXPECT_STREQ(row->declaration, declaration);
        EXPECT_NE(row->function, nullptr);
        EXPECT_TRUE(functions.insert(row->function).second) << "each method has a different function";
        EXPECT_EQ(row->setter, nullptr);
        EXPECT_EQ(row->flags, 4u);
        EXPECT_EQ(row->trailing[0], 0u);
        EXPECT_EQ(row->trailing[1], 0u);
        ++row;
    }
}

TEST(SoundStreamClass, AnObjectStartsWithZeros)
{
    soundstream_test::StreamObject object; // the object's memory was not zero before its construction
    const SoundStreamData& data = object.data();
    EXPECT_EQ(data.state, nullptr);
    EXPECT_EQ(data.ownsState, false);
    EXPECT_EQ(data.attachedUnit, nullptr);
    EXPECT_EQ(data.lastStatus, 0);
    EXPECT_EQ(data.unused, 0u);
    EXPECT_TRUE(object.isUntouchedAround());
}

/// The class definition that a host with a given class-definition layout receives.
class RegisteredSoundStream : public testing::Test {
protected:
    ~RegisteredSoundStream() override { gResolver = nullptr; }

    REALclassDefinition registered(int layout)
    {
        gResolver = fake::Host::resolve;
        forgetServices();
        REALclassDefinition definition = soundStreamClass;
        CurrentREALControlVersion = layout;
        MyREALRegisterClass(&definition);
        CurrentREALControlVersion = newestLayout;
        EXPECT_EQ(host.registrations().size(), 1u);
        return definition;
    }

    fake::Host host;
};

TEST_F(RegisteredSoundStream, InLayout13IsTheTableItself)
{
    const REALclassDefinition definition = registered(13);
    EXPECT_EQ(definition.version, 13u);
    EXPECT_EQ(definition.dataSize, (sizeof(SoundStreamData) + 15) / 16 * 16);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(definition.dataSize, 32u);
    }
    EXPECT_EQ(definition.properties, soundStreamClass.properties);
    EXPECT_EQ(definition.methods, soundStreamClass.methods);
}

TEST_F(RegisteredSoundStream, InLayout9HasTheFirstWordsOfEachRow)
{
    const REALclassDefinition definition = registered(9);
    EXPECT_EQ(definition.version, 9u);
    if (sizeof(void*) == 4) {
        EXPECT_EQ(definition.dataSize, 32u);
    }
    const auto expectRows = [](void* older, const void* current, Word count, std::size_t olderBytes,
                               std::size_t currentBytes) {
        ASSERT_NE(older, nullptr);
        EXPECT_NE(older, current);
        for (Word i = 0; i < count; ++i)
            EXPECT_EQ(std::memcmp(static_cast<char*>(older) + i * olderBytes,
                                  static_cast<const char*>(current) + i * currentBytes, olderBytes),
                      0)
                << "row " << i;
        std::free(older);
    };
    ASSERT_EQ(definition.propertyCount, 6u);
    ASSERT_EQ(definition.methodCount, 8u);
    expectRows(definition.properties, soundStreamClass.properties, 6, sizeof(REALproperty9),
               sizeof(REALproperty));
    expectRows(definition.methods, soundStreamClass.methods, 8, sizeof(REALmethod9), sizeof(REALmethod));
    EXPECT_EQ(definition.events, nullptr);
    EXPECT_EQ(definition.constants, nullptr);
    EXPECT_EQ(definition.sharedMethods, nullptr);
}

} // namespace
