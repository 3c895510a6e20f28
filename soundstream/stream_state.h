// The records of the bridge.
//
// The host program's object, the component's clients and the render thread share them, and finish in any
// order. So each record counts its users.
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
    AudioStreamBasicDescription outputFormat; ///< of the converter; fixed
    RefconRecord* refconRecord;               ///< in use; null while not open. Published
    HostBoolean streamActive;                 ///< the mixer plays a source. Relaxed
    HostBoolean postsStatusNotifications;     ///< stored for the host program only. [main]

    int users;                          ///< the object, each RefconRecord, each render call
    StreamState* next;                  ///< in liveStates
    pthread_t renderThread;             ///< runs the render call in progress; 0: none. Published
    std::uint32_t rendersDone;          ///< count of render calls that have ended; wraps. Published
    QTSoundStreamGlobals* closedInside; ///< list of instances closed inside the render call. [audio]
};

/// The refcon of a registered component.
struct RefconRecord {
    StreamState* state;            ///< in use
    QTSoundStreamGlobals* globals; ///< of the audible instance; null: none. Published

    int users;          ///< the StreamState while open, each instance
    RefconRecord* next; ///< in liveRefcons
};

/// The storage of an open instance of the component.
struct QTSoundStreamGlobals {
    ComponentInstance mixer;          ///< null until the client initialises the device. Published
    SoundComponentDataPtr sourceData; ///< the mixer's samples that are not rendered yet. [audio]
    SoundComponentData description;   ///< requested of the mixer
    ComponentInstance self;
    RefconRecord* refcon; ///< in use; null if the component was unregistered before the instance opened

    bool isMixerChanging;       ///< the render thread renders silence instead. Published
    int inputsEnded;            ///< how often `sourceData` became invalid. Relaxed
    int users;                  ///< the open instance, each request in progress
    QTSoundStreamGlobals* next; ///< in liveInstances, then in closedInside
};

extern LiveRecords<StreamState> liveStates;
extern LiveRecords<RefconRecord> liveRefcons;
extern LiveRecords<QTSoundStreamGlobals> liveInstances;

/// Free a record without users, and leave the record that it uses.
/// [any]
void destroy(StreamState* state);
void destroy(RefconRecord* record);
void destroy(QTSoundStreamGlobals* globals);

/// Close the instance's mixer, if it has one. Not while another thread renders the instance.
/// [any]
void closeMixer(QTSoundStreamGlobals& globals);

/// Discard the samples that the mixer has delivered. Not while another thread renders the instance.
/// [any]
void endInput(QTSoundStreamGlobals& globals);

/// The instance's mixer; null without globals.
/// [client]
inline ComponentInstance mixerOf(const QTSoundStreamGlobals* globals)
{
    return globals ? loadAcquired(globals->mixer) : nullptr;
}

} // namespace soundstream
