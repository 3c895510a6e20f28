// One band of an equaliser: a bell filter, which boosts or cuts around its centre frequency.
//
// Source   the trapezoidal state-variable filter, in which frequency, width and height of a bell are separate
//          numbers: the height can change in every frame without a click, and at height 1 the output is
//          exactly the input.
//
// All functions: [any]. They allocate nothing.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

/// Centre and width of a bell. At the lower edge of the band it has half its decibels.
struct BellShape {
    double frequency; ///< tan(pi * centre / sample rate)
    double width;     ///< 1 / Q at that frequency
};

/// The shape of a band `octaves` wide around `centre` Hz, which is above 0 and below half the sample rate.
BellShape bellShape(double centre, double octaves, double sampleRate);

/// The height of a bell: the square root of its gain at the centre.
double heightOf(Float32 decibels);

struct BellCoefficients {
    double a1, a2, a3, m1;
};
BellCoefficients coefficientsOf(const BellShape& shape, double height);

struct BellState {
    double s1 = 0, s2 = 0;
};

/// Filter samples in place, with the same coefficients for all frames or with those of each frame.
void filter(const BellCoefficients& coefficients, BellState& state, double* samples, UInt32 frames);
void filter(const BellCoefficients* ofEachFrame, BellState& state, double* samples, UInt32 frames);

/// Clear a state that is inaudible, before it becomes subnormal and slow, or that is no number.
void flushState(BellState& state);

/// Seconds until the output of a bell without input has fallen by `decibels`.
double decaySeconds(const BellShape& shape, double height, double sampleRate, double decibels);

} // namespace kvxplatform::audiounit
