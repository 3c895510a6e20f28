// A file in memory as a load leaves it, rendered slice by slice as the graph does it.
#pragma once

#include "auplayer/au_player.h"

#include <cstdint>
#include <memory>
#include <vector>

namespace test {

/// Samples by their bits, so that not-a-number is compared like any other.
using Bits = std::vector<std::uint32_t>;

/// The buffers of one slice. Each stands in memory of exactly its size, for the address sanitizer.
class Slice {
public:
    struct Shape {
        std::uint32_t channels;
        std::uint32_t bytes;
        bool isAbsent = false; ///< has a size, and no memory
    };

    explicit Slice(const std::vector<Shape>& shapes);

    AudioBufferList& list() { return *reinterpret_cast<AudioBufferList*>(list_.get()); }
    std::vector<unsigned char> bytes(std::size_t buffer = 0) const;
    Bits bits(std::size_t buffer = 0) const;

    /// Whether the list says what it said before.
    bool isIntact();

    /// What each byte held before.
    static constexpr unsigned char before = 0xCD;

private:
    std::vector<Shape> shapes_;
    std::vector<std::unique_ptr<unsigned char[]>> memory_;
    std::unique_ptr<char[]> list_;
};

class RenderedFile {
public:
    /// `samples` are interleaved, and stand in memory of exactly their size.
    RenderedFile(const Bits& samples, std::uint32_t channels);
    RenderedFile(const RenderedFile&) = delete;
    RenderedFile& operator=(const RenderedFile&) = delete;

    auplayer::AUPlayerData* operator->() { return &data_; }
    std::uint32_t frames() const { return audio_.frameCount; }
    std::uint32_t channels() const { return audio_.format.mChannelsPerFrame; }

    /// Loop from `in` to `out`, in frames.
    void loop(double in, double out);

    /// Render `frames` frames; a status but 0, or a list that was changed, fails the test.
    void render(Slice& slice, std::uint32_t frames);
    Bits render(std::uint32_t frames); ///< into one buffer of just that size

private:
    std::unique_ptr<float[]> samples_;
    auplayer::LoadedAudio audio_ = {};
    auplayer::AUPlayerData data_ = {};
};

/// `frames` frames whose bits are all different, not-a-number and infinity among them.
Bits noise(std::uint32_t frames, std::uint32_t channels);

/// `count` frames of `samples` from frame `begin` on, and silence where there are none.
Bits excerpt(const Bits& samples, std::uint32_t channels, std::uint64_t begin, std::uint32_t count);

} // namespace test
