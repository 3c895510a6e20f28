// Linear interpolation over a span of one buffer, several frames at a time with SIMD instructions.
//
// Every kernel gives, bit for bit, the result of the scalar one.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace player {

/// Consecutive output frames; both neighbours of each are in `samples`.
/// Units   frames: `position` of the first output frame in `samples`, and `step` between two output frames.
struct Span {
    const float* samples;
    double position;
    double step;
    UInt32 frames;
};

/// Interpolate mono in double precision: out[i] lies between samples[k] and samples[k + 1].
void interpolateMono(const Span& span, float* out);

/// Interpolate stereo in single precision: out[2 i] and out[2 i + 1] lie between the frames k and k + 1.
void interpolateStereo(const Span& span, float* out);

/// The kernels that these two choose from: on every processor, and on processors with AVX.
void interpolateMonoSse(const Span& span, float* out);
void interpolateStereoSse(const Span& span, float* out);
void interpolateMonoAvx(const Span& span, float* out);
void interpolateStereoAvx(const Span& span, float* out);
bool hasAvx();

/// The reference: one frame after the other.
void interpolateMonoScalar(const Span& span, float* out);
void interpolateStereoScalar(const Span& span, float* out);

} // namespace player
