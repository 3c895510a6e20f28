#include "platform/hal/io_procs.h"

#include "platform/accounts/account.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/timer_driver.h"
#include "platform/hal/tree.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

Account addedProcs("IOProc");

/// cycleLock, unless this thread is in that device's cycle and so holds it already. Outside, having it means
/// that no procedure of the device is being called.
class CycleGuard {
public:
    explicit CycleGuard(Device& device)
        : isInside_(turningDevice == &device), lock_(device.cycleLock, std::defer_lock)
    {
        if (!isInside_) lock_.lock();
    }
    bool isInside() const { return isInside_; }

private:
    bool isInside_;
    std::unique_lock<std::mutex> lock_;
};

/// The device, for procedures: also one that is unplugged and still turned. Inside a cycle no lock is taken.
DeviceRef findForProcs(AudioDeviceID id)
{
    if (turningDevice && turningDevice->id == id) return DeviceRef(DeviceRef(), turningDevice);
    return findDeviceForProcs(id);
}

AudioDeviceIOProcID idOf(const IOProc& entry)
{
    return entry.hasOwnID ? reinterpret_cast<AudioDeviceIOProcID>(reinterpret_cast<std::uintptr_t>(&entry))
                          : entry.proc;
}

IOProc* findEntry(Device& device, AudioDeviceIOProcID id)
{
    for (auto& entry : device.procs)
        if (!entry->isRemoved && idOf(*entry) == id) return entry.get();
    return nullptr;
}

void setStarted(Device& device, IOProc& entry, bool isStarted)
{
    if (entry.isStarted == isStarted) return;
    entry.isStarted = isStarted;
    device.startedProcs += isStarted ? 1 : -1;
    noteRunning(device);
}

OSStatus add(AudioDeviceID id, AudioDeviceIOProc proc, void* client, bool hasOwnID,
             AudioDeviceIOProcID* outID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (!proc) return kAudioHardwareIllegalOperationError;
    auto entry = std::make_unique<IOProc>(IOProc{proc, client, hasOwnID});
    const CycleGuard guard(*device);
    if (!hasOwnID && findEntry(*device, proc)) return kAudioHardwareIllegalOperationError;
    if (outID) *outID = idOf(*entry);
    device->procs.push_back(std::move(entry));
    addedProcs.add();
    return noErr;
}

/// Stop and forget, at once: a record is only freed where no procedure runs.
OSStatus remove(AudioDeviceID id, AudioDeviceIOProcID proc, bool hasOwnID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    bool isInside;
    {
        const CycleGuard guard(*device);
        isInside = guard.isInside();
        IOProc* entry = findEntry(*device, proc);
        if (!entry || entry->hasOwnID != hasOwnID) return kAudioHardwareIllegalOperationError;
        setStarted(*device, *entry, false);
        entry->isRemoved = true;
        addedProcs.remove();
    }
    if (isInside) {
        wakeHousekeeper();
        return noErr;
    }
    const std::lock_guard<std::mutex> control(device->control);
    settleDriver(device);
    sweepRemoved(*device);
    forgetIfUnused(device);
    return noErr;
}

/// Count a start or stop, with or without a procedure.
OSStatus mark(Device& device, AudioDeviceIOProcID proc, bool isStart)
{
    if (!proc) {
        if (!isStart && device.startsWithoutProc == 0) return kAudioHardwareIllegalOperationError;
        device.startsWithoutProc += isStart ? 1 : -1;
        noteRunning(device);
        return noErr;
    }
    IOProc* entry = findEntry(device, proc);
    if (!entry) return kAudioHardwareIllegalOperationError;
    setStarted(device, *entry, isStart);
    return noErr;
}

OSStatus start(AudioDeviceID id, AudioDeviceIOProcID proc)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (turningDevice == device.get()) return mark(*device, proc, true);

    startCaptureOfEnvironment(device);
    const std::lock_guard<std::mutex> control(device->control);
    {
        const CycleGuard guard(*device);
        if (device->startRefusal != noErr) return device->startRefusal;
        if (device->isDiscarding) return kAudioHardwareNotRunningError;
        if (const OSStatus status = mark(*device, proc, true); status != noErr) return status;
    }
    const OSStatus status = settleDriver(device);
    if (status != noErr) {
        const CycleGuard guard(*device);
        mark(*device, proc, false);
    }
    return status;
}

OSStatus stop(AudioDeviceID id, AudioDeviceIOProcID proc)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (turningDevice == device.get()) return mark(*device, proc, false);

    const std::lock_guard<std::mutex> control(device->control);
    {
        const CycleGuard guard(*device);
        if (const OSStatus status = mark(*device, proc, false); status != noErr) return status;
    }
    settleDriver(device);
    forgetIfUnused(device);
    return noErr;
}

} // namespace

void noteRunning(Device& device)
{
    const bool isRunning = device.startedProcs > 0 || device.startsWithoutProc > 0;
    if (device.isRunning.exchange(isRunning) == isRunning) return;
    if (isRunning) device.timerWake.notify_all();
    device.hasNewsOfRunning = true;
    wakeHousekeeper();
}

void sweepRemoved(Device& device)
{
    std::vector<std::unique_ptr<IOProc>> gone; // freed after the lock
    const std::lock_guard<std::mutex> lock(device.cycleLock);
    for (auto& entry : device.procs)
        if (entry->isRemoved) gone.push_back(std::move(entry));
    device.procs.erase(std::remove(device.procs.begin(), device.procs.end(), nullptr), device.procs.end());
}

OSStatus settleDriver(const DeviceRef& device)
{
    Driver driver;
    bool isRunning;
    {
        const std::lock_guard<std::mutex> lock(device->cycleLock);
        driver = device->driver;
        isRunning = device->isRunning;
    }
    if (driver == Driver::hardware && isRunning) return openHardware(device);
    closeHardware(device);
    if (driver == Driver::timer && isRunning) ensureTimerThread(device);
    return noErr;
}

void beginDiscarding(const DeviceRef& device)
{
    const std::lock_guard<std::mutex> control(device->control);
    {
        const std::lock_guard<std::mutex> lock(device->cycleLock);
        device->isDiscarding = true;
        device->driver = Driver::timer;
        device->timerWake.notify_all();
    }
    settleDriver(device);
}

} // namespace kvxplatform::hal

using namespace kvxplatform::hal;

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void* client)
{
    return add(device, proc, client, false, nullptr);
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc proc)
{
    return remove(device, proc, false);
}

OSStatus AudioDeviceCreateIOProcID(AudioDeviceID device, AudioDeviceIOProc proc, void* client,
                                   AudioDeviceIOProcID* outID)
{
    return outID ? add(device, proc, client, true, outID) : kAudioHardwareIllegalOperationError;
}

OSStatus AudioDeviceDestroyIOProcID(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return remove(device, id, true);
}

OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProcID id) { return start(device, id); }

OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProcID id) { return stop(device, id); }
