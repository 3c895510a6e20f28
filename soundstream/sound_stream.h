// The class data of QTSoundStreamKVX, and its methods.
//
// Order    InitComponent, OpenComponent; a client opens the component and initialises its device; the host
//          program opens, attaches, initialises and starts an output unit. CloseComponent ends playback.
// Errors   No exception is raised. Statuses are returned, and stored as `lastStatus`.
//
// All functions: [main].
#pragma once

#include "abi/class_definition.h"
#include "soundstream/stream_state.h"

namespace soundstream {

struct SoundStreamData {
    StreamState* state;     ///< null: no state. Host programs may write it, to share another object's
    HostBoolean ownsState;  ///< the destructor frees the state. Host programs may write it
    AudioUnit attachedUnit; ///< the output unit attached last; null: none
    HostInteger lastStatus; ///< of the platform; -1 while a method runs. Required by the record, not read
    Word unused;            ///< required by the record; zero
};
static_assert(sizeof(void*) != 4 || sizeof(SoundStreamData) == 20, "the size declared to the host");

/// The class data inside a host object.
SoundStreamData& dataOf(REALobjectStruct* object);

void construct(REALobjectStruct* object);
void destruct(REALobjectStruct* object);

/// Create a state, replacing a former one. Without memory the object has no state.
void InitComponent(REALobjectStruct* object);

/// Register the component and create the converter. Does nothing without a state, or while the component is
/// open. In the host's development environment the component has no entry point: clients cannot open it.
void OpenComponent(REALobjectStruct* object);

/// Stop the attached unit and unregister the component. The converter is kept, and never disposed.
///
/// Open instances stay valid, but silent. While there are any, the platform keeps the registration: after the
/// next OpenComponent a search finds this silent component first, and the audible one last. So clients close
/// first.
void CloseComponent(REALobjectStruct* object);

/// Open the default output unit.
/// Returns  0 if there is none, or it cannot be opened.
HostInteger OpenDefaultAudioUnitOutputComponent(REALobjectStruct* object);

/// Let a unit's input pull from the component. CloseComponent stops the unit attached last; other units pull
/// silence after that, also when the state is freed.
HostInteger AttachToAudioUnitComponent(REALobjectStruct* object, HostInteger unit);
HostInteger AttachToElement(REALobjectStruct* object, HostInteger unit, HostInteger element);

HostInteger AudioUnitInitialize(REALobjectStruct* object, HostInteger unit);
HostInteger AudioOutputUnitStart(REALobjectStruct* object, HostInteger unit);

} // namespace soundstream
