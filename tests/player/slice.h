// The output of one I/O cycle: a list of buffers, each between two guards that reveal a write outside.
#pragma once

#include "tests/player/player_object.h"

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// One output buffer. An absent buffer has a size but no memory.
struct BufferLayout {
    std::uint32_t channels;
    std::uint32_t bytes;
    bool isAbsent = false;
};

/// `frames` frames of `channels` floats.
constexpr BufferLayout layout(std::uint32_t channels, std::uint32_t frames)
{
    return {channels, channels * frames * 4, false};
}

class Slice {
public:
    /// Lists the first `inUse` buffers; all by default.
    explicit Slice(const std::vector<BufferLayout>& layouts, int inUse = -1);

    AudioBufferList& list() { return *list_; }

    std::vector<float> floats(std::size_t buffer = 0) const;
    const std::vector<unsigned char>& bytes(std::size_t buffer) const;

    /// The buffers' bytes before rendering. No test plays the float that they form.
    static constexpr unsigned char before = 0xCD;
    static float floatBefore();

    /// Whether the list and all memory outside the listed buffers are unchanged.
    bool isIntact() const;

private:
    static constexpr std::size_t guardBytes = 64;
    static constexpr unsigned char guard = 0xA5;

    struct Free {
        void operator()(void* memory) const;
    };
    std::vector<BufferLayout> layouts_;
    std::size_t inUse_;
    std::vector<std::vector<unsigned char>> memory_; // guard, buffer, guard
    mutable std::vector<std::vector<unsigned char>> content_;
    std::unique_ptr<AudioBufferList, Free> list_;
};

/// Run one I/O cycle of device `device` with the player's procedure.
OSStatus runCycle(const PlayerObject& object, Slice& slice, AudioDeviceID device = 2);

/// Render `frames` frames into one buffer of `channels` channels and return them.
std::vector<float> render(const PlayerObject& object, std::uint32_t frames, std::uint32_t channels = 1);

} // namespace test
