// Linear PCM into other linear PCM of the same rate: width, byte order, sign, interleaving, channels.
//
// Samples of the same kind and width are copied as words, whatever they say: what is not a number keeps its
// bits, and so do all 32 bits of an integer. Others meet as 64-bit floats, which hold every other value:
// narrower integers round to the nearest, ties to even, and stop at full scale; what is not a number is 0.
//
// Thread   [any], [audio] too, but preparing.
#pragma once

#include "platform/pcm/sample_layout.h"

#include <array>
#include <vector>

namespace kvxplatform::pcm {

/// For each destination channel its source channel; one that does not exist is silence.
using ChannelMap = std::vector<SInt32>;

/// By the rule of channel_fold.h.
ChannelMap foldedChannelMap(UInt32 sourceChannels, UInt32 destinationChannels);

class Translation {
public:
    /// Both formats are linear PCM. Channels behind the routing's end are silent. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& from, const AudioStreamBasicDescription& to,
                 const ChannelMap& routing);

    /// Frames [first, first + frames) of `in` to [firstOut, firstOut + frames) of `out`.
    ///
    /// Shape    as many buffers as the formats say. A buffer of `in` is believed to hold what its
    ///          mDataByteSize covers; the rest, and all of one without memory, is silence. `out` has room.
    void run(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
             UInt32 firstOut) const;

private:
    using Move = void (*)(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to,
                          std::size_t toStride, UInt32 frames);

    void runChannel(const std::uint8_t* from, std::uint8_t* to, UInt32 frames) const;
    void silence(std::uint8_t* to, UInt32 frames) const;
    UInt32 covered(const AudioBufferList& in, UInt32 channel) const;
    bool runWhole(const AudioBufferList& in, UInt32 first, UInt32 frames, AudioBufferList& out,
                  UInt32 firstOut) const;

    enum class Whole { none, copy, splitPair, joinPair }; // what all channels can do at once

    AudioStreamBasicDescription from{}, to{};
    SampleLayout fromLayout{}, toLayout{};
    ChannelMap sources; // of every destination channel
    Whole whole = Whole::none;
    Move move = nullptr; // of words; null: through numbers
    std::array<std::uint8_t, 8> silentSample{};
};

} // namespace kvxplatform::pcm
