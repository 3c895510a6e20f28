// The class data of QTSoundStreamKVX, and the methods of the class.
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
    /// The object's state or null. Host programs may write this field, to share another object's state.
    StreamState* state;
    HostBoolean ownsState;  ///< whether the destructor frees the state. Host programs may write this field
    AudioUnit attachedUnit; ///< the output unit attached last, or null
    /// Last platform status, or -1 while a method runs. No code reads this field, but the class data's layout
    /// requires the field.
    HostInteger lastStatus;
    Word unused; ///< unused field, always zero; the class data's layout requires the field
};
static_assert(sizeof(void*) != 4 || sizeof(SoundStreamData) == 20, "the size declared to the host");

/// The class data in a host object's memory.
SoundStreamData& dataOf(REALobjectStruct* object);

void construct(REALobjectStruct* object);
void destruct(REALobjectStruct* object);

/// Create a state and free the former state. If there is no memory, the object has no state.
void InitComponent(REALobjectStruct* object);

/// Register the component and create the converter. Does nothing if the object has no state or the component
/// is open. In the host's development environment the component has no entry point, so clients cannot open
/// it.
void OpenComponent(REALobjectStruct* object);

/// Stop the attached unit and unregister the component. The converter is kept and never disposed.
///
/// Open instances stay valid, but are silent. While an instance is open, the platform keeps the component
/// registered, so after the next OpenComponent a search finds the silent component first and the audible one
/// last. Therefore clients should close their instances before CloseComponent.
void CloseComponent(REALobjectStruct* object);

/// Open the default output unit.
/// Returns  the unit, or 0 if there is no default output unit or it cannot be opened.
HostInteger OpenDefaultAudioUnitOutputComponent(REALobjectStruct* object);

/// Let an input of an output unit pull from the component. CloseComponent stops only the unit attached last;
/// other units pull silence after that, even after the state is freed.
HostInteger AttachToAudioUnitComponent(REALobjectStruct* object, HostInteger unit);
HostInteger AttachToElement(REALobjectStruct* object, HostInteger unit, HostInteger element);

HostInteger AudioUnitInitialize(REALobjectStruct* object, HostInteger unit);
HostInteger AudioOutputUnitStart(REALobjectStruct* object, HostInteger unit);

} // namespace soundstream
