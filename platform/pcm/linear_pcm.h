// Linear PCM of any usual width, byte order and interleaving, read as 32-bit float and written from it.
//
// Units    full scale is -1..+1. An integer of n bits stands for value / 2^(n-1). Up to 24 bits that is
// exact:
//          writing a sample that was read gives the same bytes. Writing rounds to the nearest, ties to even,
//          and clips at full scale; not-a-number is written as 0.
//
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// Whether the format is one of those read and written here: float of 32 or 64 bits, or integer, signed or
/// unsigned, of 8 to 32 bits in 1 to 4 bytes, packed or aligned high or low, without fraction bits; one frame
/// per packet; a positive rate.
bool isLinearPCM(const AudioStreamBasicDescription& format);

/// Read the first `frames` frames of a list into out[frame * channels + channel].
void decode(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 frames,
            Float32* out);

/// Write in[frame * channels + channel] to frames [first, first + frames) of a list.
void encode(const AudioStreamBasicDescription& format, const Float32* in, UInt32 frames,
            AudioBufferList& list, UInt32 first);

/// Silence frames [first, first + frames) of a list, or `frames` frames of one buffer: zero bytes, or the
/// middle value of an unsigned integer.
void silence(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
             UInt32 frames);
void silenceBuffer(const AudioStreamBasicDescription& format, void* memory, UInt32 frames);

} // namespace kvxplatform::pcm
