#include "host/kvx/files/quantizer.h"

#include <algorithm>
#include <cmath>

namespace kvx {
namespace {

/// A random number from -1 to 1 whose density is a triangle.
double triangular(std::mt19937& random)
{
    constexpr double range = 4294967296.0; // of the generator
    const double first = random(), second = random();
    return (first - second) / range;
}

/// Round to the nearest whole number, ties to even, without a call of the slow library function.
double rounded(double number)
{
    constexpr double large = 6755399441055744.0; // 1.5 * 2^52: the sum has no bits for fractions
    return number + large - large;
}

} // namespace

Quantizer::Quantizer(int bits, bool isDithered)
    : fullScale_(std::ldexp(1.0, bits - 1)), unused_(std::ldexp(1.0, 32 - bits)), isDithered_(isDithered)
{
}

void Quantizer::round(const float* samples, std::size_t count, std::int32_t* out)
{
    const auto clipped = [this](double steps) { return std::clamp(steps, -fullScale_, fullScale_ - 1); };
    for (std::size_t i = 0; i < count; ++i) {
        const double steps = std::isnan(samples[i]) ? 0.0 : clipped(double{samples[i]} * fullScale_);
        if (steps != rounded(steps)) hasStarted_ = true;
        const double dither = isDithered_ && hasStarted_ ? triangular(random_) : 0.0;
        out[i] = static_cast<std::int32_t>(clipped(rounded(steps + dither)) * unused_);
    }
}

} // namespace kvx
