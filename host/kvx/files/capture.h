// What a device plays, kept as a WAV file of 32-bit float: whole, or not at all.
#pragma once

#include <KVXPlatform/KVXPlatform.h>

#include <string>

namespace kvx {

/// Captures from construction on. The file appears under its name only when keep() is called; until then a
/// file of that name, if there is one, stays as it is. [main]
class Capture {
public:
    /// Throws Failure when nothing can be written there.
    Capture(KVXDeviceID device, const std::string& path);
    ~Capture(); ///< without keep(), nothing is left behind
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// Finish the file and give it its name. Throws Failure.
    void keep();

private:
    KVXDeviceID device_;
    std::string path_;
    std::string unfinished_;
};

} // namespace kvx
