#include "platform/pcm/stream_format.h"

#include <cmath>

namespace kvxplatform::pcm {

AudioStreamBasicDescription canonicalFormat(Float64 sampleRate, UInt32 channels)
{
    AudioStreamBasicDescription format{};
    format.mSampleRate = sampleRate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags =
        kAudioFormatFlagIsFloat | kAudioFormatFlagIsPacked | kAudioFormatFlagIsNonInterleaved;
    format.mBytesPerPacket = sizeof(Float32);
    format.mFramesPerPacket = 1;
    format.mBytesPerFrame = sizeof(Float32);
    format.mChannelsPerFrame = channels;
    format.mBitsPerChannel = 32;
    return format;
}

AudioStreamBasicDescription interleavedFormat(Float64 sampleRate, UInt32 channels)
{
    AudioStreamBasicDescription format = canonicalFormat(sampleRate, channels);
    format.mFormatFlags &= ~static_cast<UInt32>(kAudioFormatFlagIsNonInterleaved);
    format.mBytesPerFrame *= channels;
    format.mBytesPerPacket = format.mBytesPerFrame;
    return format;
}

bool isInterleaved(const AudioStreamBasicDescription& format)
{
    return !(format.mFormatFlags & kAudioFormatFlagIsNonInterleaved);
}

UInt32 buffersOf(const AudioStreamBasicDescription& format)
{
    return isInterleaved(format) ? 1 : format.mChannelsPerFrame;
}

UInt32 channelsPerBuffer(const AudioStreamBasicDescription& format)
{
    return isInterleaved(format) ? format.mChannelsPerFrame : 1;
}

bool isSameFormat(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b)
{
    return a.mSampleRate == b.mSampleRate && a.mFormatID == b.mFormatID && a.mFormatFlags == b.mFormatFlags &&
           a.mBytesPerPacket == b.mBytesPerPacket && a.mFramesPerPacket == b.mFramesPerPacket &&
           a.mBytesPerFrame == b.mBytesPerFrame && a.mChannelsPerFrame == b.mChannelsPerFrame &&
           a.mBitsPerChannel == b.mBitsPerChannel;
}

bool hasRateAndChannels(const AudioStreamBasicDescription& format)
{
    return std::isfinite(format.mSampleRate) && format.mSampleRate > 0 && format.mChannelsPerFrame >= 1 &&
           format.mChannelsPerFrame <= mostChannels;
}

bool isCanonical(const AudioStreamBasicDescription& format)
{
    return hasRateAndChannels(format) &&
           isSameFormat(format, canonicalFormat(format.mSampleRate, format.mChannelsPerFrame));
}

} // namespace kvxplatform::pcm
