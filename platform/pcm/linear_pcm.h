// Linear PCM of any usual width, byte order and interleaving, read as 32-bit floats and written from them.
//
// Units    full scale is -1..+1. An integer of n bits stands for value / 2^(n-1). Up to 24 bits this is
//          exact, so writing a sample that was read gives the same bytes. Writing rounds to the nearest
//          value, ties to even, and clips at full scale; a not-a-number is written as 0.
//
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// Whether the format is one that decode() and encode() support: floats of 32 or 64 bits, or integers, signed
/// or unsigned, of 8 to 32 bits in 1 to 4 bytes, packed or aligned high or low, without fraction bits; one
/// frame per packet; a positive rate.
bool isLinearPCM(const AudioStreamBasicDescription& format);

/// Read the first `frames` frames of a buffer list into out[frame * channels + channel].
void decode(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 frames,
            Float32* out);

/// Write in[frame * channels + channel] to frames [first, first + frames) of a buffer list.
void encode(const AudioStreamBasicDescription& format, const Float32* in, UInt32 frames,
            AudioBufferList& list, UInt32 first);

/// Silence frames [first, first + frames) of a buffer list, or the first `frames` frames of one buffer. A
/// silent sample has zero bytes, or the middle value if samples are unsigned integers.
void silence(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
             UInt32 frames);
void silenceBuffer(const AudioStreamBasicDescription& format, void* memory, UInt32 frames);

} // namespace kvxplatform::pcm
