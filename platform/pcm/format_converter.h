// Linear PCM of one format into another of the same rate: sample layout, interleaving, channels.
//
// Samples of the same kind and width are copied as words: a not-a-number keeps its bits, and a 32-bit integer
// all of its bits. Others are converted through 64-bit floats: an integer rounds to the nearest, ties to
// even, and clips at full scale; a not-a-number becomes 0.
#pragma once

#include "platform/pcm/channel_map.h"
#include "platform/pcm/sample_layout.h"

#include <array>

namespace kvxplatform::pcm {

/// No function but prepare allocates.
class FormatConverter {
public:
    /// Both formats are linear PCM. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& source, const AudioStreamBasicDescription& destination,
                 const ChannelMap& map);

    /// Convert frames [first, first + frames) of `in` into [firstOut, firstOut + frames) of `out`.
    /// Shape    as many buffers as the formats have. Frames of `in` past mDataByteSize, and buffers of `in`
    ///          without memory, are silence. The buffers of `out` have the capacity.
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

    enum class AllChannels { none, copy, splitPair, joinPair }; // ways to convert all channels in one pass

    AudioStreamBasicDescription from_{}, to_{};
    SampleLayout fromLayout_{}, toLayout_{};
    ChannelMap map_; ///< one entry for each destination channel
    AllChannels allChannels_ = AllChannels::none;
    CopyWords copyWords_ = nullptr; ///< null: samples are converted through numbers
    std::array<std::uint8_t, 8> silentSample_{};
};

} // namespace kvxplatform::pcm
