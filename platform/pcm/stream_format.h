// Stream formats of linear PCM.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

constexpr Float64 defaultSampleRate = 44100;
constexpr UInt32 mostChannels = 1024; // of a bus

/// The format in which audio units work: 32-bit native float, one buffer per channel.
AudioStreamBasicDescription canonicalFormat(Float64 sampleRate, UInt32 channels);

/// 32-bit native float in one buffer: [frame * channels + channel].
AudioStreamBasicDescription interleavedFormat(Float64 sampleRate, UInt32 channels);

bool isInterleaved(const AudioStreamBasicDescription& format);

/// Buffers in a list of this format, and channels in each of them.
UInt32 buffersOf(const AudioStreamBasicDescription& format);
UInt32 channelsPerBuffer(const AudioStreamBasicDescription& format);

/// Whether all fields but the reserved one are equal.
bool isSameFormat(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b);

/// Whether the rate is positive and finite, and the format has 1 to mostChannels channels.
bool hasRateAndChannels(const AudioStreamBasicDescription& format);

/// Whether the format is canonicalFormat of its rate and channels.
bool isCanonical(const AudioStreamBasicDescription& format);

} // namespace kvxplatform::pcm
