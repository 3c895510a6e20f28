#include "platform/hal/housekeeper.h"

#include "platform/hal/io_procs.h"
#include "platform/hal/listeners.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/tree.h"

#include <ctime>
#include <mutex>
#include <semaphore.h>
#include <thread>

namespace kvxplatform::hal {

namespace {

constexpr long watchNanos = 100'000'000; // between two looks at running hardware

sem_t& wakeUp()
{
    static sem_t semaphore = [] {
        sem_t s;
        sem_init(&s, 0, 0);
        return s;
    }();
    return semaphore;
}

void tidy(const DeviceRef& device)
{
    if (device->mustApply.exchange(false)) applySettings(device);
    if (!device->hasNewsOfRunning.exchange(false)) return;
    {
        const std::lock_guard<std::mutex> control(device->control);
        settleDriver(device);
        sweepRemoved(*device);
        forgetIfUnused(device);
    }
    postChange(device->id, kAudioDevicePropertyDeviceIsRunning);
    postChange(device->id, kAudioDevicePropertyDeviceIsRunningSomewhere);
}

void run()
{
    for (;;) {
        timespec until;
        clock_gettime(CLOCK_REALTIME, &until);
        until.tv_nsec += watchNanos;
        if (until.tv_nsec >= 1'000'000'000) until.tv_nsec -= 1'000'000'000, ++until.tv_sec;
        if (isAnyHardwareOpen())
            sem_timedwait(&wakeUp(), &until);
        else
            sem_wait(&wakeUp());
        for (const DeviceRef& device : devicesForProcs()) {
            tidy(device);
            if (hasHardwareEnded(*device)) letDie(device);
        }
    }
}

} // namespace

void wakeHousekeeper() { sem_post(&wakeUp()); }

void startHousekeeper()
{
    wakeUp();
    std::thread(run).detach(); // for the life of the process
}

} // namespace kvxplatform::hal
