#include "host/kvx/files/capture.h"

#include "host/kvx/files/write_aside.h"
#include "host/kvx/text/failure.h"

#include <cstdio>

namespace kvx {
namespace {

// The platform's reason, with the name that the user gave the file.
Failure platformFailure(const std::string& aside, const std::string& path)
{
    std::string text = KVXPlatformErrorText();
    const std::string name = "the capture " + aside;
    if (const auto at = text.find(name); at != text.npos) text.replace(at, name.size(), path);
    return Failure(text);
}

} // namespace

Capture::Capture(KVXDeviceID device, const std::string& path)
    : device_(device), path_(path), unfinished_(asideOf(path))
{
    if (KVXPlatformStartCapture(device_, unfinished_.c_str()) != 0) throw platformFailure(unfinished_, path_);
}

Capture::~Capture()
{
    if (unfinished_.empty()) return;
    KVXPlatformStopCapture(device_);
    std::remove(unfinished_.c_str());
}

void Capture::keep()
{
    if (KVXPlatformStopCapture(device_) != 0) throw platformFailure(unfinished_, path_);
    moveIntoPlace(unfinished_, path_);
    unfinished_.clear();
}

} // namespace kvx
