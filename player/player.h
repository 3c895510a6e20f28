// The class data of one buffered player: a plain C record inside the host object.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

#include <cstddef>
#include <cstdint>

namespace player {

/// One buffer of converted samples.
/// Owner   the player record that holds the item frees `data`, which was allocated with calloc.
struct PlayItem {
    std::int32_t count; ///< number of samples; stereo data has two samples per frame
    float* data;        ///< samples; null in an empty slot
};

constexpr std::int32_t queueCapacity = 200;

/// Units   output positions are frames of the supplied data, at `sampleRate`, not frames of the device.
///
/// The player is running from the installation of the I/O procedure until the procedure has removed itself
/// and cleared isRunning. The brackets after a field state which threads write the field. Fields that both
/// threads use are accessed through plugin/shared_word.h.
struct AudioPlayerData {
    float deviceSampleRate;        ///< sample rate of the device in Hz, read at each start [main & stopped]
    float sampleRate;              ///< sample rate of the supplied data in Hz [main]
    std::int32_t numberOfChannels; ///< 2 for interleaved stereo data; any other number means mono [main]
    /// Whether the player is running. [main] sets the flag. When [audio] clears it, the buffers belong to
    /// [main].
    std::uint8_t isRunning;
    /// Whether a stop is requested; set by [main], cleared by [main] and [audio].
    std::uint8_t stopRequested;
    std::uint8_t noUnderflow;     ///< whether the player keeps running when it has no data [main]
    std::uint8_t hadUnderflow;    ///< whether the player ran out of data; set by [audio], cleared by [main]
    std::uint32_t outputDeviceID; ///< output device; 0 for the system's default output device [main]
    /// Index of the first sample of `current`; index 0 is the start. [audio & running], [main & stopped]
    alignas(8) std::int64_t baseSampleIndex;
    /// Frames read since `current` left the queue. [audio & running], [main & stopped]
    alignas(8) double outputPositionRelative;
    /// Frames read since the start. [audio & running], [main & stopped]
    alignas(8) double outputPosition;
    PlayItem current; ///< buffer that is being played [audio & running], [main & stopped]
    /// Waiting buffers in play order, then empty slots; protected by playQLock.
    PlayItem queue[queueCapacity];
    std::int32_t queueCount;  ///< number of occupied slots; protected by playQLock
    AudioDeviceIOProc ioProc; ///< I/O procedure that a start installs [main & stopped]
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
