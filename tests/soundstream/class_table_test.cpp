// The class definition of QTSoundStreamKVX, compared with the tables in this file.
#include "plugin/process_state.h"
#include "tests/soundstream/stream_object.h"
#include "tests/support/class_table.h"
#include "tests/support/fake_host.h"
#include "tests/support/service_caches.h"

#include <gtest/gtest.h>

#include <cstddef>

namespace {

using soundstream::SoundStreamData;

#define OFFSET(member)                                                                                       \
    HostInteger { offsetof(SoundStreamData, member) }

// The class data of the 32-bit library.
#define FIELD(member, offset, size)                                                                          \
    static_assert(sizeof(void*) != 4 ||                                                                      \
                  (offsetof(SoundStreamData, member) == offset && sizeof(SoundStreamData::member) == size))
FIELD(state, 0, 4);
FIELD(ownsState, 4, 1);
FIELD(attachedUnit, 8, 4);
FIELD(lastStatus, 12, 4);
FIELD(unused, 16, 4);
static_assert(sizeof(void*) != 4 || sizeof(SoundStreamData) == 20);

TEST(SoundStreamClass, HasItsNameSizeAndCounts)
{
    support::expectClass(soundStreamClass, {"QTSoundStreamKVX", sizeof(SoundStreamData), 6, 8});
}

TEST(SoundStreamClass, HasSixPropertiesInOrder)
{
    using support::Access;
    support::expectProperties(soundStreamClass,
                              {
                                  {"PostsStatusNotifications", "Boolean", Access::accessors},
                                  {"IsStreamActive", "Boolean", Access::getter},
                                  {"IsOpen", "Boolean", Access::getter},
                                  {"SoundOutputComponentHandle", "Integer", Access::getter},
                                  {"Handle", "Integer", Access::writableField, OFFSET(state)},
                                  {"Release", "Boolean", Access::writableField, OFFSET(ownsState)},
                              });
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
        const REALproperty& row = soundstream_test::members.property(fact.property);
        object.data().state = &state;
        support::expectValue(row, object.get(), fact.withState);
        object.data().state = nullptr;
        support::expectValue(row, object.get(), fact.without);
    }
}

TEST(SoundStreamClass, HasEightMethodsInOrder)
{
    support::expectMethods(
        soundStreamClass.methods, soundStreamClass.methodCount,
        {
            {"CloseComponent"},
            {"OpenComponent"},
            {"InitComponent"},
            {"OpenDefaultAudioUnitOutputComponent as integer"},
            {"AttachToAudioUnitComponent(componenthandle as integer) as integer"},
            {"AttachToAudioUnitComponent(componenthandle as integer, element as integer) as integer"},
            {"AudioUnitInitialize(componenthandle as integer) as integer"},
            {"AudioOutputUnitStart(componenthandle as integer) as integer"},
        });
}

TEST(SoundStreamClass, HasADifferentFunctionForEachMember)
{
    support::expectDifferentFunctions(soundStreamClass, 15);
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

class RegisteredSoundStream : public testing::Test {
protected:
    RegisteredSoundStream()
    {
        gResolver = fake::Host::resolve;
        forgetServices();
    }
    ~RegisteredSoundStream() override { gResolver = nullptr; }

    fake::Host host;
};

TEST_F(RegisteredSoundStream, InLayout13IsTheTableItself)
{
    support::expectRegisteredUnchanged(soundStreamClass);
}

TEST_F(RegisteredSoundStream, InLayout9HasTheFirstWordsOfEachRow)
{
    support::expectRegisteredInLayout9(soundStreamClass);
}

} // namespace
