#include "player/span.h"

#include <algorithm>
#include <cstring>

namespace player {

namespace {

// 2^52. Below this limit a double still has a bit with the value one half, so fractions can be represented.
constexpr double exactLimit = 4503599627370496.0;

/// Return 1 divided by the unit in the last place of `step`, which must be a normal float. The function does
/// not use frexp, which is slow on this target.
double placesPerUnit(float step)
{
    std::uint32_t bits;
    std::memcpy(&bits, &step, sizeof bits);
    // The unit in the last place of a float is its power of two, 2^(exponent - 127), times 2^-23.
    const std::uint64_t exponent = bits >> 23 & 0xFF;
    const std::uint64_t reciprocal = (1023 + 127 + 23 - exponent) << 52;
    double result;
    std::memcpy(&result, &reciprocal, sizeof result);
    return result;
}

/// Return whether `value`, from 0 to 2^52, is a whole number.
bool isWhole(double value) { return (value + exactLimit) - exactLimit == value; }

} // namespace

UInt32 exactFrames(double position, double step, UInt32 frames)
{
    constexpr double smallestStep = 1.0 / (1 << 30); // limit well above the denormal floats
    constexpr double largestStep = 4096;
    constexpr UInt32 mostFrames = 4096;
    if (!(step >= smallestStep && step <= largestStep) || !(position >= 0)) return 0;
    const double places = position * placesPerUnit(static_cast<float>(step));
    if (!(places < exactLimit) || !isWhole(places)) return 0;
    return std::min(frames, mostFrames);
}

UInt32 framesInside(const Span& span, std::int32_t count)
{
    // Frame n has both neighbours inside the data if n is below the quotient.
    const double quotient = (count - 1 - span.position) / span.step;
    if (!(quotient >= 1)) return 0;
    return quotient >= span.frames ? span.frames : static_cast<UInt32>(quotient);
}

Span spanAt(const AudioPlayerData& player, double position, double step, UInt32 frames,
            std::int32_t samplesPerFrame)
{
    const UInt32 exact = exactFrames(position, step, std::min(frames, largestSpan));
    const bool isPairSplit = samplesPerFrame == 2 && player.baseSampleIndex & 1;
    if (exact == 0 || !player.current.data || isPairSplit) return {};
    const double relative = position - static_cast<double>(player.baseSampleIndex) / samplesPerFrame;
    if (!(relative >= 0)) return {};
    Span span = {player.current.data, relative, step, exact};
    span.frames = framesInside(span, player.current.count / samplesPerFrame);
    return span;
}

} // namespace player
