// The class data of one file player: a plain C record inside the host object, in the declared layout. The
// host itself reads and writes the fields that are named after properties.
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
/// Owner   the object, which frees this record and the samples; both come from calloc.
struct LoadedAudio {
    UInt32 frameCount;
    AudioStreamBasicDescription format; ///< a copy of the client format
    float* samples;                     ///< interleaved; null: none
    UInt32 byteSize;                    ///< of the samples
};

enum class RateUnit : HostInteger { byDefault = 0, timePitch = 1, varispeed = 2 };

/// The default, like any unknown number, is the HAL output unit.
enum class OutputUnit : HostInteger {
    byDefault = 0,
    generic = 1,
    hal = 2,
    defaultDevice = 3,
    systemDevice = 4
};

constexpr double unset = -1; ///< the value of a loop point that is not set

/// Units   host programs use seconds; this record counts frames of the file.
///
/// Nothing is locked. Fields that two threads use are accessed through plugin/shared_word.h. A position that
/// [main] writes during a slice may be overwritten by that slice. A load fills the record on [main], or on
/// [worker] while [main] runs the host's other code.
struct AUPlayerData {
    alignas(8) double sampleRate;  ///< Hz, of the file
    alignas(8) double trackLength; ///< seconds, estimated by the platform
    alignas(8) double loopIn;      ///< frames, or `unset`; written by [main], read by [audio]
    alignas(8) double loopOut;     ///< likewise
    HostInteger timePitchUnit;     ///< a RateUnit
    HostInteger outputUnit;        ///< an OutputUnit, used by the next load; written by the host program
    REALobjectStruct* tag;         ///< a variant, written by the host program
    HostBoolean dataIsInterleaved; ///< of the samples in memory, like the other data… fields
    REALfolderItemStruct* file;    ///< holds a reference
    HostBoolean dataIsFloat;
    HostInteger
        lasterror; ///< status of the last platform call; -1 before the first; writable by host programs
    HostBoolean dataIsNativeEndian;
    REALstringStruct* clientFormatString; ///< the host releases it
    HostBoolean dataIsSignedInteger;
    REALstringStruct* outputFormatString; ///< the host releases it
    HostBoolean dataIsPCM;
    HostInteger dataNumberInterleavedChannels;
    HostInteger dataNumberChannelStreams;
    HostInteger dataNumberChannels;
    HostInteger dataSampleWordSize;
    HostInteger maximumFramesPerSlice; ///< used by the next load; written by the host program
    AUGraph graph;                     ///< owns the units
    AudioUnit converter;
    AudioUnit output;
    AudioUnit timePitch;
    AudioUnit varispeed;
    AudioUnit mixer;
    AudioUnit equalizer;
    CAStreamBasicDescription* clientFormat; ///< owned: the format of the samples in memory
    CAStreamBasicDescription* outputFormat; ///< owned: the format between the units
    AUNode outputNode;
    AUNode timePitchNode;
    AUNode varispeedNode;
    AUNode equalizerNode;
    AUNode mixerNode;
    AUNode converterNode;
    UInt32 position;         ///< the next frame to render; written by [main] and [audio]
    UInt32 endFrame;         ///< the number of frames that were read
    UInt32 lastRenderOffset; ///< the first sample of the last slice [audio]
    LoadedAudio* loadedAudio;
    HostBoolean isLooping;               ///< written by [main], read by [audio]
    alignas(4) HostBoolean isFileLoaded; ///< a load has begun; never cleared
};

static_assert(sizeof(void*) != 4 || sizeof(AUPlayerData) == 184, "the size declared to the host");
static_assert(offsetof(AUPlayerData, sampleRate) % 8 == 0 && offsetof(AUPlayerData, trackLength) % 8 == 0 &&
                  offsetof(AUPlayerData, loopIn) % 8 == 0 && offsetof(AUPlayerData, loopOut) % 8 == 0,
              "64-bit fields are read and written by one instruction");

/// Return the class data inside a host object.
/// [main]
AUPlayerData& dataOf(REALobjectStruct* object);

/// Return the class data with `Lasterror` set to -1, as most members begin.
/// [main]
AUPlayerData& beginCall(REALobjectStruct* object);

/// Store a platform status in `Lasterror`. Returns whether it is success.
/// [main | worker]
inline bool keepStatus(AUPlayerData& player, OSStatus status)
{
    storeRelaxed(player.lasterror, static_cast<HostInteger>(status));
    return status == noErr;
}

/// Return the frames per second of this file: frames read over the estimated duration, not the sample rate.
/// [main]
inline double framesPerSecond(const AUPlayerData& player)
{
    return loadRelaxed(player.endFrame) / loadRelaxed(player.trackLength);
}

} // namespace auplayer
