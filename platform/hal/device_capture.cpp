#include "platform/hal/device_capture.h"

#include <cstdio>
#include <utility>

namespace kvxplatform::hal {

namespace {

/// Put another in the place of the device's capture; the former one is returned when no cycle writes to it
/// any more.
std::shared_ptr<Capture> exchangeCapture(Device& device, CaptureWish wish, std::shared_ptr<Capture> next)
{
    const auto place = static_cast<std::size_t>(wish);
    {
        const std::lock_guard<std::mutex> control(device.control);
        device.captures[place] = next.get();
        device.ownedCaptures[place].swap(next);
    }
    device.cycles.waitForEnd();
    return next;
}

} // namespace

bool startCapture(Device& device, CaptureWish wish, const std::string& path, const Settings& settings,
                  std::string& error)
{
    {
        const std::lock_guard<std::mutex> control(device.control);
        for (const auto& each : device.ownedCaptures)
            if (each && each->path() == path) {
                error = "the capture " + path + " is being written already; name another file";
                return false;
            }
    }
    const Capture::Form form = {settings.rate, static_cast<std::uint32_t>(settings.outputChannels)};
    std::shared_ptr<Capture> capture = Capture::open(path, form, error);
    return capture && (exchangeCapture(device, wish, std::move(capture)), true);
}

bool finishCapture(Device& device, CaptureWish wish, std::string& error)
{
    const std::lock_guard<std::mutex> finishing(device.finishing);
    const std::shared_ptr<Capture> capture = exchangeCapture(device, wish, nullptr);
    return !capture || capture->finish(error);
}

void finishCaptures(Device& device)
{
    std::string error;
    finishCapture(device, CaptureWish::program, error); // its program finds a file, or none
    if (!finishCapture(device, CaptureWish::environment, error))
        std::fprintf(stderr, "KVX_AUDIO_CAPTURE: %s\n", error.c_str()); // nobody else asks for it
}

} // namespace kvxplatform::hal
