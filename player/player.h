// The class data of one buffered player: a plain C record inside the host object, in the declared layout.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

#include <cstddef>
#include <cstdint>

namespace player {

/// One buffer of converted samples.
/// Owner   the record that holds the item frees `data`, which comes from calloc.
struct PlayItem {
    std::int32_t count; ///< samples, not frames: two per frame for stereo data
    float* data;        ///< null: an empty slot
};

constexpr std::int32_t queueCapacity = 200;

/// Units   positions are frames of the supplied data, at `sampleRate`; not frames of the device.
///
/// The player is running from the installation of the I/O procedure until the procedure has removed itself
/// and cleared isRunning. The threads in brackets write the field; fields that both threads use are accessed
/// through plugin/shared_word.h.
struct AudioPlayerData {
    float deviceSampleRate;        ///< Hz; set at each start [main & stopped]
    float sampleRate;              ///< Hz [main]
    std::int32_t numberOfChannels; ///< 2: interleaved stereo data; any other number: mono [main]
    std::uint8_t isRunning;        ///< set [main]; cleared [audio], which hands the buffers back to [main]
    std::uint8_t stopRequested;    ///< set [main]; cleared [main] and [audio]
    std::uint8_t noUnderflow;      ///< keep running without data [main]
    std::uint8_t hadUnderflow;     ///< set [audio]; cleared [main]
    std::uint32_t outputDeviceID;  ///< 0: the system's default output device [main]
    alignas(8) std::int64_t baseSampleIndex;  ///< index of the first sample of `current`; written like it
    alignas(8) double outputPositionRelative; ///< frames since `current` was taken; written like it
    alignas(8) double outputPosition;         ///< frames read since the start; written like `current`
    PlayItem current;                         ///< the buffer that is read [audio & running], [main & stopped]
    PlayItem queue[queueCapacity];            ///< in play order, occupied slots first; under playQLock
    std::int32_t queueCount;                  ///< occupied slots; under playQLock
    AudioDeviceIOProc ioProc;                 ///< the procedure that a start installs [main & stopped]
};

static_assert(sizeof(void*) != 4 || sizeof(AudioPlayerData) == 1664, "the size declared to the host");
static_assert(offsetof(AudioPlayerData, baseSampleIndex) % 8 == 0 &&
                  offsetof(AudioPlayerData, outputPositionRelative) % 8 == 0 &&
                  offsetof(AudioPlayerData, outputPosition) % 8 == 0,
              "64-bit fields are read and written by one instruction");

/// Return the class data inside a host object.
/// [main]
AudioPlayerData& dataOf(REALobjectStruct* object);

} // namespace player
