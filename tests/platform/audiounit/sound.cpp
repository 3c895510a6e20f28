#include "tests/platform/audiounit/sound.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace test {
namespace {
constexpr double pi = 3.14159265358979323846;
}

Sound silence(UInt32 channels, std::size_t frames) { return steady(channels, frames, 0); }

Sound steady(UInt32 channels, std::size_t frames, Float32 value)
{
    return Sound(channels, std::vector<Float32>(frames, value));
}

Sound tone(UInt32 channels, std::size_t frames, double hertz, double sampleRate, double amplitude)
{
    std::vector<Float32> samples(frames);
    for (std::size_t i = 0; i < frames; ++i)
        samples[i] =
            static_cast<Float32>(amplitude * std::sin(2 * pi * hertz * static_cast<double>(i) / sampleRate));
    return Sound(channels, samples);
}

Sound anyBits(UInt32 channels, std::size_t frames)
{
    std::mt19937 next(1);
    Sound sound = silence(channels, frames);
    for (auto& samples : sound) {
        for (Float32& sample : samples) {
            const auto bits = static_cast<std::uint32_t>(next());
            std::memcpy(&sample, &bits, 4);
        }
        constexpr std::uint32_t odd[] = {0x7FC12345, 0x7F812345, 0xFF800001, 0x80000000, 1, 0x7F800000};
        if (frames > 20) std::memcpy(samples.data() + 10, odd, sizeof odd);
    }
    return sound;
}

Sound whiteNoise(UInt32 channels, std::size_t frames)
{
    std::mt19937 next(2);
    Sound sound = silence(channels, frames);
    for (auto& samples : sound)
        for (Float32& sample : samples) sample = static_cast<Float32>(next()) / 2147483648.0f - 1;
    return sound;
}

double amplitudeAt(const std::vector<Float32>& samples, std::size_t from, std::size_t until, double hertz,
                   double sampleRate)
{
    double re = 0, im = 0, sum = 0;
    for (std::size_t i = from; i < until; ++i) {
        const double place = static_cast<double>(i - from) / static_cast<double>(until - from);
        const double window = 0.5 - 0.5 * std::cos(2 * pi * place);
        const double angle = 2 * pi * hertz * static_cast<double>(i) / sampleRate;
        re += window * static_cast<double>(samples[i]) * std::cos(angle);
        im += window * static_cast<double>(samples[i]) * std::sin(angle);
        sum += window;
    }
    return 2 * std::hypot(re, im) / sum;
}

double largestStep(const std::vector<Float32>& samples, std::size_t from, std::size_t until)
{
    double largest = 0;
    for (std::size_t i = from + 1; i < until; ++i)
        largest = std::max(largest,
                           std::fabs(static_cast<double>(samples[i]) - static_cast<double>(samples[i - 1])));
    return largest;
}

double decibels(double amplitude) { return 20 * std::log10(amplitude); }

bool sameBits(const std::vector<Float32>& a, const std::vector<Float32>& b)
{
    return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(Float32)) == 0;
}

OSStatus Track::callback(void* context, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list)
{
    Track& self = *static_cast<Track*>(context);
    ++self.calls;
    self.lastBus = bus;
    self.lastFlags = *flags;
    const auto first = static_cast<std::size_t>(time->mSampleTime);
    for (UInt32 c = 0; c < list->mNumberBuffers; ++c) {
        auto* out = static_cast<Float32*>(list->mBuffers[c].mData);
        std::memset(out, 0, frames * sizeof *out);
        if (c >= self.sound.size() || first >= self.sound[c].size()) continue;
        const std::size_t there = std::min<std::size_t>(frames, self.sound[c].size() - first);
        // Copied as bytes, so that no sample changes.
        std::memcpy(out, self.sound[c].data() + first, there * sizeof *out);
    }
    if (self.saysSilence) *flags |= kAudioUnitRenderAction_OutputIsSilence;
    return self.status;
}

OSStatus Rendering::slice(UInt32 frames)
{
    list.restore();
    flags = 0;
    const AudioTimeStamp time = sampleTime(at);
    const OSStatus status = AudioUnitRender(unit, &flags, &time, 0, frames, list.get());
    at += frames;
    return status;
}

Sound Rendering::play(std::size_t frames, UInt32 sliceFrames)
{
    Sound heard = silence(list->mNumberBuffers, frames);
    for (std::size_t done = 0; done < frames;) {
        const auto now = static_cast<UInt32>(std::min<std::size_t>(sliceFrames, frames - done));
        const OSStatus status = slice(now);
        EXPECT_EQ(status, noErr) << "at frame " << done;
        if (status) break;
        for (UInt32 c = 0; c < list->mNumberBuffers; ++c)
            std::memcpy(heard[c].data() + done, list[c].mData, now * sizeof(Float32));
        done += now;
    }
    return heard;
}

} // namespace test
