#include "platform/audiounit/equaliser/bell_filter.h"

#include <cmath>
#include <complex>

namespace kvxplatform::audiounit {
namespace {

constexpr double pi = 3.14159265358979323846;

// Returns  the frequency after the bilinear transform, which is infinite at half the sample rate.
double warped(double hertz, double sampleRate) { return std::tan(pi * hertz / sampleRate); }

inline double step(const BellCoefficients& c, BellState& state, double in)
{
    const double v3 = in - state.s2;
    const double v1 = c.a1 * state.s1 + c.a2 * v3;
    const double v2 = state.s2 + c.a2 * state.s1 + c.a3 * v3;
    state.s1 = 2 * v1 - state.s1;
    state.s2 = 2 * v2 - state.s2;
    return in + c.m1 * v1;
}

} // namespace

// With x = frequency / centre, a bell of any height has half its peak gain in decibels where |1 - x^2| =
// x / Q. The lower edge of the band sets the width, because the upper edge is compressed or missing near half
// the sample rate.
BellShape bellShape(double centre, double octaves, double sampleRate)
{
    const double frequency = warped(centre, sampleRate);
    const double edge = warped(centre * std::exp2(-octaves / 2), sampleRate) / frequency;
    return {frequency, (1 - edge * edge) / edge};
}

double heightOf(Float32 decibels) { return std::pow(10.0, decibels / 40.0); }

BellCoefficients coefficientsOf(const BellShape& shape, double height)
{
    const double g = shape.frequency, k = shape.width / height;
    const double a1 = 1 / (1 + g * (g + k));
    return {a1, g * a1, g * g * a1, k * (height * height - 1)};
}

void filter(const BellCoefficients& coefficients, BellState& state, double* samples, UInt32 frames)
{
    BellState now = state;
    for (UInt32 i = 0; i < frames; ++i) samples[i] = step(coefficients, now, samples[i]);
    state = now;
}

void filter(const BellCoefficients* ofEachFrame, BellState& state, double* samples, UInt32 frames)
{
    BellState now = state;
    for (UInt32 i = 0; i < frames; ++i) samples[i] = step(ofEachFrame[i], now, samples[i]);
    state = now;
}

void flushState(BellState& state)
{
    constexpr double tiny = 1e-30; // level 600 dB below full scale
    for (double* each : {&state.s1, &state.s2})
        if (!std::isfinite(*each) || std::fabs(*each) < tiny) *each = 0;
}

double decaySeconds(const BellShape& shape, double height, double sampleRate, double decibels)
{
    using Complex = std::complex<double>;
    const double g = shape.frequency, k = shape.width / height;
    const Complex root = std::sqrt(Complex(k * k - 4));
    double slowest = 0; // decay per frame of the slower pole
    for (const Complex pole : {(root - k) * 0.5, (-root - k) * 0.5})
        slowest = std::fmax(slowest, std::abs((1.0 + g * pole) / (1.0 - g * pole)));
    return slowest > 0 ? decibels / (-20 * std::log10(slowest)) / sampleRate : 0;
}

} // namespace kvxplatform::audiounit
