// One band of an equaliser: a bell that raises or lowers what lies around its centre.
//
// Source   the trapezoidal state-variable filter, in which the frequency, the width and the height of a bell
//          are separate numbers. So the height may move from frame to frame without a click, and at a height
//          of 1 the output is the input to the last bit.
#pragma once

#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::audiounit {

/// Where a bell stands and how wide it is: at the lower edge of the band, half its decibels.
struct BellShape {
    double frequency; // tan(pi * centre / rate)
    double width;     // 1 / Q there
};

/// A band of `octaves` octaves around `centre` Hz, which is above 0 and below half the sample rate.
BellShape bellShape(double centre, double octaves, double sampleRate);

/// The height of a bell is the square root of the gain at its centre.
double heightOf(Float32 decibels);

struct BellCoefficients {
    double a1, a2, a3, m1;
};
BellCoefficients coefficientsOf(const BellShape& shape, double height);

struct BellState {
    double s1 = 0, s2 = 0;
};

/// Filter samples in place, with the same coefficients for all or with those of each frame.
/// Thread [audio]. Allocates nothing.
void filter(const BellCoefficients& of, BellState& state, double* samples, UInt32 frames);
void filter(const BellCoefficients* ofEach, BellState& state, double* samples, UInt32 frames);

/// Forget what is too small to be heard, before it becomes too small to be fast, and what is no number.
void settle(BellState& state);

/// Seconds until what a bell still sounds, with nothing coming in, has fallen by `decibels`.
double ringingSeconds(const BellShape& shape, double height, double sampleRate, double decibels);

} // namespace kvxplatform::audiounit
