// Linear interpolation over a stretch of one buffer, several frames at a time.
//
// The result is, bit for bit, that of one frame after the other: a position that is moved by a step again and
// again is only cut into lanes while every sum on the way is exact (`exactFrames`).
#pragma once

#include <CoreAudio/CoreAudio.h>

#include <cstdint>

namespace player {

/// Consecutive output frames whose two neighbours all lie in `samples`.
/// Units   frames of the data: `place` from its first, of the first output frame; `step` between two.
struct Stretch {
    const float* samples;
    double place;
    double step;
    UInt32 frames;
};

/// How many of `frames` steps may be taken from `position` at once: all (at most 4096) when the position is a
/// whole number of the step's last place, and small enough that no sum on the way is rounded; else none.
/// Shape   the step is a float widened.
UInt32 exactFrames(double position, double step, UInt32 frames);

/// How many frames of the stretch have both neighbours among the first `count` frames of its data; `place` is
/// not negative and `step` above 0.
UInt32 framesInside(const Stretch& stretch, std::int32_t count);

/// out[i] between samples[k] and samples[k + 1], in double precision.
void interpolateMono(const Stretch& stretch, float* out);

/// out[2 i], out[2 i + 1] between the pairs k and k + 1, in single precision.
void interpolateStereo(const Stretch& stretch, float* out);

/// The kernels behind them: two positions at a time on every processor, four where it has wider registers
/// (`hasWideLanes`).
void interpolateMonoInPairs(const Stretch& stretch, float* out);
void interpolateStereoInPairs(const Stretch& stretch, float* out);
void interpolateMonoWide(const Stretch& stretch, float* out);
void interpolateStereoWide(const Stretch& stretch, float* out);
bool hasWideLanes();

/// The same, one frame after the other: what all of the above must equal.
void interpolateMonoSingly(const Stretch& stretch, float* out);
void interpolateStereoSingly(const Stretch& stretch, float* out);

} // namespace player
