// The public functions that add, start, stop and remove procedures of a device.
//
// Inside a cycle these functions only set flags, which take effect at once, and the housekeeper thread does
// the rest. On other threads stop and removal wait, without a mutex, until the procedure's call in progress
// has returned.
#include "platform/hal/cycle.h"
#include "platform/hal/device_end.h"
#include "platform/hal/device_list.h"
#include "platform/hal/driver.h"
#include "platform/hal/environment_capture.h"
#include "platform/hal/housekeeper_signal.h"
#include "platform/support/border.h"
#include "platform/support/live_count.h"
#include "platform/support/wait_until.h"

namespace kvxplatform::hal {

namespace {

LiveCount addedProcs("IOProc");

/// Find a listed device, or an unplugged device whose cycles still run. Inside the device's own cycle no
/// mutex is locked.
DeviceRef findForProcs(AudioDeviceID id)
{
    if (deviceInCycle && deviceInCycle->id == id) return DeviceRef(DeviceRef(), deviceInCycle);
    return findDeviceForProcs(id);
}

/// Call `use` with the procedure's IOProc object. Returns false if the device has no such procedure.
template <class Use>
bool withProc(Device& device, AudioDeviceIOProcID id, Pick pick, Use use)
{
    if (deviceInCycle != &device) return device.procs.with(id, pick, use);
    IOProc* const found = device.procs.findInCycle(id, device.called, pick);
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
    device.hasNewRunningState = true;
    housekeeperSignal().raise();
}

/// Set whether a procedure is started. Returns true if that changed.
bool setStarted(Device& device, IOProc& proc, bool isStarted)
{
    const bool isChanged = proc.isStarted.exchange(isStarted) != isStarted;
    if (isChanged) countStart(device, isStarted ? 1 : -1);
    return isChanged;
}

/// Wait until the procedure's call in progress has returned. Waiting for the whole cycle could deadlock,
/// because another procedure in the same cycle may be waiting for the calling thread.
void waitForCall(const Device& device, const IOProc* proc)
{
    if (deviceInCycle) return;
    waitUntil([&] { return device.called != proc; });
}

OSStatus add(AudioDeviceID id, AudioDeviceIOProc proc, void* client, bool hasUniqueID,
             AudioDeviceIOProcID* outID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    if (!proc) return kAudioHardwareIllegalOperationError;
    auto entry = std::make_shared<IOProc>(proc, client, hasUniqueID);
    const AudioDeviceIOProcID newID = entry->id();
    if (!device->procs.add(std::move(entry))) return kAudioHardwareIllegalOperationError;
    if (outID) *outID = newID;
    addedProcs.add();
    return noErr;
}

OSStatus remove(AudioDeviceID id, AudioDeviceIOProcID proc, bool hasUniqueID)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    const IOProc* removed = nullptr;
    withProc(*device, proc, Pick::oldest, [&](IOProc& found) {
        if (found.hasUniqueID != hasUniqueID || found.isRemoved.exchange(true)) return;
        removed = &found;
        setStarted(*device, found, false);
    });
    if (!removed) return kAudioHardwareIllegalOperationError;
    addedProcs.remove();
    if (deviceInCycle) {
        device->hasRemovedProcs = true;
        housekeeperSignal().raise();
        return noErr;
    }
    waitForCall(*device, removed);
    const std::lock_guard<std::mutex> control(device->control);
    settleDriver(device);
    device->procs.sweep();
    forgetIfUnused(device);
    return noErr;
}

/// One start or stop of a procedure. `proc` is valid while `control` is held or during the procedure's call.
struct Transition {
    IOProc* proc = nullptr; ///< the procedure; null for a start or stop of the device itself
    bool isChange = false;  ///< false if the procedure was already started or stopped
};

/// Start or stop a procedure, or count a start or stop of the device itself.
OSStatus makeTransition(Device& device, AudioDeviceIOProcID proc, bool isStarted, Transition& made)
{
    if (!proc) {
        if (!isStarted && device.startsWithoutProc.fetch_sub(1) <= 0) {
            ++device.startsWithoutProc;
            return kAudioHardwareIllegalOperationError;
        }
        if (isStarted) ++device.startsWithoutProc;
        countStart(device, isStarted ? 1 : -1);
        made.isChange = true;
        return noErr;
    }
    bool isPresent = true;
    const Pick pick = isStarted ? Pick::newestAtRest : Pick::oldest;
    const bool isFound = withProc(device, proc, pick, [&](IOProc& found) {
        isPresent = !found.isRemoved;
        if (isPresent) made.isChange = setStarted(device, found, isStarted);
        // The cycle may call a started procedure before this line, and that call may remove the procedure.
        // The start has succeeded nevertheless.
        if (found.isRemoved) setStarted(device, found, false);
        made.proc = &found;
    });
    return isFound && isPresent ? OSStatus{noErr} : OSStatus{kAudioHardwareIllegalOperationError};
}

/// Undo a start of exactly the IOProc object that was started, because other IOProcs may have the same ID.
void undoStart(Device& device, const Transition& made)
{
    if (!made.isChange) return;
    if (made.proc) {
        setStarted(device, *made.proc, false);
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
    Transition made;
    // After a call inside an I/O cycle the housekeeper thread starts the driver later.
    if (deviceInCycle) return makeTransition(*device, proc, true, made);

    startCaptureOfEnvironment(device);
    const std::lock_guard<std::mutex> control(device->control);
    if (const OSStatus status = makeTransition(*device, proc, true, made); status != noErr) return status;
    const OSStatus status =
        withinBorder(kAudioHardwareUnspecifiedError, [&] { return settleDriver(device); });
    if (status != noErr) undoStart(*device, made);
    return status;
}

OSStatus stop(AudioDeviceID id, AudioDeviceIOProcID proc)
{
    const DeviceRef device = findForProcs(id);
    if (!device) return kAudioHardwareBadDeviceError;
    Transition stopped;
    if (const OSStatus status = makeTransition(*device, proc, false, stopped); status != noErr) return status;
    if (deviceInCycle) return noErr;
    if (stopped.proc) waitForCall(*device, stopped.proc);
    const std::lock_guard<std::mutex> control(device->control);
    settleDriver(device);
    forgetIfUnused(device);
    return noErr;
}

} // namespace

} // namespace kvxplatform::hal

using namespace kvxplatform::hal;
using kvxplatform::withinBorder;

OSStatus AudioDeviceAddIOProc(AudioDeviceID device, AudioDeviceIOProc proc, void* client)
{
    return withinBorder(kAudioHardwareUnspecifiedError,
                        [&] { return add(device, proc, client, false, nullptr); });
}

OSStatus AudioDeviceRemoveIOProc(AudioDeviceID device, AudioDeviceIOProc proc)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return remove(device, proc, false); });
}

OSStatus AudioDeviceCreateIOProcID(AudioDeviceID device, AudioDeviceIOProc proc, void* client,
                                   AudioDeviceIOProcID* outID)
{
    if (!outID) return kAudioHardwareIllegalOperationError;
    return withinBorder(kAudioHardwareUnspecifiedError,
                        [&] { return add(device, proc, client, true, outID); });
}

OSStatus AudioDeviceDestroyIOProcID(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return remove(device, id, true); });
}

OSStatus AudioDeviceStart(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return start(device, id); });
}

OSStatus AudioDeviceStop(AudioDeviceID device, AudioDeviceIOProcID id)
{
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return stop(device, id); });
}
