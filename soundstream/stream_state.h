// The records of the bridge.
//
// The host program's object, a client of the component and an audio unit's render thread share them, and may
// leave in any order. So each record counts its users.
#pragma once

#include "abi/word.h"
#include "soundstream/live_records.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>

#include <cstdint>

namespace soundstream {

struct RefconRecord;
struct QTSoundStreamGlobals;

/// What InitComponent makes for an object.
struct StreamState {
    Component component;                      ///< registered; null while not open. [main]
    AudioConverterRef converter;              ///< null until created; never disposed. Published
    AudioStreamBasicDescription outputFormat; ///< what the audio unit receives; fixed
    RefconRecord* refconRecord;               ///< in use; null while not open. Published
    HostBoolean streamActive;                 ///< the mixer's source plays; relaxed
    HostBoolean postsStatusNotifications;     ///< stored for the host program only. [main]

    int users;                          ///< the object, each RefconRecord, each lookup of a render call
    StreamState* next;                  ///< of liveStates
    pthread_t renderThread;             ///< that runs the render call in progress; 0: none
    std::uint32_t rendersDone;          ///< render calls that have ended; wraps
    QTSoundStreamGlobals* closedInside; ///< instances closed inside the render call in progress. [audio]
};

/// The refcon of a registered component.
struct RefconRecord {
    StreamState* state;            ///< in use
    QTSoundStreamGlobals* globals; ///< of the audible instance; null: none. Published

    int users;          ///< the StreamState while open, each instance
    RefconRecord* next; ///< of liveRefcons
};

/// The storage of an open instance of the component.
struct QTSoundStreamGlobals {
    ComponentInstance mixer;          ///< null until the client initialises the device. Published
    SoundComponentDataPtr sourceData; ///< the mixer's samples, in part rendered. [audio]
    SoundComponentData description;   ///< the format requested of the mixer
    ComponentInstance self;
    RefconRecord* refcon; ///< in use; null for an instance of a withdrawn component

    bool isMixerChanging;       ///< the render thread plays silence instead. Published
    int inputsEnded;            ///< how often the mixer's samples became invalid
    int users;                  ///< the open instance, each request in progress
    QTSoundStreamGlobals* next; ///< of liveInstances, then of closedInside
};

extern LiveRecords<StreamState> liveStates;
extern LiveRecords<RefconRecord> liveRefcons;
extern LiveRecords<QTSoundStreamGlobals> liveInstances;

/// Create the live refcon record of a state; null without memory.
/// [main]
RefconRecord* newRefconRecord(StreamState& state);

/// Free a record without users, and leave those that it uses.
/// [any]
void destroy(StreamState* state);
void destroy(RefconRecord* record);
void destroy(QTSoundStreamGlobals* globals);

/// Close the instance's mixer, if there is one.
/// [audio], or any thread while no render call uses the instance
void closeMixer(QTSoundStreamGlobals& globals);

/// Stop using the samples that the mixer has handed out. Threads as above.
void endInput(QTSoundStreamGlobals& globals);

/// The instance's mixer; null without globals, too.
/// [client]
inline ComponentInstance mixerOf(const QTSoundStreamGlobals* globals)
{
    return globals ? loadAcquired(globals->mixer) : nullptr;
}

} // namespace soundstream
