// A capture: a WAV file of 32-bit float samples that contains the output of a device.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <string>

namespace kvx {

/// Writes the output of a device to a temporary file, beginning at construction. keep() moves this file to
/// the path that the user has named.
/// [main]
class Capture {
public:
    /// Begin to capture the output of the device.
    /// Errors  throws Failure if no file can be written to `path`.
    Capture(KVXDeviceID device, const std::string& path);
    ~Capture(); ///< removes the temporary file unless keep() was called
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// End the capture, and move the temporary file to the path given at construction.
    /// Errors  throws Failure.
    void keep();

private:
    KVXDeviceID device_;
    std::string path_;
    std::string temporary_;
};

} // namespace kvx
