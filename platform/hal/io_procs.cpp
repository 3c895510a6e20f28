#include "platform/hal/io_procs.h"

#include "platform/hal/cycle.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/timer_driver.h"
#include "platform/hal/tree.h"
#include "platform/support/border.h"
#include "platform/support/live_count.h"
#include "platform/support/wait_until.h"

namespace kvxplatform::hal {

namespace {

LiveCount addedProcs("IOProc");

/// The device, for procedures: also one that is unplugged and still turned. In its own cycle no lock is
/// taken.
DeviceRef findForProcs(AudioDeviceID id)
{
    if (turningDevice && turningDevice->id == id) return DeviceRef(DeviceRef(), turningDevice);
    return findDeviceForProcs(id);
}

/// Run `use` on the procedure's record; false if there is none.
template <class Use>
bool withProc(Device& device, AudioDeviceIOProcID id, Pick pick, Use use)
{
    if (turningDevice != &device) return device.procs.with(id, pick, use);
    IOProc* found = device.procs.findInCycle(id, device.called, pick);
    if (!found) return false;
    use(*found);
    return true;
}

void countStart(Device& device, int change)
{
    if (change > 0 && !device.isRunning()) device.hasJustStarted = true;
    const int before = device.starts.fetch_add(change);
    if ((before > 0) == (before + change > 0)) return;
    if (change > 0) device.timerWake.raise();
    device.hasNewsOfRunning = true;
    wakeHousekeeper();
}

/// True if it was not so before.
bool setStarted(Device& device, IOProc& proc, bool isStarted)
{
    const bool isNews = proc.isStarted.exchange(isStarted) != isStarted;
    if (isNews) countStart(device, isStarted ? 1 : -1);
    return isNews;
}

/// Wait for the end of a call of the procedure. Never blocks inside a cycle: there the flags suffice.
void waitForCall(const Device& device, const IOProc* proc)
{
    if (turningDevice) return;
    waitUntil([&] { return device.called != proc; });
}

OSStatus add(AudioDeviceID id, AudioDeviceIOProc proc, void* client, bool hasOwnID,
             AudioDeviceIOProcID* outID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (!proc) return kAudioHardwareIllegalOperationError;
    auto entry = std::make_unique<IOProc>(proc, client, hasOwnID);
    const AudioDeviceIOProcID newID = entry->id();
    if (!device->procs.add(std::move(entry))) return kAudioHardwareIllegalOperationError;
    if (outID) *outID = newID;
    addedProcs.add();
    return noErr;
}

OSStatus remove(AudioDeviceID id, AudioDeviceIOProcID proc, bool hasOwnID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    const IOProc* removed = nullptr;
    withProc(*device, proc, Pick::oldest, [&](IOProc& found) {
        if (found.hasOwnID != hasOwnID || found.isRemoved.exchange(true)) return;
        removed = &found;
        setStarted(*device, found, false);
    });
    if (!removed) return kAudioHardwareIllegalOperationError;
    addedProcs.remove();
    if (turningDevice) {
        device->hasRemovedProcs = true;
        wakeHousekeeper();
        return noErr;
    }
    waitForCall(*device, removed);
    const std::lock_guard<std::mutex> control(device->control);
    settleDriver(device);
    device->procs.sweep();
    forgetIfUnused(device);
    return noErr;
}

/// What a start or stop marked. The record lives as long as `control` is held, or its call is under way.
struct Marked {
    IOProc* proc = nullptr; ///< null: the device itself
    bool isNews = false;    ///< the mark was not there before
};

/// Set the mark of a procedure, or count a start or stop of the device itself.
OSStatus mark(Device& device, AudioDeviceIOProcID proc, bool isStarted, Marked& marked)
{
    if (!proc) {
        if (!isStarted && device.startsWithoutProc.fetch_sub(1) <= 0) {
            ++device.startsWithoutProc;
            return kAudioHardwareIllegalOperationError;
        }
        if (isStarted) ++device.startsWithoutProc;
        countStart(device, isStarted ? 1 : -1);
        marked.isNews = true;
        return noErr;
    }
    bool isThere = true;
    const Pick pick = isStarted ? Pick::newestAtRest : Pick::oldest;
    const bool isFound = withProc(device, proc, pick, [&](IOProc& found) {
        isThere = !found.isRemoved;
        if (isThere) marked.isNews = setStarted(device, found, isStarted);
        // Once started it may be called, and remove itself, before this looks again. It was started all the
        // same.
        if (found.isRemoved) setStarted(device, found, false);
        marked.proc = &found;
    });
    return isFound && isThere ? OSStatus{noErr} : OSStatus{kAudioHardwareIllegalOperationError};
}

/// Take back a start: of the record that was marked, whatever others bear the same name.
void unmark(Device& device, const Marked& marked)
{
    if (!marked.isNews) return;
    if (marked.proc) {
        setStarted(device, *marked.proc, false);
    } else {
        --device.startsWithoutProc;
        countStart(device, -1);
    }
}

OSStatus start(AudioDeviceID id, AudioDeviceIOProcID proc)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (const OSStatus refusal = device->startRefusal; refusal != noErr) return refusal;
    Marked marked;
    if (turningDevice) return mark(*device, proc, true, marked); // the housekeeper sees to the driver

    startCaptureOfEnvironment(device);
    const std::lock_guard<std::mutex> control(device->control);
    if (const OSStatus status = mark(*device, proc, true, marked); status != noErr) return status;
    const OSStatus status =
        withinBorder(kAudioHardwareUnspecifiedError, [&] { return settleDriver(device); });
    if (status != noErr) unmark(*device, marked);
    return status;
}

OSStatus stop(AudioDeviceID id, AudioDeviceIOProcID proc)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    Marked stopped;
    if (const OSStatus status = mark(*device, proc, false, stopped); status != noErr) return status;
    if (turningDevice) return noErr;
    if (stopped.proc) waitForCall(*device, stopped.proc);
    const std::lock_guard<std::mutex> control(device->control);
    settleDriver(device);
    forgetIfUnused(device);
    return noErr;
}

} // namespace

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

void waitForTurn(Device& device) { const std::lock_guard<std::mutex> lock(device.turnLock); }

void beginDiscarding(const DeviceRef& device)
{
    {
        const std::lock_guard<std::mutex> control(device->control);
        device->isDiscarding = true;
        handOver(device, Driver::timer);
    }
    waitForTurn(*device);
}

} // namespace kvxplatform::hal

using namespace kvxplatform::hal;

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void* client)
{
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError,
                                     [&] { return add(device, proc, client, false, nullptr); });
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc proc)
{
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError,
                                     [&] { return remove(device, proc, false); });
}

OSStatus AudioDeviceCreateIOProcID(AudioDeviceID device, AudioDeviceIOProc proc, void* client,
                                   AudioDeviceIOProcID* outID)
{
    if (!outID) return kAudioHardwareIllegalOperationError;
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError,
                                     [&] { return add(device, proc, client, true, outID); });
}

OSStatus AudioDeviceDestroyIOProcID(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError,
                                     [&] { return remove(device, id, true); });
}

OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError, [&] { return start(device, id); });
}

OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return kvxplatform::withinBorder(kAudioHardwareUnspecifiedError, [&] { return stop(device, id); });
}
