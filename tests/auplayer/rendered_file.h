// A file in memory, as after a load, and its rendering in slices.
#pragma once

#include "auplayer/au_player.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// Samples by their bits, so that not-a-numbers can be compared.
using Bits = std::vector<std::uint32_t>;

/// The buffers of one slice, each in memory of exactly its size for the address sanitizer.
class Slice {
public:
    struct BufferLayout {
        std::uint32_t channels;
        std::uint32_t bytes;
        bool isAbsent = false; ///< a size without memory
    };

    explicit Slice(const std::vector<BufferLayout>& layouts);

    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(list_.get()); }
    std::vector<unsigned char> bytes(std::size_t buffer = 0) const;
    Bits bits(std::size_t buffer = 0) const;

    /// Whether the list is unchanged.
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
    /// `samples` are interleaved; the copy has exactly their size.
    RenderedFile(const Bits& samples, std::uint32_t channels);
    RenderedFile(const RenderedFile&) = delete;
    RenderedFile& operator=(const RenderedFile&) = delete;

    auplayer::AUPlayerData* operator->() { return &data_; }
    std::uint32_t frames() const { return audio_.frameCount; }
    std::uint32_t channels() const { return audio_.format.mChannelsPerFrame; }

    /// Loop from `in` to `out`, in frames.
    void loop(double in, double out);

    /// Render `frames` frames; expects status 0 and an unchanged list.
    void render(Slice& slice, std::uint32_t frames);
    Bits render(std::uint32_t frames); ///< into one buffer of that size

private:
    std::unique_ptr<float[]> samples_;
    auplayer::LoadedAudio audio_ = {};
    auplayer::AUPlayerData data_ = {};
};

/// `frames` frames of different bit patterns, including not-a-number and infinity.
Bits noise(std::uint32_t frames, std::uint32_t channels);

/// `count` frames of `samples` from frame `begin`, followed by silence.
Bits excerpt(const Bits& samples, std::uint32_t channels, std::uint64_t begin, std::uint32_t count);

} // namespace test
