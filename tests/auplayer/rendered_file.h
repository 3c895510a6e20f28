// A file in memory, as after a load, and functions that render the file in slices.
#pragma once

#include "auplayer/au_player.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// Samples as bit patterns, so that not-a-numbers can be compared.
using Bits = std::vector<std::uint32_t>;

/// The output buffers of one slice. Each buffer has memory of exactly its size, so that the address sanitizer
/// detects a write outside the buffer.
class Slice {
public:
    struct BufferLayout {
        std::uint32_t channels;
        std::uint32_t bytes;
        bool isAbsent = false; ///< whether the buffer has a size but no memory
    };

    explicit Slice(const std::vector<BufferLayout>& layouts);

    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(list_.get()); }
    std::vector<unsigned char> bytes(std::size_t buffer = 0) const;
    Bits bits(std::size_t buffer = 0) const;

    /// Return whether the buffer list is unchanged.
    bool isIntact();

    /// The value of every byte before rendering.
    static constexpr unsigned char before = 0xCD;

private:
    std::vector<BufferLayout> layouts_;
    std::vector<std::unique_ptr<unsigned char[]>> memory_;
    std::unique_ptr<char[]> list_;
};

class RenderedFile {
public:
    /// Make a file with a copy of `samples`, which are interleaved. The copy has memory of exactly its size.
    RenderedFile(const Bits& samples, std::uint32_t channels);
    RenderedFile(const RenderedFile&) = delete;
    RenderedFile& operator=(const RenderedFile&) = delete;

    auplayer::AUPlayerData* operator->() { return &data_; }
    std::uint32_t frames() const { return audio_.frameCount; }
    std::uint32_t channels() const { return audio_.format.mChannelsPerFrame; }

    /// Activate a loop from frame `in` to frame `out`.
    void loop(double in, double out);

    /// Render `frames` frames into `slice`. Expects status 0 and an unchanged buffer list.
    void render(Slice& slice, std::uint32_t frames);
    /// Render `frames` frames into one buffer of that size and return the samples.
    Bits render(std::uint32_t frames);

private:
    std::unique_ptr<float[]> samples_;
    auplayer::LoadedAudio audio_ = {};
    auplayer::AUPlayerData data_ = {};
};

/// Return `frames` frames of samples with different bit patterns, including not-a-number.
Bits noise(std::uint32_t frames, std::uint32_t channels);

/// Return `count` frames of `samples` from frame `begin` on, with silence after the end of `samples`.
Bits excerpt(const Bits& samples, std::uint32_t channels, std::uint64_t begin, std::uint32_t count);

} // namespace test
