#include "bench/music.h"

#include <cmath>
#include <cstdint>

namespace bench {
namespace {

// Sines that turn by a rotation each: quick to make, and no library's business.
class Sine {
public:
    explicit Sine(double hertz)
        : cosine_(std::cos(2 * 3.14159265358979 * hertz / musicRate)),
          sine_(std::sin(2 * 3.14159265358979 * hertz / musicRate))
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

std::vector<float> make(int channels)
{
    std::vector<float> samples(musicFrames * static_cast<std::size_t>(channels));
    std::uint32_t noise = 1;
    constexpr std::size_t beatFrames = 22050;
    for (std::size_t beat = 0; beat * beatFrames < musicFrames; ++beat) {
        const double root = 110 * std::pow(2.0, static_cast<double>(beat * 7 % 12) / 12);
        Sine chord[] = {Sine(root), Sine(root * 1.25), Sine(root * 1.5), Sine(root * 4)};
        for (std::size_t i = 0; i < beatFrames; ++i) {
            double sum = 0;
            for (Sine& each : chord) sum += each.next();
            noise = noise * 1664525 + 1013904223;
            const double hiss = static_cast<double>(noise >> 8) / (1 << 24) - 0.5;
            for (int c = 0; c < channels; ++c)
                samples[(beat * beatFrames + i) * static_cast<std::size_t>(channels) +
                        static_cast<std::size_t>(c)] =
                    static_cast<float>((c ? 0.1 : 0.12) * sum + 0.01 * hiss);
        }
    }
    return samples;
}

} // namespace

const std::vector<float>& music(int channels)
{
    static const std::vector<float> mono = make(1);
    static const std::vector<float> stereo = make(2);
    return channels == 1 ? mono : stereo;
}

const float* const* musicPlanes()
{
    static const std::vector<std::vector<float>> apart = [] {
        const std::vector<float>& both = music(2);
        std::vector<std::vector<float>> channels(2, std::vector<float>(musicFrames));
        for (std::size_t i = 0; i < both.size(); ++i) channels[i % 2][i / 2] = both[i];
        return channels;
    }();
    static const float* const planes[] = {apart[0].data(), apart[1].data()};
    return planes;
}

} // namespace bench
