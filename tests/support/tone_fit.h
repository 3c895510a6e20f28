// Measures a tone: its level, and what remains of the sound without it.
#pragma once

#include <vector>

namespace support {

/// The tone of a frequency in a sound, in decibels relative to a tone of amplitude 1.
struct ToneFit {
    double level;
    double residue; ///< level of the rest of the sound, as that of a tone of the same power
};

/// Fit a tone of `hertz` to frames [first, last) of one channel of interleaved samples.
ToneFit fitTone(const std::vector<float>& samples, unsigned channels, unsigned channel, double rate,
                double hertz, std::size_t first, std::size_t last);

/// Make a tone of amplitude `amplitude` that begins with phase `channel` in each channel.
std::vector<float> toneSamples(double rate, double hertz, std::size_t frames, unsigned channels,
                               double amplitude = 1);

} // namespace support
