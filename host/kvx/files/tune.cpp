#include "host/kvx/files/tune.h"

#include "host/kvx/files/atomic_file.h"

#include <sndfile.h>

#include <algorithm>
#include <cerrno>
#include <cmath>

namespace kvx {
namespace {

struct Note {
    double beat; // start of the note, in beats
    int key;     // pitch in semitones above 220 Hz
    float pan;   // stereo position from 0 (left) to 1 (right)
    float gain;
};

constexpr double beatSeconds = 0.25;
constexpr double pi = 3.14159265358979323846;

// The notes: broken chords over a slow bass. The last chord is the same as the first chord.
// clang-format off
constexpr Note notes[] = {
    { 0, -9, 0.50f, 0.9f}, { 0,  3, 0.20f, 0.7f}, { 1,  7, 0.35f, 0.7f}, { 2, 10, 0.65f, 0.7f}, { 3, 15, 0.80f, 0.8f},
    { 4, -5, 0.50f, 0.9f}, { 4,  7, 0.75f, 0.7f}, { 5, 10, 0.60f, 0.7f}, { 6, 14, 0.40f, 0.7f}, { 7, 19, 0.25f, 0.8f},
    { 8, -4, 0.50f, 0.9f}, { 8,  8, 0.20f, 0.7f}, { 9, 12, 0.35f, 0.7f}, {10, 15, 0.65f, 0.7f}, {11, 20, 0.80f, 0.8f},
    {12, -2, 0.50f, 0.9f}, {12, 10, 0.75f, 0.7f}, {13, 14, 0.60f, 0.7f}, {14, 17, 0.40f, 0.7f}, {15, 22, 0.25f, 0.8f},
    {16, -9, 0.50f, 1.0f}, {16,  3, 0.30f, 0.8f}, {16.15, 10, 0.50f, 0.8f}, {16.3, 15, 0.70f, 0.8f}, {16.45, 27, 0.50f, 0.5f},
};
// clang-format on
constexpr double tuneSeconds = 6.5;

/// Synthesise a plucked string with a soft attack. Each harmonic is a complex number, multiplied by a
/// constant factor per frame, so that it oscillates and decays; higher harmonics decay faster.
std::vector<float> pluck(double frequency, std::size_t frames)
{
    std::vector<double> sum(frames);
    for (int harmonic = 1; harmonic <= 6; ++harmonic) {
        const double fade = std::exp(-(1.6 + 1.1 * harmonic) / tuneSampleRate);
        const double angle = 2.0 * pi * frequency * harmonic / tuneSampleRate;
        const double factorX = fade * std::cos(angle), factorY = fade * std::sin(angle);
        double x = 1.0 / (harmonic * harmonic), y = 0.0;
        for (double& sample : sum) {
            sample += y;
            const double nextX = x * factorX - y * factorY;
            y = x * factorY + y * factorX;
            x = nextX;
        }
    }
    const double attackFade = std::exp(-400.0 / tuneSampleRate);
    double attack = 1.0;
    std::vector<float> samples;
    samples.reserve(frames);
    for (double sample : sum) {
        samples.push_back(static_cast<float>(sample * (1.0 - attack)));
        attack *= attackFade;
    }
    return samples;
}

} // namespace

std::vector<float> composeTune()
{
    const auto frames = static_cast<std::size_t>(tuneSeconds * tuneSampleRate);
    std::vector<float> tune(frames * tuneChannels);
    for (const Note& note : notes) {
        const auto first = static_cast<std::size_t>(note.beat * beatSeconds * tuneSampleRate);
        const double frequency = 220.0 * std::pow(2.0, note.key / 12.0);
        const float left = note.gain * std::cos(static_cast<float>(pi / 2) * note.pan);
        const float right = note.gain * std::sin(static_cast<float>(pi / 2) * note.pan);
        const std::vector<float> sound = pluck(frequency, frames - first);
        for (std::size_t i = 0; i < sound.size(); ++i) {
            tune[(first + i) * 2] += left * sound[i];
            tune[(first + i) * 2 + 1] += right * sound[i];
        }
    }

    float peak = 0;
    for (float sample : tune) peak = std::max(peak, std::fabs(sample));
    const std::size_t fade = tuneSampleRate / 2;
    for (std::size_t i = 0; i < tune.size(); ++i) {
        const std::size_t left = frames - 1 - i / 2;
        tune[i] *= 0.7f / peak * std::min(1.0f, static_cast<float>(left) / static_cast<float>(fade));
    }
    return tune;
}

void writeTune(const std::string& path)
{
    const std::string temporary = temporaryPathFor(path);
    const std::vector<float> tune = composeTune();
    SF_INFO info = {};
    info.samplerate = tuneSampleRate;
    info.channels = tuneChannels;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    errno = 0;
    SNDFILE* file = sf_open(temporary.c_str(), SFM_WRITE, &info);
    if (!file) giveUpWriting(temporary, path, errno);
    const auto frames = static_cast<sf_count_t>(tune.size() / tuneChannels);
    const bool isWritten = sf_writef_float(file, tune.data(), frames) == frames;
    const int error = errno;
    const bool isClosed = sf_close(file) == 0;
    if (!isWritten || !isClosed) giveUpWriting(temporary, path, isWritten ? errno : error);
    moveIntoPlace(temporary, path);
}

} // namespace kvx
