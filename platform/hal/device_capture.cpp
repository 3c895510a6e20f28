#include "platform/hal/device_capture.h"

#include <cstdio>
#include <utility>

namespace kvxplatform::hal {

namespace {

OutputSinks currentSinks(const Device& device)
{
    const OutputSinks* const sinks = device.sinks.get();
    return sinks ? *sinks : OutputSinks{};
}

/// Let `edit` change the device's tap and captures. When changeSinks() returns, no cycle uses the former
/// sinks.
template <class Edit>
void changeSinks(Device& device, Edit edit)
{
    {
        const std::lock_guard<std::mutex> control(device.control);
        auto next = std::make_unique<OutputSinks>(currentSinks(device));
        edit(*next);
        device.sinks.publish(std::move(next), device.scope);
    }
    device.scope.wait();
    const std::lock_guard<std::mutex> control(device.control);
    device.sinks.sweep(device.scope);
}

std::shared_ptr<Capture>& captureOf(OutputSinks& sinks, CaptureOwner owner)
{
    return sinks.captures[static_cast<std::size_t>(owner)];
}

} // namespace

void setTap(Device& device, KVXOutputTap tap, void* context)
{
    changeSinks(device, [=](OutputSinks& sinks) {
        sinks.tap = tap;
        sinks.tapContext = context;
    });
}

bool startCapture(Device& device, CaptureOwner owner, const std::string& path, const Settings& settings,
                  std::string& error)
{
    {
        const std::lock_guard<std::mutex> control(device.control);
        const OutputSinks current = currentSinks(device);
        for (const std::shared_ptr<Capture>& each : current.captures)
            if (each && each->path() == path) {
                error = "the capture " + path + " is being written already; name another file";
                return false;
            }
    }
    const Capture::Form form = {settings.rate, static_cast<std::uint32_t>(settings.outputChannels)};
    const std::shared_ptr<Capture> capture = Capture::open(path, form, error);
    if (capture) changeSinks(device, [&](OutputSinks& sinks) { captureOf(sinks, owner) = capture; });
    return capture != nullptr;
}

bool finishCapture(Device& device, CaptureOwner owner, std::string& error)
{
    const std::lock_guard<std::mutex> finishing(device.finishing);
    std::shared_ptr<Capture> capture;
    changeSinks(device, [&](OutputSinks& sinks) { capture.swap(captureOf(sinks, owner)); });
    return !capture || capture->finish(error);
}

void finishCaptures(Device& device)
{
    std::string error;
    // The error is ignored, because the program sees whether the file exists.
    finishCapture(device, CaptureOwner::program, error);
    if (!finishCapture(device, CaptureOwner::environment, error))
        std::fprintf(stderr, "KVX_AUDIO_CAPTURE: %s\n", error.c_str()); // no caller could receive the error
}

} // namespace kvxplatform::hal
