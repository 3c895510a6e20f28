// The class data of one file player. A plain C record inside the host object, laid out as declared to the
// host, who reads and writes the fields named after properties by itself.
#pragma once

#include "abi/class_definition.h"
#include "abi/host_values.h"
#include "auplayer/stream_description.h"
#include "plugin/shared_word.h"

#include <AudioToolbox/AudioToolbox.h>
#include <AudioUnit/AudioUnit.h>

#include <cstddef>
#include <cstdint>

namespace auplayer {

/// A file in memory.
/// Owner   one for each object, from calloc; the samples, too, and they go with free.
struct LoadedAudio {
    UInt32 frameCount;
    AudioStreamBasicDescription format; ///< a copy of the client format
    float* samples;                     ///< interleaved; null: none
    UInt32 byteSize;                    ///< of the buffer
};

enum class RateUnit : HostInteger { byDefault = 0, timePitch = 1, varispeed = 2 };

/// By default, and for any other number, it is the one that plays to a device of its own.
enum class OutputUnit : HostInteger {
    byDefault = 0,
    generic = 1,
    hal = 2,
    defaultDevice = 3,
    systemDevice = 4
};

constexpr double unset = -1; ///< a loop point that was not given

/// Times are seconds where host programs see them and frames of the file in here.
///
/// Threads: [main] is the host's; [load] fills the record while a file is loaded: the same thread, or one of
/// its own, for which [main] waits while it lets the host's programs run; [audio] is the graph's, inside
/// renderInput, once the graph has been started. Nothing is locked. The words that two of them touch are
/// loaded and stored as plugin/shared_word.h says; a position written by [main] while a slice is rendered may
/// be lost to the slice's own.
struct AUPlayerData {
    alignas(8) double sampleRate;  ///< Hz, of the file
    alignas(8) double trackLength; ///< seconds, as the platform estimates them
    alignas(8) double loopIn;      ///< frames; `unset`; [main] writes, [audio] reads
    alignas(8) double loopOut;     ///< likewise
    HostInteger timePitchUnit;     ///< a RateUnit
    HostInteger outputUnit;        ///< an OutputUnit, for the next load; the host program's
    REALobjectStruct* tag;         ///< a variant, the host program's
    HostBoolean dataIsInterleaved; ///< of the samples in memory, as all that begins with data
    REALfolderItemStruct* file;    ///< with a reference
    HostBoolean dataIsFloat;
    HostInteger lasterror; ///< status of the last platform call; -1 before one. Host programs may write it
    HostBoolean dataIsNativeEndian;
    REALstringStruct* clientFormatString; ///< the host's to release
    HostBoolean dataIsSignedInteger;
    REALstringStruct* outputFormatString; ///< likewise
    HostBoolean dataIsPCM;
    HostInteger dataNumberInterleavedChannels;
    HostInteger dataNumberChannelStreams;
    HostInteger dataNumberChannels;
    HostInteger dataSampleWordSize;
    HostInteger maximumFramesPerSlice; ///< the host program's, for the next load
    AUGraph graph;                     ///< owns the units
    AudioUnit converter;
    AudioUnit output;
    AudioUnit timePitch;
    AudioUnit varispeed;
    AudioUnit mixer;
    AudioUnit equalizer;
    CAStreamBasicDescription* clientFormat; ///< owned: the samples in memory
    CAStreamBasicDescription* outputFormat; ///< owned: what passes between the units
    AUNode outputNode;
    AUNode timePitchNode;
    AUNode varispeedNode;
    AUNode equalizerNode;
    AUNode mixerNode;
    AUNode converterNode;
    UInt32 position;         ///< the next frame to render; [main] and [audio] write
    UInt32 endFrame;         ///< frames that were read
    UInt32 lastRenderOffset; ///< sample at which the last slice began; [audio]
    LoadedAudio* loadedAudio;
    HostBoolean isLooping;               ///< [main] writes, [audio] reads
    alignas(4) HostBoolean isFileLoaded; ///< a load has begun; for good. A flag has a word of its own
};

static_assert(sizeof(void*) != 4 || sizeof(AUPlayerData) == 184, "the size declared to the host");
static_assert(offsetof(AUPlayerData, sampleRate) % 8 == 0 && offsetof(AUPlayerData, trackLength) % 8 == 0 &&
                  offsetof(AUPlayerData, loopIn) % 8 == 0 && offsetof(AUPlayerData, loopOut) % 8 == 0,
              "64-bit fields are read and written by one instruction");

/// The class data inside a host object. [main]
AUPlayerData& dataOf(REALobjectStruct* object);

/// The same with `Lasterror` set to -1: how most members begin. Bind it before the platform call. [main]
AUPlayerData& beginCall(REALobjectStruct* object);

/// Keep a status where the host program finds it, and say whether it is success. [main], [load]
inline bool keepStatus(AUPlayerData& player, OSStatus status)
{
    storeRelaxed(player.lasterror, static_cast<HostInteger>(status));
    return status == noErr;
}

} // namespace auplayer
