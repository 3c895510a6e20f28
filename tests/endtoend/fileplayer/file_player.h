// What the tests of the file player begin with: a file, loaded by the class from the library, played on a
// device that is stepped by hand; and a measure of what was heard.
#pragma once

#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace endtoend {

inline const char* const filePlayerClass = "AUPlayerKVX";

/// Samples, interleaved or of one channel.
using Samples = std::vector<float>;

/// A file player on a device of its own.
///
/// Errors  a load that fails is a failure of the test; what follows then does nothing.
class FilePlayer {
public:
    /// How it is loaded, and on what. Zeros: as the file is, or as the class has it.
    struct Setup {
        double deviceRate = 0;
        std::uint32_t deviceChannels = 0;
        std::uint32_t sliceFrames = 512;
        int maximumFramesPerSlice = 0;
        int outputUnit = 0;
        int timePitchUnit = 0;
        int channels = 0; ///< of both sides of the graph
    };

    FilePlayer(LoadedHost& loaded, const std::string& path) : FilePlayer(loaded, path, Setup()) {}
    FilePlayer(LoadedHost& loaded, const std::string& path, const Setup& setup);

    SteppedDevice& device() { return device_; }
    const host::Object& object() const { return object_; }

    double get(const char* property) const { return object_.get(property).number(); }
    std::int64_t error() const { return object_.get("Lasterror").integer(); }
    void set(const char* property, double value) const { object_.set(property, value); }
    void play() const { object_.call("Play"); }
    void pause() const { object_.call("Pause"); }
    bool isPlaying() const { return object_.get("Playing").boolean(); }

    /// What comes next: so many frames of the device, interleaved. Less when nobody plays.
    Samples hear(std::size_t frames);

private:
    SteppedDevice device_;
    host::Object object_;
};

/// Load a file; a failure of the test if it is refused.
host::Object loadFile(host::Host& host, const std::string& path, int channels);

/// Make a device the default one, for sound or ('sOut') for alerts, as a host program does.
void chooseDefaultDevice(host::Host& host, KVXDeviceID device, std::uint32_t role = 'dOut');

/// Sounds as a test needs them.
support::Sound makeTone(int sampleRate, int channels, double seconds, double hertz, double amplitude = 0.5);
/// Every frame tells its number: (n + 1) / 65536 in every channel, exact for at most 65535 frames.
support::Sound makeRamp(int sampleRate, int channels, std::size_t frames);

/// Frames [first, first + frames) of all channels.
Samples partOf(const Samples& samples, int channels, std::size_t first, std::size_t frames);
Samples channelOf(const Samples& samples, int channels, int channel);
Samples silence(std::size_t samples);

/// Sample by sample; -0 and +0 are the same.
void expectSamples(const Samples& heard, const Samples& expected);

/// Samples heard: `expected`, and nothing but silence behind it.
void expectThenSilence(const Samples& heard, const Samples& expected);

/// The amplitude of one frequency, under a window that hides what is not near it.
double amplitudeAt(const Samples& samples, double hertz, double sampleRate);

/// The strongest frequency, to a hundredth of a bin of a Fourier transform of at most 16384 samples.
double frequencyOf(const Samples& samples, double sampleRate);

/// How many frames from the first sample above `level` to the last.
std::size_t framesAbove(const Samples& samples, float level);

double decibels(double amplitude);

} // namespace endtoend
