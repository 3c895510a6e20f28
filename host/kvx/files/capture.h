// A capture: the output of a device, written to a WAV file of 32-bit float.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <string>

namespace kvx {

/// Captures the output of a device into a temporary file, from construction on. keep() moves the temporary
/// file to its path.
/// [main]
class Capture {
public:
    /// Errors  throws Failure if no file can be written to the path.
    Capture(KVXDeviceID device, const std::string& path);
    ~Capture(); ///< discards the output unless keep() was called
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Finish the file and move it to its path.
    /// Errors  throws Failure.
    void keep();

private:
    KVXDeviceID device_;
    std::string path_;
    std::string temporary_;
};

} // namespace kvx
