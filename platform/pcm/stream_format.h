// Stream formats of linear PCM.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

constexpr Float64 defaultSampleRate = 44100;
constexpr UInt32 mostChannels = 1024; // of a bus; more is refused as nonsense

/// What units work in: 32-bit native float, one buffer a channel.
AudioStreamBasicDescription canonicalFormat(Float64 sampleRate, UInt32 channels);

/// The same in one buffer: [frame * channels + channel].
AudioStreamBasicDescription interleavedFormat(Float64 sampleRate, UInt32 channels);

bool isInterleaved(const AudioStreamBasicDescription& format);

/// Buffers in a list of this format, and channels in each of them.
UInt32 buffersOf(const AudioStreamBasicDescription& format);
UInt32 channelsPerBuffer(const AudioStreamBasicDescription& format);

/// The same sound in the same bytes: every field but the reserved one.
bool isSameFormat(const AudioStreamBasicDescription& a, const AudioStreamBasicDescription& b);

/// A rate that is a positive, finite number, and 1 to mostChannels channels.
bool hasRateAndChannels(const AudioStreamBasicDescription& format);

/// Exactly canonicalFormat of its rate and channels.
bool isCanonical(const AudioStreamBasicDescription& format);

} // namespace kvxplatform::pcm
