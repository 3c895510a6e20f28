// A file player from the library, on a device that is stepped by hand.
#pragma once

#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

namespace bench {

constexpr std::uint32_t sliceFrames = 512;

/// The one host, with the library loaded. [main]
host::Host& loadedHost();

/// What the host and the library took of the heap, with no object made.
double loadedHostBytes();

/// Bytes of the heap that are in use: in every arena, and mapped.
double heapBytes();

/// A simulated stereo device that waits to be stepped. Throws std::runtime_error.
KVXDeviceID addSteppedDevice(double sampleRate);

/// Plays the WAV file of three minutes over and over, at its own rate.
class FilePlayer {
public:
    FilePlayer();
    ~FilePlayer();
    FilePlayer(const FilePlayer&) = delete;
    FilePlayer& operator=(const FilePlayer&) = delete;

    const host::Object& object() const { return object_; }
    void play() const;
    void step() const { KVXPlatformStep(device_, sliceFrames); }

    /// Steps until what a setting has set in motion has come to rest.
    void settle() const;

private:
    KVXDeviceID device_;
    host::Object object_;
};

} // namespace bench
