// The records of the bridge, and who keeps them alive.
//
// Three sides meet here: the host program's object, a client that has opened our component, and the audio
// unit's render thread. Each may leave first, so every record counts its holders and goes with the last one.
#pragma once

#include "abi/word.h"
#include "plugin/shared_word.h"
#include "soundstream/entrance.h"
#include "soundstream/open_instances.h"

#include <AudioToolbox/AudioToolbox.h>
#include <Carbon/Carbon.h>

#include <memory>

namespace soundstream {

struct RefconRecord;

/// What an object with state has, made by InitComponent.
/// Holders  the object; each RefconRecord.
struct StreamState {
    Component component;                      ///< registered; null while not open. [main]
    AudioConverterRef converter;              ///< null until made; never disposed. Published
    AudioStreamBasicDescription outputFormat; ///< what the audio unit is given; fixed
    RefconRecord* refconRecord;               ///< null while not open. Published
    HostBoolean streamActive;                 ///< the mixer's source plays; relaxed
    HostBoolean postsStatusNotifications;     ///< the host program's, kept for it and read by nobody else
    Entrance* entrance;                       ///< the render thread's; fixed
    int holders;
    Postponed end;
};

/// What is open of one instance of the component: the instance's storage.
/// Holders  the instance; each request under way; the render procedure, while it is inside.
struct QTSoundStreamGlobals {
    ComponentInstance mixer;          ///< null until the client initialises the device; published
    SoundComponentDataPtr sourceData; ///< what is being drained, the mixer's; [audio]
    SoundComponentData description;   ///< what is asked of the mixer
    ComponentInstance self;
    RefconRecord* refcon; ///< held
    OpenPlace* place;     ///< fixed
    bool isHidden;        ///< from the render thread, while the mixer changes. Published
    int mixersClosed;     ///< how many; they close while nobody renders, or on the render thread itself
    int holders;
    Postponed end;
};

/// Null without globals, too. [client]
inline ComponentInstance mixerOf(const QTSoundStreamGlobals* globals)
{
    return globals ? loadAcquired(globals->mixer) : nullptr;
}

/// What a registered component knows of us: its refcon.
/// Holders  the StreamState, while open; each instance.
struct RefconRecord {
    StreamState* state;            ///< held
    QTSoundStreamGlobals* globals; ///< of the open instance; null: none. Published
    int holders;
    Postponed end;
    RefconRecord* next; ///< of those whose component is registered
};

/// A new record with one holder, of zeros but for what names it; null without memory. [any]
StreamState* newStreamState();
QTSoundStreamGlobals* newGlobals();

/// The same, holding `state`, and known to `findRefconRecord` until it is retired. [main]
RefconRecord* newRefconRecord(StreamState& state);

/// Drops a hold at the end of its life.
struct Drop {
    template <class Record>
    void operator()(Record* record) const;
};
using HeldGlobals = std::unique_ptr<QTSoundStreamGlobals, Drop>;

/// One holder more. [any]
template <class Record>
void hold(Record& record)
{
    __atomic_add_fetch(&record.holders, 1, __ATOMIC_RELAXED);
}

/// One holder less; the last one frees the record and drops what it held. Null is let pass. The last of a
/// state waits for the render thread, or leaves it to that one. [any]
void drop(StreamState* state);
void drop(QTSoundStreamGlobals* globals);
void drop(RefconRecord* record);

template <class Record>
void Drop::operator()(Record* record) const
{
    drop(record);
}

/// The record that a component's refcon says, held for the caller; null for one that was retired meanwhile.
/// Waits for nobody longer than a few instructions. [client]
RefconRecord* findRefconRecord(long refcon);

/// No instance finds it any more; the state's own hold is dropped once the render thread is done with it.
/// [main]
void retire(RefconRecord* record);

} // namespace soundstream
