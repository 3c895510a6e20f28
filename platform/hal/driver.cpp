#include "platform/hal/driver.h"

#include "platform/hal/portaudio_driver.h"
#include "platform/hal/timer_driver.h"

namespace kvxplatform::hal {

OSStatus settleDriver(const DeviceRef& device)
{
    const Driver driver = device->driver;
    if (driver == Driver::hardware && device->isRunning()) return openHardware(device);
    closeHardware(device);
    return driver == Driver::timer && device->isRunning() ? ensureTimerThread(device) : OSStatus{noErr};
}

void handOver(const DeviceRef& device, Driver driver)
{
    device->driver = driver;
    device->timerWake.raise();
    settleDriver(device);
}

void beginDiscarding(const DeviceRef& device)
{
    {
        const std::lock_guard<std::mutex> control(device->control);
        device->isDiscarding = true;
        handOver(device, Driver::timer);
    }
    device->scope.wait();
}

} // namespace kvxplatform::hal
