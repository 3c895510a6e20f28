// From what properties tell to what the cycle works with.
#include "platform/hal/cycle.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/io_procs.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <utility>

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

namespace {

/// `control` held by the caller.
OSStatus turnWith(const DeviceRef& device, std::unique_ptr<Shape> shape)
{
    closeHardware(device); // a stream is opened for one rate and one slice
    delete device->nextShape.exchange(shape.release());
    freeSpentShapes(*device);
    return settleDriver(device);
}

void restore(Device& device, const Settings& former)
{
    const std::lock_guard<std::mutex> lock(treeLock());
    device.settings.rate = former.rate;
    device.settings.sliceFrames = former.sliceFrames;
}

/// `control` held by the caller.
OSStatus turnWithNewSettings(const DeviceRef& device)
{
    Settings wanted;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        wanted = device->settings;
    }
    std::unique_ptr<Shape> next, former; // both there before anything is touched
    try {
        next = std::make_unique<Shape>(wanted);
        former = std::make_unique<Shape>(device->applied);
    } catch (...) {
        restore(*device, device->applied);
        throw;
    }
    if (turnWith(device, std::move(next)) == noErr) {
        device->applied = wanted;
        return noErr;
    }
    restore(*device, device->applied);
    return turnWith(device, std::move(former)) == noErr ? OSStatus{kAudioDeviceUnsupportedFormatError}
                                                        : OSStatus{kAudioHardwareUnspecifiedError};
}

} // namespace

OSStatus applySettings(const DeviceRef& device)
{
    if (turningDevice) {
        device->mustApply = true;
        wakeHousekeeper();
        return noErr;
    }
    OSStatus status;
    {
        const std::lock_guard<std::mutex> control(device->control);
        status = turnWithNewSettings(device);
    }
    if (status == kAudioHardwareUnspecifiedError) letDie(device); // else it is started, and nobody turns it
    return status;
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
