#include "player/output_buffers.h"

#include "player/integer_to_float.h"

#include <algorithm>

#include <immintrin.h>

namespace player {

namespace {

/// Write each value to all samples of a frame with `channels` channels.
void copyToAllChannels(const float* values, UInt32 frames, UInt32 channels, float* out)
{
    constexpr UInt32 channelsPerStore = 4;
    if (channels == 1)
        std::memcpy(out, values, frames * sizeof(float));
    else if (channels == 2)
        interleave(values, values, frames, out);
    else if (channels < channelsPerStore)
        for (UInt32 i = 0; i < frames; ++i, out += channels) std::fill_n(out, channels, values[i]);
    else
        // Each pass writes four channels of all frames. Unless the number of channels is a multiple of four,
        // the last pass writes some channels again.
        for (UInt32 done = 0; done < channels; done += channelsPerStore) {
            float* to = out + std::min(done, channels - channelsPerStore);
            for (UInt32 i = 0; i < frames; ++i, to += channels) _mm_storeu_ps(to, _mm_load1_ps(values + i));
        }
}

/// Write the first `samples` samples of each stereo frame to a frame with `channels` channels.
void copyToFirstChannels(const float* pairs, UInt32 frames, UInt32 samples, UInt32 channels, float* out)
{
    if (channels == 2) return static_cast<void>(std::memcpy(out, pairs, 2 * frames * sizeof(float)));
    for (UInt32 i = 0; i < frames; ++i, pairs += 2, out += channels) std::copy_n(pairs, samples, out);
}

} // namespace

void OutputBuffers::writeMono(UInt32 first, UInt32 frames, const float* values)
{
    for (UInt32 b = 0; b < list_.mNumberBuffers; ++b) {
        AudioBuffer& buffer = list_.mBuffers[b];
        if (float* const out = addressOf(buffer, buffer.mNumberChannels, first, frames))
            copyToAllChannels(values, frames, buffer.mNumberChannels, out);
        else
            for (UInt32 i = 0; i < frames; ++i) writeMono(buffer, first + i, values[i]);
    }
}

void OutputBuffers::writeStereo(UInt32 first, UInt32 frames, const float* values)
{
    for (UInt32 b = 0; b < list_.mNumberBuffers; ++b) {
        AudioBuffer& buffer = list_.mBuffers[b];
        if (float* const out = addressOf(buffer, stereoSamples(buffer), first, frames))
            copyToFirstChannels(values, frames, stereoSamples(buffer), buffer.mNumberChannels, out);
        else
            for (UInt32 i = 0; i < frames; ++i) writeStereo(buffer, first + i, values + 2 * i);
    }
}

} // namespace player
