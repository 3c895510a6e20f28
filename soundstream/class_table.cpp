// The class QTSoundStreamKVX: its properties and methods.
//
// The mixer delivers 16-bit little-endian samples, but the converter reads them as big-endian samples.
// Therefore big-endian samples that a program labels as little-endian ("sowt") pass the mixer unchanged and
// play correctly; correctly labelled samples play byte-swapped, as noise.
#include "soundstream/sound_stream.h"

#include "plugin/class_data.h"
#include "plugin/class_table.h"
#include "plugin/classes.h"
#include "plugin/shared_word.h"

namespace soundstream {

namespace {

HostBoolean getPostsStatusNotifications(REALobjectStruct* object, HostInteger)
{
    const StreamState* const state = dataOf(object).state;
    return state && state->postsStatusNotifications;
}

void setPostsStatusNotifications(REALobjectStruct* object, HostInteger, HostBoolean value)
{
    if (StreamState* const state = dataOf(object).state) state->postsStatusNotifications = value;
}

HostBoolean getIsStreamActive(REALobjectStruct* object, HostInteger)
{
    const StreamState* const state = dataOf(object).state;
    return state && loadRelaxed(state->streamActive);
}

HostInteger getSoundOutputComponentHandle(REALobjectStruct* object, HostInteger)
{
    const StreamState* const state = dataOf(object).state;
    return state ? reinterpret_cast<HostInteger>(state->component) : 0;
}

HostBoolean getIsOpen(REALobjectStruct* object, HostInteger)
{
    return getSoundOutputComponentHandle(object, 0) != 0;
}

using namespace table;
using Data = SoundStreamData;

// The host's interface declares handles as the type Integer.
static_assert(sizeof(StreamState*) == sizeof(HostInteger));
constexpr HostType<StreamState*> asState{asInteger.name};

// clang-format off
REALproperty properties[] = {
    //           name                          type       getter or field                setter
    KVX_PROPERTY("PostsStatusNotifications",   asBoolean, getPostsStatusNotifications,   setPostsStatusNotifications),
    KVX_PROPERTY("IsStreamActive",             asBoolean, getIsStreamActive,             readOnly),
    KVX_PROPERTY("IsOpen",                     asBoolean, getIsOpen,                     readOnly),
    KVX_PROPERTY("SoundOutputComponentHandle", asInteger, getSoundOutputComponentHandle, readOnly),
    KVX_FIELD   ("Handle",                     asState,   state,                         readWrite),
    KVX_FIELD   ("Release",                    asBoolean, ownsState,                     readWrite),
};

REALmethod methods[] = {
    //         function                             declaration
    KVX_METHOD(CloseComponent,                      "CloseComponent"),
    KVX_METHOD(OpenComponent,                       "OpenComponent"),
    KVX_METHOD(InitComponent,                       "InitComponent"),
    KVX_METHOD(OpenDefaultAudioUnitOutputComponent, "OpenDefaultAudioUnitOutputComponent as integer"),
    KVX_METHOD(AttachToAudioUnitComponent,          "AttachToAudioUnitComponent(componenthandle as integer) as integer"),
    KVX_METHOD(AttachToElement,                     "AttachToAudioUnitComponent(componenthandle as integer, element as integer) as integer"),
    KVX_METHOD(AudioUnitInitialize,                 "AudioUnitInitialize(componenthandle as integer) as integer"),
    KVX_METHOD(AudioOutputUnitStart,                "AudioOutputUnitStart(componenthandle as integer) as integer"),
};
// clang-format on

static_assert(std::size(properties) == 6, "the class is published with 6 properties");
static_assert(std::size(methods) == 8, "the class is published with 8 methods");

} // namespace

SoundStreamData& dataOf(REALobjectStruct* object)
{
    return classData<SoundStreamData>(object, soundStreamClass);
}

} // namespace soundstream

REALclassDefinition soundStreamClass =
    table::classDefinition<soundstream::SoundStreamData, soundstream::construct, soundstream::destruct>(
        "QTSoundStreamKVX", {soundstream::properties, soundstream::methods});
