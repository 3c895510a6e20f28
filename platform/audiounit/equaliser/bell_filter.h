// One band of an equaliser: a bell filter, which boosts or cuts around its centre frequency.
//
// Source   the trapezoidal state-variable filter, in which frequency, width and height of a bell are separate
//          numbers. The height can change in every frame without a click, and at height 1 the output is
//          exactly the input.
//
// All functions: [any]. They allocate nothing.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

/// Centre and width of a bell. At the lower edge of the band, the bell's gain in decibels is half that at the
/// centre.
struct BellShape {
    double frequency; ///< centre as tan(pi * centre / sample rate)
    double width;     ///< width as 1 / Q at the centre frequency
};

/// Returns  the shape of a bell that is `octaves` wide around `centre` Hz. `centre` must be above 0 and below
///          half the sample rate.
BellShape bellShape(double centre, double octaves, double sampleRate);

/// Returns  the height of a bell with the given gain at its centre. The height is the square root of the gain
///          factor.
double heightOf(Float32 decibels);

struct BellCoefficients {
    double a1, a2, a3, m1;
};
BellCoefficients coefficientsOf(const BellShape& shape, double height);

struct BellState {
    double s1 = 0, s2 = 0;
};

/// Filter samples in place, with the same coefficients for all frames or with separate coefficients for each
/// frame.
void filter(const BellCoefficients& coefficients, BellState& state, double* samples, UInt32 frames);
void filter(const BellCoefficients* ofEachFrame, BellState& state, double* samples, UInt32 frames);

/// Clear a filter state that is inaudible or not finite. A small state would become subnormal and slow.
void flushState(BellState& state);

/// Returns  the seconds in which the output of a bell falls by `decibels` after its input has ended.
double decaySeconds(const BellShape& shape, double height, double sampleRate, double decibels);

} // namespace kvxplatform::audiounit
