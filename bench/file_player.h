// A file player of the built library on a stepped device.
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

namespace bench {

constexpr std::uint32_t sliceFrames = 512;

/// The host of this process, with the library loaded.
/// [main]
host::Host& loadedHost();

/// Heap bytes that the host and the library allocated, before any object existed.
double loadedHostBytes();

/// Heap bytes in use, including mapped blocks.
double heapBytes();

/// Add a stepped stereo device. Throws std::runtime_error on failure.
KVXDeviceID addSteppedDevice(double sampleRate);

/// Plays the WAV file of three minutes in a loop, on a device with the file's rate.
class FilePlayer {
public:
    FilePlayer();
    ~FilePlayer();
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    const host::Object& object() const { return object_; }
    void play() const;
    void step() const { KVXPlatformStep(device_, sliceFrames); }

    /// Step long enough for changed settings to take full effect.
    void settle() const;

private:
    KVXDeviceID device_;
    host::Object object_;
};

} // namespace bench
