// From what properties tell to what the cycle works with.
#include "platform/hal/cycle.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/io_procs.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

float decibelsOfScalar(float scalar) { return lowestDecibels * (1 - std::clamp(scalar, 0.0f, 1.0f)); }

float scalarOfDecibels(float decibels)
{
    return 1 - std::clamp(decibels, lowestDecibels, 0.0f) / lowestDecibels;
}

// Full volume is exactly 1, and none exactly 0: both are settings, not measurements.
float gainOfScalar(float scalar)
{
    if (scalar <= 0) return 0;
    return std::pow(10.0f, decibelsOfScalar(scalar) / 20);
}

void applySettings(const DeviceRef& device)
{
    if (turningDevice == device.get()) {
        device->mustApply = true;
        wakeHousekeeper();
        return;
    }
    const std::lock_guard<std::mutex> control(device->control);
    Settings settings;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        settings = device->settings;
    }
    closeHardware(device); // a stream is opened for one rate and one slice
    Buffers buffers(settings);
    {
        const std::lock_guard<std::mutex> cycle(device->cycleLock);
        applyBuffers(*device, settings, buffers);
    }
    settleDriver(device);
}

void applyLevels(const DeviceRef& device)
{
    std::vector<float> targets;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        for (const Level& level : device->outputLevels)
            targets.push_back(device->isMuted || level.isMuted ? 0 : gainOfScalar(level.scalar));
    }
    std::unique_lock<std::mutex> cycle(device->cycleLock, std::defer_lock);
    if (turningDevice != device.get()) cycle.lock();
    const std::size_t channels = std::min(targets.size(), device->targetGains.size());
    std::copy_n(targets.begin(), channels, device->targetGains.begin());
    if (!device->isRunning) device->gains = device->targetGains; // nothing is heard that could click
}

} // namespace kvxplatform::hal
