#include "host/kvx/files/capture.h"

#include "host/kvx/files/atomic_file.h"
#include "host/kvx/text/failure.h"

#include <cstdio>
#include <filesystem>

namespace kvx {
namespace {

/// Make an error from the platform's message, in which the user's path replaces the temporary path.
Failure platformFailure(const std::string& temporary, const std::string& path)
{
    std::string text = KVXPlatformErrorText();
    const std::string name = "the capture " + temporary;
    if (const auto at = text.find(name); at != text.npos) text.replace(at, name.size(), path);
    return Failure(text);
}

} // namespace

// The platform adds ".part" to the path while the capture runs, which makes the path of temporaryPathFor().
Capture::Capture(KVXDeviceID device, const std::string& path)
    : device_(device), path_(path),
      temporary_(std::filesystem::path(temporaryPathFor(path)).replace_extension())
{
    if (KVXPlatformStartCapture(device_, temporary_.c_str()) != 0) throw platformFailure(temporary_, path_);
}

Capture::~Capture()
{
    if (temporary_.empty()) return;
    KVXPlatformStopCapture(device_);
    std::remove(temporary_.c_str());
}

void Capture::keep()
{
    if (KVXPlatformStopCapture(device_) != 0) throw platformFailure(temporary_, path_);
    moveIntoPlace(temporary_, path_);
    temporary_.clear();
}

} // namespace kvx
