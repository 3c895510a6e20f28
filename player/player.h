// The class data of one player. A plain C record inside the host object, laid out as declared to the host.
#pragma once

#include "abi/class_definition.h"

#include <CoreAudio/CoreAudio.h>

#include <cstddef>
#include <cstdint>

namespace player {

/// One buffer of converted samples.
/// Owner   whoever holds the record: the samples come from calloc and go with free.
struct PlayItem {
    std::int32_t count; ///< float samples, not frames: twice the frames for stereo data
    float* data;        ///< null marks an empty slot
};

constexpr std::int32_t queueCapacity = 200;

/// Positions are frames of the supplied data, at `sampleRate`, not of the device.
///
/// Threads: [main] is the host's, [audio] the device's, inside MyPlayIOProc. "Running" is from the
/// installation of the I/O procedure until it has removed itself and cleared isRunning; then everything is
/// [main]'s. Words that both sides touch are loaded and stored as plugin/shared_word.h says.
struct AudioPlayerData {
    float deviceSampleRate;        ///< Hz; written by [main & stopped] at each start
    float sampleRate;              ///< Hz; written by [main], read by both
    std::int32_t numberOfChannels; ///< 2: interleaved stereo, else mono; written by [main], read by both
    std::uint8_t isRunning;        ///< set by [main], cleared by [audio]: releases the buffers to [main]
    std::uint8_t stopRequested;    ///< set by [main], cleared by either
    std::uint8_t noUnderflow;      ///< written by [main], read by [audio]
    std::uint8_t hadUnderflow;     ///< set by [audio], cleared by [main]
    std::uint32_t outputDeviceID;  ///< 0: the system's default output device; [main]
    alignas(8) std::int64_t baseSampleIndex;  ///< of current's first sample, from the start; as `current`
    alignas(8) double outputPositionRelative; ///< frames since `current` became current; as `current`
    alignas(8) double outputPosition;         ///< fractional read position since the start; as `current`
    PlayItem current;              ///< being played; [audio & running] and [main & stopped], never both
    PlayItem queue[queueCapacity]; ///< in play order, occupied slots first; under playQLock
    std::int32_t queueCount;       ///< occupied slots; under playQLock
    AudioDeviceIOProc ioProc;      ///< what is installed with the device; [main & stopped]
};

static_assert(sizeof(void*) != 4 || sizeof(AudioPlayerData) == 1664, "the size declared to the host");
static_assert(offsetof(AudioPlayerData, baseSampleIndex) % 8 == 0 &&
                  offsetof(AudioPlayerData, outputPositionRelative) % 8 == 0 &&
                  offsetof(AudioPlayerData, outputPosition) % 8 == 0,
              "64-bit fields are read and written by one instruction");

/// The class data inside a host object. [main]
AudioPlayerData& dataOf(REALobjectStruct* object);

} // namespace player
