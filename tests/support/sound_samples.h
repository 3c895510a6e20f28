// Generated samples, and sound files that contain them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// Interleaved samples, with the sample rate and the channel count.
struct Sound {
    int sampleRate = 44100;
    int channels = 1;
    std::vector<float> samples; ///< samples[frame * channels + channel]

    std::size_t frames() const { return samples.size() / std::size_t(channels); }
};

/// Return noise within -1 … +1 without zero samples. The same `seed` gives the same samples.
Sound makeNoise(int sampleRate, int channels, std::size_t frames, unsigned seed = 1);

/// Return a sine sweep at half of full scale from 40 Hz to a third of the rate, with a constant time per
/// octave.
Sound makeSweep(int sampleRate, int channels, std::size_t frames);

/// Write a sound file in a libsndfile format, such as SF_FORMAT_WAV | SF_FORMAT_FLOAT.
/// Errors  throws std::runtime_error.
void writeSound(const Sound& sound, const std::string& path, int format);

/// Write the samples unchanged to a WAV file of 32-bit floats.
void writeSound(const Sound& sound, const std::string& path);

/// Return the bytes of a 16-bit PCM WAV file. The header states the rate and the channel count, even absurd
/// ones.
std::string waveBytes(std::uint32_t rate, std::uint32_t channels, std::uint32_t frames);

/// Decode a sound file.
/// Errors  throws std::runtime_error.
Sound readSound(const std::string& path);

/// Return the index of the first frame with a sample other than zero, or the number of frames if all samples
/// are zero.
std::size_t leadingSilence(const Sound& sound);

} // namespace support
