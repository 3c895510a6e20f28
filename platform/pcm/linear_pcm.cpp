#include "platform/pcm/linear_pcm.h"

#include "platform/pcm/sample_layout.h"

#include <cstring>

namespace kvxplatform::pcm {
namespace {

// Mask of the format flags that hold the number of fraction bits of a fixed-point format.
constexpr UInt32 fractionBits = kLinearPCMFormatFlagsSampleFractionMask;

/// Call `run` for each channel of frames [first, first + frames) of a buffer list.
void eachChannel(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
                 UInt32 frames, Float32* numbers, const SampleLayout& layout, SampleCoding<Float32>::Run run)
{
    const UInt32 channels = format.mChannelsPerFrame;
    for (UInt32 c = 0; c < channels; ++c)
        run({sampleAt(format, list, c, first), format.mBytesPerFrame, numbers + c, channels, frames}, layout);
}

} // namespace

bool isLinearPCM(const AudioStreamBasicDescription& format)
{
    if (format.mFormatID != kAudioFormatLinearPCM || !hasRateAndChannels(format)) return false;
    if (format.mFramesPerPacket != 1 || format.mBytesPerPacket != format.mBytesPerFrame) return false;
    const SampleLayout layout = layoutOf(format);
    if (layout.bytes * channelsPerBuffer(format) != format.mBytesPerFrame || !codingOf<Float32>(layout))
        return false;
    if (layout.isFloat) return layout.bits == layout.bytes * 8;
    const bool isPacked = format.mFormatFlags & kAudioFormatFlagIsPacked;
    return !(format.mFormatFlags & fractionBits) && layout.bits >= 8 && layout.bits <= layout.bytes * 8 &&
           (!isPacked || layout.bits == layout.bytes * 8);
}

void decode(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 frames,
            Float32* out)
{
    const SampleLayout layout = layoutOf(format);
    eachChannel(format, list, 0, frames, out, layout, codingOf<Float32>(layout)->read);
}

void encode(const AudioStreamBasicDescription& format, const Float32* in, UInt32 frames,
            AudioBufferList& list, UInt32 first)
{
    const SampleLayout layout = layoutOf(format);
    // `write` does not modify the floats, so the cast is safe.
    eachChannel(format, list, first, frames, const_cast<Float32*>(in), layout,
                codingOf<Float32>(layout)->write);
}

void silence(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
             UInt32 frames)
{
    for (UInt32 i = 0; i < buffersOf(format); ++i)
        silenceBuffer(format,
                      static_cast<std::byte*>(list.mBuffers[i].mData) +
                          std::size_t{first} * format.mBytesPerFrame,
                      frames);
}

void silenceBuffer(const AudioStreamBasicDescription& format, void* memory, UInt32 frames)
{
    const SampleLayout layout = layoutOf(format);
    if (layout.isFloat || layout.isSigned) {
        std::memset(memory, 0, std::size_t{frames} * format.mBytesPerFrame);
        return;
    }
    Float32 zero = 0;
    const UInt32 samples = frames * channelsPerBuffer(format);
    codingOf<Float32>(layout)->write({static_cast<std::uint8_t*>(memory), layout.bytes, &zero, 0, samples},
                                     layout);
}

} // namespace kvxplatform::pcm
