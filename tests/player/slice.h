// The output of one I/O cycle: a list of buffers. Each buffer lies between two guards, which reveal a write
// outside the buffer.
#pragma once

#include "tests/player/player_object.h"

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// Description of one output buffer. An absent buffer has a size but no memory.
struct BufferLayout {
    std::uint32_t channels;
    std::uint32_t bytes;
    bool isAbsent = false;
};

/// Describe a buffer for `frames` frames of `channels` floats.
constexpr BufferLayout layout(std::uint32_t channels, std::uint32_t frames)
{
    return {channels, channels * frames * 4, false};
}

class Slice {
public:
    /// Make a list of the first `inUse` buffers, or of all buffers by default.
    explicit Slice(const std::vector<BufferLayout>& layouts, int inUse = -1);

    AudioBufferList& list() { return *list_; }

    std::vector<float> floats(std::size_t buffer = 0) const;
    const std::vector<unsigned char>& bytes(std::size_t buffer) const;

    /// Value of every byte in the buffers before rendering. Four such bytes form a float that no test plays.
    static constexpr unsigned char before = 0xCD;
    static float floatBefore();

    /// Return whether the list and all memory outside the listed buffers are unchanged.
    bool isIntact() const;

private:
    static constexpr std::size_t guardBytes = 64;
    static constexpr unsigned char guard = 0xA5;

    struct Free {
        void operator()(void* memory) const;
    };
    std::vector<BufferLayout> layouts_;
    std::size_t inUse_;
    std::vector<std::vector<unsigned char>> memory_; // memory of each buffer: guard, content, guard
    mutable std::vector<std::vector<unsigned char>> content_;
    std::unique_ptr<AudioBufferList, Free> list_;
};

/// Run one I/O cycle of device `device` with the player's I/O procedure.
OSStatus runCycle(const PlayerObject& object, Slice& slice, AudioDeviceID device = 2);

/// Render `frames` frames into one buffer of `channels` channels and return the frames.
std::vector<float> render(const PlayerObject& object, std::uint32_t frames, std::uint32_t channels = 1);

} // namespace test
