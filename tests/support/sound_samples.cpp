#include "tests/support/sound_samples.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>

namespace support {

Sound makeNoise(int sampleRate, int channels, std::size_t frames, unsigned seed)
{
    Sound sound{sampleRate, channels, {}};
    sound.samples.reserve(frames * std::size_t(channels));
    std::uint32_t state = seed * 2654435761u + 1;
    while (sound.samples.size() < frames * std::size_t(channels)) {
        state = state * 1664525u + 1013904223u;
        // An odd numerator makes no sample zero. 24 significant bits make products of samples inexact, so
        // rounding shows.
        sound.samples.push_back(float(std::int32_t(state) >> 7 | 1) / float(1 << 24));
    }
    return sound;
}

Sound makeSweep(int sampleRate, int channels, std::size_t frames)
{
    Sound sound{sampleRate, channels, {}};
    const double octaves = std::log2(sampleRate / 3.0 / 40.0);
    double phase = 0;
    for (std::size_t frame = 0; frame < frames; ++frame) {
        phase += 40.0 * std::exp2(octaves * double(frame) / double(frames)) / sampleRate;
        for (int channel = 0; channel < channels; ++channel)
            sound.samples.push_back(
                float(0.5 * std::sin(2 * 3.14159265358979323846 * (phase + 0.25 * channel))));
    }
    return sound;
}

void writeSound(const Sound& sound, const std::string& path, int format)
{
    SF_INFO info = {};
    info.samplerate = sound.sampleRate;
    info.channels = sound.channels;
    info.format = format;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    const auto frames = sf_count_t(sound.frames());
    const bool isWhole = sf_writef_float(file, sound.samples.data(), frames) == frames;
    sf_close(file);
    if (!isWhole) throw std::runtime_error(path + " is not written to its end");
}

void writeSound(const Sound& sound, const std::string& path)
{
    writeSound(sound, path, SF_FORMAT_WAV | SF_FORMAT_FLOAT);
}

std::string waveBytes(std::uint32_t rate, std::uint32_t channels, std::uint32_t frames)
{
    const auto number = [](std::uint32_t value, int width) {
        std::string bytes;
        for (; width > 0; --width, value >>= 8) bytes.push_back(char(value & 0xFF));
        return bytes;
    };
    const std::uint32_t bytes = frames * channels * 2;
    return "RIFF" + number(36 + bytes, 4) + "WAVEfmt " + number(16, 4) + number(1, 2) + number(channels, 2) +
           number(rate, 4) + number(rate * channels * 2, 4) + number(channels * 2, 2) + number(16, 2) +
           "data" + number(bytes, 4) + std::string(bytes, '\x11');
}

Sound readSound(const std::string& path)
{
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) throw std::runtime_error(path + ": " + sf_strerror(nullptr));
    Sound sound{info.samplerate, info.channels, {}};
    sound.samples.resize(std::size_t(info.frames) * std::size_t(info.channels));
    const sf_count_t got = sf_readf_float(file, sound.samples.data(), info.frames);
    sf_close(file);
    if (got != info.frames) throw std::runtime_error(path + " ends early");
    return sound;
}

std::size_t leadingSilence(const Sound& sound)
{
    const auto first =
        std::find_if(sound.samples.begin(), sound.samples.end(), [](float sample) { return sample != 0.0f; });
    return std::size_t(first - sound.samples.begin()) / std::size_t(sound.channels);
}

} // namespace support
