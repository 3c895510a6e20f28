#include "platform/audiounit/mixer/fader.h"

#include <cstring>

namespace kvxplatform::audiounit {

void applyGain(const pcm::Gain& gain, Float32* samples, UInt32 frames)
{
    if (!gain.isUnity()) copyWithGain(gain, samples, samples, frames);
}

void copyWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames)
{
    if (gain.isUnity())
        std::memcpy(out, in, frames * sizeof *out);
    else if (gain.isSilence())
        std::memset(out, 0, frames * sizeof *out);
    else if (gain.framesLeft == 0)
        for (UInt32 i = 0; i < frames; ++i) out[i] = gain.to * in[i];
    else
        for (UInt32 i = 0; i < frames; ++i) out[i] = gain.at(i) * in[i];
}

void addWithGain(const pcm::Gain& gain, const Float32* in, Float32* out, UInt32 frames)
{
    if (gain.isSilence()) return;
    if (gain.isUnity())
        for (UInt32 i = 0; i < frames; ++i) out[i] += in[i];
    else if (gain.framesLeft == 0)
        for (UInt32 i = 0; i < frames; ++i) out[i] += gain.to * in[i];
    else
        for (UInt32 i = 0; i < frames; ++i) out[i] += gain.at(i) * in[i];
}

} // namespace kvxplatform::audiounit
