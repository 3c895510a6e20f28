#include "platform/hal/device_end.h"

#include "platform/hal/device_capture.h"
#include "platform/hal/device_list.h"
#include "platform/hal/driver.h"
#include "platform/hal/listeners.h"

#include <utility>

namespace kvxplatform::hal {

namespace {

void end(const DeviceRef& device, bool isUnplugged)
{
    DeviceList& list = deviceList();
    Selectors changed;
    bool wasAlive;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        if (!device->isAlive && (!isUnplugged || !device->isListed)) return;
        wasAlive = std::exchange(device->isAlive, false);
        if (isUnplugged) {
            device->isListed = false;
            list.unplug(device);
            changed = {kAudioHardwarePropertyDevices, kAudioObjectPropertyOwnedObjects};
        }
        for (AudioObjectPropertySelector selector : list.moveRoles()) changed.push_back(selector);
    }
    if (wasAlive) postChange(device->id, kAudioDevicePropertyDeviceIsAlive);
    for (AudioObjectPropertySelector selector : changed) postChange(kAudioObjectSystemObject, selector);
    finishCaptures(*device);
    beginDiscarding(device);
    const std::lock_guard<std::mutex> control(device->control);
    device->procs.sweep();
    forgetIfUnused(device);
}

} // namespace

void unplug(const DeviceRef& device) { end(device, true); }

void markDead(const DeviceRef& device) { end(device, false); }

void forgetIfUnused(const DeviceRef& device)
{
    if (!device->procs.isEmpty() || device->isRunning()) return;
    DeviceList& list = deviceList();
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        if (device->isListed) return;
        list.forget(device);
    }
    device->mustEnd = true;
    device->timerWake.raise();
}

} // namespace kvxplatform::hal
