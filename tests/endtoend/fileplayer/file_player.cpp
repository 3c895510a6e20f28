#include "tests/endtoend/fileplayer/file_player.h"

#include "tests/endtoend/audio_objects.h"

#include <algorithm>
#include <cmath>
#include <complex>

namespace endtoend {
namespace {

constexpr double pi = 3.14159265358979323846;

/// Return the sample rate and the channel count of a file.
support::Sound formatOf(const std::string& path)
{
    support::Sound sound = support::readSound(path);
    sound.samples.clear();
    return sound;
}

/// Return the Blackman-Harris window at `x`, from 0 to 1. The side lobes of this window are at -92 dB.
double windowAt(double x)
{
    const double a = 2 * pi * x;
    return 0.35875 - 0.48829 * std::cos(a) + 0.14128 * std::cos(2 * a) - 0.01168 * std::cos(3 * a);
}
constexpr double windowMean = 0.35875;

/// Replace `count` values, every `stride`th of an array, by their Fourier transform. `count` is a power of 2.
void transform(std::complex<double>* values, std::size_t count, std::size_t stride)
{
    if (count == 1) return;
    transform(values, count / 2, stride * 2);
    transform(values + stride, count / 2, stride * 2);
    std::vector<std::complex<double>> whole(count);
    for (std::size_t i = 0; i < count / 2; ++i) {
        const auto even = values[2 * i * stride];
        const auto odd = values[(2 * i + 1) * stride] * std::polar(1.0, -2 * pi * double(i) / double(count));
        whole[i] = even + odd;
        whole[i + count / 2] = even - odd;
    }
    for (std::size_t i = 0; i < count; ++i) values[i * stride] = whole[i];
}

} // namespace

FilePlayer::FilePlayer(LoadedHost& loaded, const std::string& path, const Setup& setup)
    : device_(setup.deviceRate != 0 ? setup.deviceRate : formatOf(path).sampleRate,
              setup.deviceChannels ? setup.deviceChannels : std::uint32_t(formatOf(path).channels),
              setup.sliceFrames),
      object_(loaded.host.create(filePlayerClass))
{
    object_.set("MaximumFramesPerSlice", setup.maximumFramesPerSlice);
    object_.set("OutputUnit", setup.outputUnit);
    if (setup.timePitchUnit) object_.set("TimePitchUnit", setup.timePitchUnit);
    const int channels = setup.channels ? setup.channels : formatOf(path).channels;
    EXPECT_TRUE(object_.call("LoadFile", host::FolderItem::at(path), channels, channels).boolean())
        << path << ": " << error();
    const bool choosesDevice = setup.outputUnit != 1 && setup.outputUnit != 3 && setup.outputUnit != 4;
    if (choosesDevice) {
        object_.set("CurrentDeviceID", std::int64_t(device_.id()));
        EXPECT_EQ(error(), 0);
    }
}

Samples FilePlayer::render(std::size_t frames)
{
    device_.clearOutput();
    device_.step(std::uint32_t(frames));
    return device_.output();
}

host::Object loadFile(host::Host& host, const std::string& path, int channels)
{
    host::Object player = host.create(filePlayerClass);
    EXPECT_TRUE(player.call("LoadFile", host::FolderItem::at(path), channels, channels).boolean())
        << path << ": " << player.get("Lasterror").integer();
    return player;
}

void chooseDefaultDevice(host::Host& host, KVXDeviceID device, std::uint32_t role)
{
    const AudioObjects audio(host);
    EXPECT_EQ(audio.set(kAudioObjectSystemObject, overall(role), UInt32{device}), "0");
    EXPECT_EQ(audio.get<UInt32>(kAudioObjectSystemObject, overall(role)), device);
}

support::Sound makeTone(int sampleRate, int channels, double seconds, double hertz, double amplitude)
{
    support::Sound sound{sampleRate, channels, {}};
    const auto frames = std::size_t(std::llround(seconds * sampleRate));
    for (std::size_t frame = 0; frame < frames; ++frame)
        for (int channel = 0; channel < channels; ++channel)
            sound.samples.push_back(float(amplitude * std::sin(2 * pi * hertz * double(frame) / sampleRate)));
    return sound;
}

support::Sound makeRamp(int sampleRate, int channels, std::size_t frames)
{
    support::Sound sound{sampleRate, channels, {}};
    for (std::size_t frame = 0; frame < frames; ++frame)
        sound.samples.insert(sound.samples.end(), std::size_t(channels), float(frame + 1) / 65536);
    return sound;
}

Samples partOf(const Samples& samples, int channels, std::size_t first, std::size_t frames)
{
    const auto begin = samples.begin() + std::ptrdiff_t(first * std::size_t(channels));
    return {begin, begin + std::ptrdiff_t(frames * std::size_t(channels))};
}

Samples channelOf(const Samples& samples, int channels, int channel)
{
    Samples one;
    one.reserve(samples.size() / std::size_t(channels));
    for (std::size_t i = std::size_t(channel); i < samples.size(); i += std::size_t(channels))
        one.push_back(samples[i]);
    return one;
}

Samples silence(std::size_t samples) { return Samples(samples, 0.0f); }

double amplitudeAt(const Samples& samples, double hertz, double sampleRate)
{
    const std::complex<double> rotation = std::polar(1.0, -2 * pi * hertz / sampleRate);
    std::complex<double> sum = 0, at = 1;
    const double count = double(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        sum += windowAt((double(i) + 0.5) / count) * double(samples[i]) * at;
        at *= rotation;
    }
    return 2 * std::abs(sum) / (count * windowMean);
}

double frequencyOf(const Samples& samples, double sampleRate)
{
    std::size_t count = 16384;
    while (count > samples.size()) count /= 2;
    std::vector<std::complex<double>> spectrum(count);
    for (std::size_t i = 0; i < count; ++i)
        spectrum[i] = windowAt((double(i) + 0.5) / double(count)) * double(samples[i]);
    transform(spectrum.data(), count, 1);
    const auto level = [&](std::size_t bin) { return std::log(std::abs(spectrum[bin]) + 1e-30); };
    std::size_t top = 1;
    for (std::size_t bin = 2; bin + 1 < count / 2; ++bin)
        if (level(bin) > level(top)) top = bin;
    // The peak lies between bins, so this takes the top of the parabola through the levels of three bins.
    const double left = level(top - 1), middle = level(top), right = level(top + 1);
    const double offset = 0.5 * (left - right) / (left - 2 * middle + right);
    return (double(top) + offset) * sampleRate / double(count);
}

std::size_t framesAbove(const Samples& samples, float level)
{
    const auto isLoud = [level](float sample) { return std::fabs(sample) > level; };
    const auto first = std::find_if(samples.begin(), samples.end(), isLoud);
    const auto last = std::find_if(samples.rbegin(), samples.rend(), isLoud);
    return first == samples.end() ? 0 : std::size_t(last.base() - first);
}

double decibels(double amplitude) { return 20 * std::log10(amplitude); }

} // namespace endtoend
