// Linear PCM of every usual width, either byte order, interleaved or not, to and from 32-bit float.
//
// Units    full scale is -1..+1. An integer of n bits is value / 2^(n-1): up to 24 bits that is exact, and
//          writing what was read gives the same bytes. Writing rounds to the nearest, ties to even, and stops
//          at full scale; what is not a number is written as 0.
//
// Thread   [any], [audio] too.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::pcm {

/// Whether a format is linear PCM as read and written here: float of 32 or 64 bits, or integer, signed or
/// not, of 8 to 32 bits in 1 to 4 bytes, packed or aligned high or low; one frame a packet; a positive rate.
/// Fixed point with fraction bits is not.
bool isLinearPCM(const AudioStreamBasicDescription& format);

/// Read `frames` frames of a list in `format` into out[frame * channels + channel].
void decode(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 frames,
            Float32* out);

/// Write in[frame * channels + channel] into frames [first, first + frames) of a list in `format`.
void encode(const AudioStreamBasicDescription& format, const Float32* in, UInt32 frames,
            AudioBufferList& list, UInt32 first);

/// Silence in frames [first, first + frames) of a list in `format`, or in `frames` frames of one of its
/// buffers: bytes of 0, or the middle of what has no sign.
void silence(const AudioStreamBasicDescription& format, const AudioBufferList& list, UInt32 first,
             UInt32 frames);
void silenceBuffer(const AudioStreamBasicDescription& format, void* memory, UInt32 frames);

} // namespace kvxplatform::pcm
