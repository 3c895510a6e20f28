// A file player of the built plug-in library, on a device that renders only when the benchmark calls step().
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

namespace bench {

constexpr std::uint32_t sliceFrames = 512;

/// The host of this process, which has loaded the plug-in library. The first call creates the host.
/// [main]
host::Host& loadedHost();

/// The heap bytes that the host and the library use before the program makes an object.
double loadedHostBytes();

/// The heap bytes in use by the process, including blocks that malloc maps separately.
double heapBytes();

/// Add a stereo device that renders only in KVXPlatformStep(). Throws std::runtime_error on failure.
KVXDeviceID addSteppedDevice(double sampleRate, std::uint32_t frames = sliceFrames);

/// Plays the WAV file of three minutes in a loop, on a stepped device.
class FilePlayer {
public:
    /// Make a player on a device with the sample rate of the file.
    FilePlayer();
    FilePlayer(double deviceRate, std::uint32_t frames);
    ~FilePlayer();
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    const host::Object& object() const { return object_; }
    void play() const;
    void step() const { KVXPlatformStep(device_, frames_); }

    /// Render 100 slices, so that changed settings take full effect.
    void settle() const;

private:
    std::uint32_t frames_; ///< frames of a slice
    KVXDeviceID device_;
    host::Object object_;
};

} // namespace bench
