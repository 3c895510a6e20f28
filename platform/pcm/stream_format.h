// Stream formats of linear PCM.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

constexpr Float64 defaultSampleRate = 44100;
constexpr UInt32 mostChannels = 1024; // largest channel count of a bus

/// Returns  the format in which audio units work: 32-bit native float, one buffer per channel.
AudioStreamBasicDescription canonicalFormat(Float64 sampleRate, UInt32 channels);

/// Returns  the format of 32-bit native floats in one buffer: [frame * channels + channel].
AudioStreamBasicDescription interleavedFormat(Float64 sampleRate, UInt32 channels);

bool isInterleaved(const AudioStreamBasicDescription& format);

/// Count the buffers in a buffer list of this format, or the channels in each of these buffers.
UInt32 buffersOf(const AudioStreamBasicDescription& format);
UInt32 channelsPerBuffer(const AudioStreamBasicDescription& format);

/// Whether two formats agree in all fields but the reserved one.
bool isSameFormat(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b);

/// Whether the format has a positive, finite rate and 1 to mostChannels channels.
bool hasRateAndChannels(const AudioStreamBasicDescription& format);

/// Whether the format equals canonicalFormat() of its rate and channel count.
bool isCanonical(const AudioStreamBasicDescription& format);

} // namespace kvxplatform::pcm
