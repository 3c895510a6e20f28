#include "platform/hal/device_capture.h"

#include <utility>

namespace kvxplatform::hal {

namespace {

/// Put another in the place of the device's capture; the former one is returned when no cycle writes to it
/// any more.
std::shared_ptr<Capture> exchangeCapture(Device& device, std::shared_ptr<Capture> next)
{
    {
        const std::lock_guard<std::mutex> control(device.control);
        device.capture = next.get();
        device.ownedCapture.swap(next);
    }
    device.cycles.waitForEnd();
    return next;
}

} // namespace

bool startCapture(Device& device, const std::string& path, double rate, UInt32 channels, std::string& error)
{
    std::shared_ptr<Capture> capture = Capture::open(path, rate, static_cast<std::uint32_t>(channels), error);
    return capture && (exchangeCapture(device, std::move(capture)), true);
}

bool finishCapture(Device& device, std::string& error)
{
    const std::shared_ptr<Capture> capture = exchangeCapture(device, nullptr);
    return !capture || capture->finish(error);
}

} // namespace kvxplatform::hal
