#include "platform/hal/environment_capture.h"

#include "platform/hal/device_capture.h"
#include "platform/hal/device_list.h"

#include <cstdio>
#include <cstdlib>

namespace kvxplatform::hal {

namespace {

/// The file path of KVX_AUDIO_CAPTURE, guarded by propertyLock; empty after the capture has started. It is
/// never freed, because threads may outlive main().
std::string& capturePath()
{
    static std::string& path = *new std::string;
    return path;
}

void finishCapturesAtExit()
{
    for (const DeviceRef& device : devicesForProcs()) finishCaptures(*device);
}

} // namespace

void readCaptureEnvironment()
{
    if (const char* const path = std::getenv("KVX_AUDIO_CAPTURE")) capturePath() = path;
}

void startCaptureOfEnvironment(const DeviceRef& device)
{
    DeviceList& list = deviceList();
    std::string path;
    Settings settings;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        if (capturePath().empty() || list.inRole(Role::output) != device->id) return;
        path.swap(capturePath());
        settings = device->settings;
    }
    std::string error;
    if (startCapture(*device, CaptureOwner::environment, path, settings, error))
        std::atexit(finishCapturesAtExit);
    else
        std::fprintf(stderr, "KVX_AUDIO_CAPTURE: %s\n", error.c_str());
}

} // namespace kvxplatform::hal
