#include "bench/test_signal.h"

#include <cmath>
#include <cstdint>

namespace bench {
namespace {

/// A sine generator that rotates a vector once per sample, which is faster than one std::sin per sample.
class Sine {
public:
    explicit Sine(double hertz)
        : cosine_(std::cos(2 * 3.14159265358979 * hertz / signalRate)),
          sine_(std::sin(2 * 3.14159265358979 * hertz / signalRate))
    {
    }
    double next()
    {
        const double x = x_ * cosine_ - y_ * sine_;
        y_ = x_ * sine_ + y_ * cosine_;
        x_ = x;
        return y_;
    }

private:
    double cosine_, sine_, x_ = 1, y_ = 0;
};

std::vector<float> generate(int channels)
{
    std::vector<float> samples(signalFrames * static_cast<std::size_t>(channels));
    std::uint32_t noise = 1;
    constexpr std::size_t beatFrames = 22050;
    for (std::size_t beat = 0; beat * beatFrames < signalFrames; ++beat) {
        const double root = 110 * std::pow(2.0, static_cast<double>(beat * 7 % 12) / 12);
        Sine chord[] = {Sine(root), Sine(root * 1.25), Sine(root * 1.5), Sine(root * 4)};
        for (std::size_t i = 0; i < beatFrames; ++i) {
            double sum = 0;
            for (Sine& each : chord) sum += each.next();
            noise = noise * 1664525 + 1013904223;
            const double noiseSample = static_cast<double>(noise >> 8) / (1 << 24) - 0.5;
            for (int c = 0; c < channels; ++c)
                samples[(beat * beatFrames + i) * static_cast<std::size_t>(channels) +
                        static_cast<std::size_t>(c)] =
                    static_cast<float>((c ? 0.1 : 0.12) * sum + 0.01 * noiseSample);
        }
    }
    return samples;
}

} // namespace

const std::vector<float>& testSignal(int channels)
{
    static const std::vector<float> mono = generate(1);
    static const std::vector<float> stereo = generate(2);
    return channels == 1 ? mono : stereo;
}

const float* const* testSignalPlanes()
{
    static const std::vector<std::vector<float>> planes = [] {
        const std::vector<float>& stereo = testSignal(2);
        std::vector<std::vector<float>> channels(2, std::vector<float>(signalFrames));
        for (std::size_t i = 0; i < stereo.size(); ++i) channels[i % 2][i / 2] = stereo[i];
        return channels;
    }();
    static const float* const pointers[] = {planes[0].data(), planes[1].data()};
    return pointers;
}

} // namespace bench
