#include "platform/hal/apply_settings.h"

#include "platform/hal/cycle.h"
#include "platform/hal/device_end.h"
#include "platform/hal/driver.h"
#include "platform/hal/housekeeper_signal.h"
#include "platform/hal/portaudio_driver.h"

#include <memory>
#include <utility>

namespace kvxplatform::hal {

namespace {

/// Restart the device with new cycle buffers and with the settings for which these buffers are allocated. The
/// caller holds the device's `control` mutex.
OSStatus runWith(const DeviceRef& device, std::unique_ptr<CycleBuffers> buffers)
{
    closeHardware(device); // a hardware stream is opened for one rate and one slice size
    device->buffers.publish(std::move(buffers), device->scope);
    return settleDriver(device);
}

void restore(Device& device, const Settings& former)
{
    const std::lock_guard<std::mutex> lock(propertyLock);
    device.settings.rate = former.rate;
    device.settings.sliceFrames = former.sliceFrames;
}

/// Allocate cycle buffers for the device's present settings and restart the device with them; restore the
/// former settings if that fails. The caller holds the device's `control` mutex.
OSStatus runWithNewSettings(const DeviceRef& device)
{
    Settings settings;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        settings = device->settings;
    }
    std::unique_ptr<CycleBuffers> next, former; // both buffers are allocated before the device changes
    try {
        next = std::make_unique<CycleBuffers>(settings);
        former = std::make_unique<CycleBuffers>(device->applied);
    } catch (...) {
        restore(*device, device->applied);
        throw;
    }
    if (runWith(device, std::move(next)) == noErr) {
        device->applied = settings;
        return noErr;
    }
    restore(*device, device->applied);
    return runWith(device, std::move(former)) == noErr ? OSStatus{kAudioDeviceUnsupportedFormatError}
                                                       : OSStatus{kAudioHardwareUnspecifiedError};
}

} // namespace

OSStatus applySettings(const DeviceRef& device)
{
    if (deviceInCycle) {
        device->mustApply = true;
        housekeeperSignal().raise();
        return noErr;
    }
    OSStatus status;
    {
        const std::lock_guard<std::mutex> control(device->control);
        status = runWithNewSettings(device);
    }
    // After markDead() the timer thread runs the device's cycles.
    if (status == kAudioHardwareUnspecifiedError) markDead(device);
    return status;
}

void applyLevels(const DeviceRef& device)
{
    const std::lock_guard<std::mutex> lock(propertyLock);
    for (std::size_t c = 0; c < device->outputLevels.size(); ++c) {
        const Level& level = device->outputLevels[c];
        device->targetGains[c] = device->isMuted || level.isMuted ? 0.0f : gainOfScalar(level.scalar);
    }
}

} // namespace kvxplatform::hal
