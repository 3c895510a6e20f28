// The records that the host program's object, the component's clients and the render thread share.
//
// These three users finish in any order, so each record counts its users. In the field comments, "published"
// (release and acquire), "in order" (sequentially consistent) and "relaxed" name the memory order of
// accesses.
#pragma once

#include "abi/word.h"
#include "soundstream/live_records.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>

#include <cstdint>

namespace soundstream {

struct RefconRecord;
struct QTSoundStreamGlobals;

/// The state that InitComponent creates for an object.
struct StreamState {
    Component component; ///< the registered component; null while not open. [main]
    /// Converter from the mixer's format; null until created, never disposed. Published.
    AudioConverterRef converter;
    AudioStreamBasicDescription outputFormat; ///< output format of the converter; constant
    /// Record of the registered component, in use by this state; null while not open. In order.
    RefconRecord* refconRecord;
    HostBoolean streamActive;             ///< whether the mixer plays a source. Relaxed
    HostBoolean postsStatusNotifications; ///< value of a host property, stored without any effect. [main]

    int users;                          ///< user count: the object, each RefconRecord, each render call
    StreamState* next;                  ///< next state in liveStates
    pthread_t renderThread;             ///< thread of the render call in progress; 0 without one. In order
    std::uint32_t rendersDone;          ///< number of render calls that have ended; may wrap. In order
    QTSoundStreamGlobals* closedInside; ///< first instance that was closed inside the render call. [audio]
};

/// The data that a registered component's refcon points to.
struct RefconRecord {
    StreamState* state; ///< the state; the refcon record counts as one of its users
    /// Storage of the instance that the render thread plays, or null. Stored and loaded in order.
    QTSoundStreamGlobals* globals;

    int users;          ///< user count: the StreamState while open, each instance
    RefconRecord* next; ///< next record in liveRefcons
};

/// The storage of an open instance of the component.
struct QTSoundStreamGlobals {
    /// The instance's mixer; null until the client initialises the device. Published.
    ComponentInstance mixer;
    SoundComponentDataPtr sourceData; ///< the mixer's samples that are not rendered yet. [audio]
    SoundComponentData description;   ///< format that is requested of the mixer
    ComponentInstance self;
    /// The component's record, in use by this instance; null if the component was unregistered before Open.
    RefconRecord* refcon;

    bool isMixerChanging; ///< whether the mixer is being replaced, so that silence is rendered. In order
    int inputsEnded;      ///< number of times that `sourceData` became invalid. Relaxed
    int users;            ///< user count: the open instance, each request in progress
    QTSoundStreamGlobals* next; ///< next instance in liveInstances; after removal, next in closedInside
};

extern LiveRecords<StreamState> liveStates;
extern LiveRecords<RefconRecord> liveRefcons;
extern LiveRecords<QTSoundStreamGlobals> liveInstances;

/// Free a record whose user count is 0, and leave() the record that it uses.
/// [any]
void destroy(StreamState* state);
void destroy(RefconRecord* record);
void destroy(QTSoundStreamGlobals* globals);

/// Close the instance's mixer, if it has one. Must not run while another thread renders the instance.
/// [any]
void closeMixer(QTSoundStreamGlobals& globals);

/// Discard the samples that the mixer has delivered. Must not run while another thread renders the instance.
/// [any]
void endInput(QTSoundStreamGlobals& globals);

/// The instance's mixer; null if `globals` is null.
/// [client]
inline ComponentInstance mixerOf(const QTSoundStreamGlobals* globals)
{
    return globals ? loadAcquired(globals->mixer) : nullptr;
}

} // namespace soundstream
