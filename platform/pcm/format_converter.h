// Conversion of linear PCM between formats of equal rate: sample layout, interleaving, channels.
//
// Samples of the same type and width are copied as machine words, so a not-a-number keeps its bits and a
// 32-bit integer loses none. Other samples are converted through floats: an integer is rounded to the nearest
// value, ties to even, and clips at full scale; a not-a-number becomes 0.
#pragma once

#include "platform/pcm/channel_map.h"
#include "platform/pcm/sample_layout.h"

#include <array>

namespace kvxplatform::pcm {

/// A converter between two formats. Only prepare() allocates.
class FormatConverter {
public:
    /// Prepare to convert between two linear PCM formats. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                 const ChannelMap& map);

    /// Convert frames [first, first + frames) of `in` into [firstOut, firstOut + frames) of `out`.
    /// Shape  as many buffers as the formats have. Frames of `in` past mDataByteSize, and buffers of `in`
    /// without memory, count as silence. The buffers of `out` must have memory for the frames.
    /// [any]
    void run(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
             UInt32 firstOut) const;

private:
    using CopyWords = void (*)(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to,
                               std::size_t toStride, UInt32 frames);

    void runChannel(const std::uint8_t* from, std::uint8_t* to, UInt32 frames) const;
    void silence(std::uint8_t* to, UInt32 frames) const;
    UInt32 framesIn(const AudioBufferList& in, UInt32 channel) const;
    bool runAllChannels(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                        UInt32 firstOut) const;

    // The ways to convert all channels in one pass.
    enum class AllChannels { none, copy, splitPair, joinPair };

    AudioStreamBasicDescription from_{}, to_{};
    SampleLayout fromLayout_{}, toLayout_{};
    ChannelMap map_; ///< map with one entry for each destination channel
    AllChannels allChannels_ = AllChannels::none;
    CopyWords copyWords_ = nullptr; ///< copy function; null if each sample is decoded and encoded
    std::array<std::uint8_t, 8> silentSample_{};
};

} // namespace kvxplatform::pcm
