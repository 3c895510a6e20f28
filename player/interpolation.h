// Linear interpolation over a span of one buffer, several frames at a time with SIMD instructions.
//
// Every SIMD kernel returns exactly the same bits as the scalar kernel.
// All functions: [any].
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace player {

/// Consecutive output frames whose left and right neighbours are all in `samples`.
struct Span {
    const float* samples;
    double position; ///< position of the first output frame in `samples`, in frames
    double step;     ///< distance between two output frames, in frames of `samples`
    UInt32 frames;   ///< number of output frames
};

/// Interpolate mono in double precision: out[i] is a value between samples[k] and samples[k + 1], where k is
/// the whole part of the position.
void interpolateMono(const Span& span, float* out);

/// Interpolate stereo in single precision: out[n i] (left) and out[n i + 1] (right), where n is `channels`,
/// the number of channels of the output, are values between the frames k and k + 1, where k is the whole part
/// of the position. Other channels are not written.
void interpolateStereo(const Span& span, float* out, UInt32 channels);

/// The SIMD kernels from which interpolateMono and interpolateStereo choose. The Sse kernels run on every
/// processor; the Avx kernels need a processor for which hasAvx() returns true.
void interpolateMonoSse(const Span& span, float* out);
void interpolateStereoSse(const Span& span, float* out, UInt32 channels);
void interpolateMonoAvx(const Span& span, float* out);
void interpolateStereoAvx(const Span& span, float* out, UInt32 channels);
bool hasAvx();

/// The scalar kernels, which compute one frame after the other and define the exact result.
void interpolateMonoScalar(const Span& span, float* out);
void interpolateStereoScalar(const Span& span, float* out, UInt32 channels);

} // namespace player
