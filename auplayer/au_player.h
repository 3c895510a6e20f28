// The class data of one file player: a plain C record inside the host object, with the size and offsets that
// the class definition declares. The host itself reads and writes the fields that have the names of
// properties.
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

/// A decoded file in memory.
/// Owner   the player object frees this record and the samples, which were allocated with calloc.
struct LoadedAudio {
    UInt32 frameCount;
    AudioStreamBasicDescription format; ///< copy of the client format, which is the format of the samples
    float* samples;                     ///< interleaved samples; null if there are none
    UInt32 byteSize;                    ///< size of the samples, in bytes
};

/// The rate unit that is not bypassed. Zero means the time-pitch unit.
enum class RateUnit : HostInteger { byDefault = 0, timePitch = 1, varispeed = 2 };

/// Kind of the graph's output unit. Zero and unknown numbers mean the HAL output unit.
enum class OutputUnit : HostInteger {
    byDefault = 0,
    generic = 1,
    hal = 2,
    defaultDevice = 3,
    systemDevice = 4
};

constexpr double unset = -1; ///< value of a loop point that is not set

/// Units   this record counts frames of the file; the interface for host programs uses seconds.
///
/// No lock protects the record. Fields that two threads use are accessed through plugin/shared_word.h. If
/// [main] writes a position while [audio] renders a slice, the end of that slice may overwrite the position.
/// A load fills the record on [main], or on [worker] while [main] runs other code of the host program.
struct AUPlayerData {
    alignas(8) double sampleRate;  ///< sample rate of the file, in Hz
    alignas(8) double trackLength; ///< duration of the file in seconds, estimated by the platform
    alignas(8) double loopIn;      ///< loop start in frames, or `unset`; written by [main], read by [audio]
    alignas(8) double loopOut;     ///< loop end in frames, or `unset`; written by [main], read by [audio]
    HostInteger timePitchUnit;     ///< active rate unit, a number of RateUnit
    /// Output unit of the next load, a number of OutputUnit; set by host programs.
    HostInteger outputUnit;
    REALobjectStruct* tag; ///< variant for the host program's own use
    /// Whether the samples are interleaved. All data… fields describe the samples in memory.
    HostBoolean dataIsInterleaved;
    REALfolderItemStruct* file; ///< loaded folder item; the record holds a reference
    HostBoolean dataIsFloat;
    /// Status of the last platform call; -1 before the first call. Host programs may write the field, too.
    HostInteger lasterror;
    HostBoolean dataIsNativeEndian;
    REALstringStruct* clientFormatString; ///< text of clientFormat; the host releases the string
    HostBoolean dataIsSignedInteger;
    REALstringStruct* outputFormatString; ///< text of outputFormat; the host releases the string
    HostBoolean dataIsPCM;
    HostInteger dataNumberInterleavedChannels;
    HostInteger dataNumberChannelStreams;
    HostInteger dataNumberChannels;
    HostInteger dataSampleWordSize;
    HostInteger maximumFramesPerSlice; ///< slice limit for the next load; written by the host program
    AUGraph graph;                     ///< graph, which owns the units
    AudioUnit converter;
    AudioUnit output;
    AudioUnit timePitch;
    AudioUnit varispeed;
    AudioUnit mixer;
    AudioUnit equalizer;
    CAStreamBasicDescription* clientFormat; ///< format of the samples in memory; owned by the record
    CAStreamBasicDescription* outputFormat; ///< format of the streams between the units; owned by the record
    AUNode outputNode;
    AUNode timePitchNode;
    AUNode varispeedNode;
    AUNode equalizerNode;
    AUNode mixerNode;
    AUNode converterNode;
    UInt32 position;         ///< next frame to render; written by [main] and [audio]
    UInt32 endFrame;         ///< number of frames that the load has read
    UInt32 lastRenderOffset; ///< index of the last slice's first sample [audio]
    LoadedAudio* loadedAudio;
    HostBoolean isLooping;               ///< whether the loop is active; written by [main], read by [audio]
    alignas(4) HostBoolean isFileLoaded; ///< whether a load has begun; never cleared
};

static_assert(sizeof(void*) != 4 || sizeof(AUPlayerData) == 184, "the size declared to the host");
static_assert(offsetof(AUPlayerData, sampleRate) % 8 == 0 && offsetof(AUPlayerData, trackLength) % 8 == 0 &&
                  offsetof(AUPlayerData, loopIn) % 8 == 0 && offsetof(AUPlayerData, loopOut) % 8 == 0,
              "64-bit fields are read and written by one instruction");

/// Return the class data inside a host object.
/// [main]
AUPlayerData& dataOf(REALobjectStruct* object);

/// Set `Lasterror` to -1 and return the class data. Most properties and methods call this function first.
/// [main]
AUPlayerData& beginCall(REALobjectStruct* object);

/// Store a platform status in `Lasterror`. Returns whether the status means success.
/// [main], [worker]
inline bool keepStatus(AUPlayerData& player, OSStatus status)
{
    storeRelaxed(player.lasterror, static_cast<HostInteger>(status));
    return status == noErr;
}

/// Return the number of frames that the load has read, divided by the file's estimated duration. The result
/// may differ from the sample rate.
/// [main]
inline double framesPerSecond(const AUPlayerData& player)
{
    return loadRelaxed(player.endFrame) / loadRelaxed(player.trackLength);
}

} // namespace auplayer
