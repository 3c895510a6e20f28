// From what properties tell to what the cycle works with.
#include "platform/hal/cycle.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/io_procs.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

// Full volume is 0 dB, not minus 0.
float decibelsOfScalar(float scalar)
{
    return lowestDecibels - lowestDecibels * std::clamp(scalar, 0.0f, 1.0f);
}

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
    if (turningDevice) {
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
    delete device->nextShape.exchange(new Shape(settings));
    freeSpentShapes(*device);
    settleDriver(device);
}

void applyLevels(const DeviceRef& device)
{
    const std::lock_guard<std::mutex> lock(treeLock());
    for (std::size_t c = 0; c < device->outputLevels.size(); ++c) {
        const Level& level = device->outputLevels[c];
        device->targetGains[c] = device->isMuted || level.isMuted ? 0.0f : gainOfScalar(level.scalar);
    }
}

} // namespace kvxplatform::hal
