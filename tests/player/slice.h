// A slice as a device hands it to its I/O procedure: a list of output buffers, each between two guards that
// show a write outside.
#pragma once

#include "tests/player/player_object.h"

#include <CoreAudio/CoreAudio.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// One output buffer. A buffer without memory still has a size.
struct Shape {
    std::uint32_t channels;
    std::uint32_t bytes;
    bool isAbsent = false;
};

/// `frames` frames of `channels` floats.
constexpr Shape shape(std::uint32_t channels, std::uint32_t frames)
{
    return {channels, channels * frames * 4, false};
}

class Slice {
public:
    /// Lists the first `inUse` of the buffers; all by default.
    explicit Slice(const std::vector<Shape>& shapes, int inUse = -1);

    AudioBufferList& list() { return *list_; }

    std::vector<float> floats(std::size_t buffer = 0) const;
    const std::vector<unsigned char>& bytes(std::size_t buffer) const;

    /// What each buffer held before it was rendered: bytes of this value, which make no sample that a test
    /// plays.
    static constexpr unsigned char before = 0xCD;
    static float floatBefore();

    /// Whether nothing was written outside the buffers, nor to those that are not listed, and the list is as
    /// it was.
    bool isIntact() const;

private:
    static constexpr std::size_t guardBytes = 64;
    static constexpr unsigned char guard = 0xA5;

    struct Free {
        void operator()(void* memory) const;
    };
    std::vector<Shape> shapes_;
    std::size_t inUse_;
    std::vector<std::vector<unsigned char>> memory_; // guard, buffer, guard
    mutable std::vector<std::vector<unsigned char>> content_;
    std::unique_ptr<AudioBufferList, Free> list_;
};

/// Render one slice with the player's installed procedure, as device `device` would.
OSStatus cycle(const PlayerObject& object, Slice& slice, AudioDeviceID device = 2);

/// Render `frames` frames into one buffer of `channels` channels and return them.
std::vector<float> render(const PlayerObject& object, std::uint32_t frames, std::uint32_t channels = 1);

} // namespace test
