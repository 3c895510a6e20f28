// The class data of QTSoundStreamKVX, and its methods.
//
// Order    InitComponent, OpenComponent; a client opens the component and initialises its device; an output
//          unit is opened, attached, initialised and started. CloseComponent ends what is heard.
// Thread   [main].
// Errors   no exception is raised; statuses are returned, and kept as `lastStatus`.
#pragma once

#include "abi/class_definition.h"
#include "soundstream/stream_state.h"

namespace soundstream {

struct SoundStreamData {
    StreamState* state;     ///< null: no state. Host programs may write it: another object's, to share
    HostBoolean ownsState;  ///< the state goes with this object. Host programs may write it
    AudioUnit attachedUnit; ///< the output unit attached last; null: none
    HostInteger lastStatus; ///< of the platform; -1 while a method runs. Stated by the interface; not read
    Word unused;            ///< stated by the interface; zero
};
static_assert(sizeof(void*) != 4 || sizeof(SoundStreamData) == 20, "the size declared to the host");

/// The class data inside a host object.
SoundStreamData& dataOf(REALobjectStruct* object);

void construct(REALobjectStruct* object);
void destruct(REALobjectStruct* object);

/// A new state in place of the one there was. Without memory the object stays without.
void InitComponent(REALobjectStruct* object);

/// Register the component, and make the converter. Nothing happens without a state, or when it is open.
/// In the host's development environment the component has no entry point, and cannot be opened by clients.
void OpenComponent(REALobjectStruct* object);

/// Stop the attached unit, and take the component back. Instances that clients still have open stay theirs to
/// close; they are heard no more. The converter is kept, and never disposed.
///
/// With instances open the platform keeps the registration, too (validInstancesExist), in front of any later
/// one: after the next OpenComponent a client that takes the first match of its search opens an orphan, which
/// takes all it is sent and plays silence. The last match is the one that is heard. So clients close first.
void CloseComponent(REALobjectStruct* object);

/// Open the default output unit. 0 if there is none or it cannot be opened.
HostInteger OpenDefaultAudioUnitOutputComponent(REALobjectStruct* object);

/// Let a unit's input pull from the component. CloseComponent stops the unit that was attached last; others
/// pull silence from then on, whatever becomes of the state.
HostInteger AttachToAudioUnitComponent(REALobjectStruct* object, HostInteger unit);
HostInteger AttachToElement(REALobjectStruct* object, HostInteger unit, HostInteger element);

HostInteger AudioUnitInitialize(REALobjectStruct* object, HostInteger unit);
HostInteger AudioOutputUnitStart(REALobjectStruct* object, HostInteger unit);

} // namespace soundstream
