// Samples to play, and sound files to keep them in.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// Interleaved samples with what a file tells about them.
struct Sound {
    int sampleRate = 44100;
    int channels = 1;
    std::vector<float> samples; ///< samples[frame * channels + channel]

    std::size_t frames() const { return samples.size() / std::size_t(channels); }
};

/// Noise within -1 … +1, no sample of it zero, the same for the same `seed`.
Sound makeNoise(int sampleRate, int channels, std::size_t frames, unsigned seed = 1);

/// A sine that rises evenly (in octaves) from 40 Hz to a third of the rate, at half of full scale.
Sound makeSweep(int sampleRate, int channels, std::size_t frames);

/// Write a file of a libsndfile format (such as SF_FORMAT_WAV | SF_FORMAT_FLOAT). Throws std::runtime_error.
void writeSound(const Sound& sound, const std::string& path, int format);

/// A WAV file of 32-bit float, which keeps every bit.
void writeSound(const Sound& sound, const std::string& path);

/// The bytes of a 16-bit PCM WAV file that states any rate and number of channels, absurd ones, too.
std::string waveBytes(std::uint32_t rate, std::uint32_t channels, std::uint32_t frames);

/// Decode a whole file. Throws std::runtime_error.
Sound readSound(const std::string& path);

/// The frame of the first sample that is not zero; the number of frames if there is none.
std::size_t leadingSilence(const Sound& sound);

} // namespace support
