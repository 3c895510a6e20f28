#include "tests/support/tone_fit.h"

#include <cmath>

namespace support {
namespace {

constexpr double pi = 3.14159265358979323846;

double decibels(double power) { return 10 * std::log10(power + 1e-30); }

} // namespace

ToneFit fitTone(const std::vector<float>& samples, unsigned channels, unsigned channel, double rate,
                double hertz, std::size_t first, std::size_t last)
{
    // Least squares of the sound against sine and cosine, whose products do not vanish exactly.
    double ss = 0, sc = 0, cc = 0, sy = 0, cy = 0;
    const auto each = [&](auto use) {
        for (std::size_t i = first; i < last; ++i) {
            const double angle = 2 * pi * hertz * static_cast<double>(i) / rate;
            use(std::sin(angle), std::cos(angle), double{samples[i * channels + channel]});
        }
    };
    each([&](double s, double c, double y) {
        ss += s * s;
        sc += s * c;
        cc += c * c;
        sy += s * y;
        cy += c * y;
    });
    const double determinant = ss * cc - sc * sc;
    const double a = (sy * cc - cy * sc) / determinant, b = (cy * ss - sy * sc) / determinant;
    double rest = 0;
    each([&](double s, double c, double y) { rest += (y - a * s - b * c) * (y - a * s - b * c); });
    return {decibels(a * a + b * b), decibels(2 * rest / static_cast<double>(last - first))};
}

std::vector<float> toneSamples(double rate, double hertz, std::size_t frames, unsigned channels,
                               double amplitude)
{
    std::vector<float> samples;
    samples.reserve(frames * channels);
    for (std::size_t i = 0; i < frames; ++i)
        for (unsigned c = 0; c < channels; ++c)
            samples.push_back(
                static_cast<float>(amplitude * std::sin(2 * pi * hertz * static_cast<double>(i) / rate + c)));
    return samples;
}

} // namespace support
