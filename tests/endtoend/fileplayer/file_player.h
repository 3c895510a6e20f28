// A file player on a stepped device, generated sounds, and measurements of rendered samples.
#pragma once

#include "tests/endtoend/expected_samples.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace endtoend {

inline const char* const filePlayerClass = "AUPlayerKVX";

/// Samples: interleaved if they have several channels.
using Samples = std::vector<float>;

/// The base of tests with one host and a folder for sound files.
struct FilePlayerTest : LoadedHostTest {
    const support::TemporaryFolder folder;

    /// Write a WAV file of 32-bit floats into the folder, and return the path of the file.
    std::string write(const support::Sound& sound, const std::string& name = "x.wav") const
    {
        support::writeSound(sound, folder / name);
        return folder / name;
    }
};

/// A file player with a loaded file, and a stepped device to which the player plays.
/// Errors  the test fails if the file does not load.
class FilePlayer {
public:
    /// The format of the device, and the arguments of the load. 0 means the value of the file, or the class's
    /// default.
    struct Setup {
        double deviceRate = 0;
        std::uint32_t deviceChannels = 0;
        std::uint32_t sliceFrames = 512;
        int maximumFramesPerSlice = 0;
        int outputUnit = 0;
        int timePitchUnit = 0;
        int channels = 0; ///< number of data channels, and of output channels
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

    /// Render the next `frames` frames of the device.
    /// Returns  interleaved samples; none while the player pauses.
    Samples render(std::size_t frames);

private:
    SteppedDevice device_;
    host::Object object_;
};

/// Load a file into a new player. The test fails if the file does not load.
host::Object loadFile(host::Host& host, const std::string& path, int channels);

/// Set the default output device of the system. The role 'sOut' sets the device for alert sounds instead.
void chooseDefaultDevice(host::Host& host, KVXDeviceID device, std::uint32_t role = 'dOut');

/// Return a sine in every channel. `amplitude` is the peak; full scale is 1.
support::Sound makeTone(int sampleRate, int channels, double seconds, double hertz, double amplitude = 0.5);
/// Return a sound whose sample in frame n is (n + 1) / 65536, so a sample identifies its frame. At most 65535
/// frames.
support::Sound makeRamp(int sampleRate, int channels, std::size_t frames);

/// Return the frames from `first` to `first + frames - 1`, with all channels.
Samples partOf(const Samples& samples, int channels, std::size_t first, std::size_t frames);
Samples channelOf(const Samples& samples, int channels, int channel);
Samples silence(std::size_t samples);

/// Return the peak amplitude of the sine at `hertz`. A window function suppresses other frequencies.
double amplitudeAt(const Samples& samples, double hertz, double sampleRate);

/// Return the strongest frequency in hertz, accurate to 1/100 of a bin of a 16384-point Fourier transform.
double frequencyOf(const Samples& samples, double sampleRate);

/// Return the number of frames from the first sample above `level` to the last such sample.
std::size_t framesAbove(const Samples& samples, float level);

double decibels(double amplitude);

} // namespace endtoend
