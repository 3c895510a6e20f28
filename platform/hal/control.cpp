// The functions of the public control header that concern devices.
#include "platform/hal/apply_settings.h"
#include "platform/hal/copy_text.h"
#include "platform/hal/device_capture.h"
#include "platform/hal/device_changes.h"
#include "platform/hal/device_choice.h"
#include "platform/hal/device_end.h"
#include "platform/hal/driver.h"
#include "platform/hal/find_devices.h"
#include "platform/hal/simulated_device.h"
#include "platform/hal/step.h"
#include "platform/support/border.h"

using namespace kvxplatform::hal;

namespace {

thread_local std::string errorText;
/// Whether the last error is a lack of memory, whose text is a constant.
thread_local bool isOutOfResources = false;

int32_t fail(OSStatus status, const std::string& text)
{
    errorText = text;
    isOutOfResources = false;
    return static_cast<int32_t>(status);
}

/// Run the body of a control function. If the body throws, the caller receives `failure`, and the error text
/// is the constant text for a lack of memory.
template <class Body>
std::invoke_result_t<Body> withErrorText(std::invoke_result_t<Body> failure, Body body) noexcept
{
    bool hasReturned = false;
    const std::invoke_result_t<Body> result = kvxplatform::withinBorder(failure, [&] {
        const std::invoke_result_t<Body> value = body();
        hasReturned = true;
        return value;
    });
    if (!hasReturned) isOutOfResources = true;
    return result;
}

int32_t noSuchDevice(KVXDeviceID id)
{
    return fail(kAudioHardwareBadDeviceError,
                "there is no device " + std::to_string(id) + "; `kvx devices` lists the devices");
}

int32_t notSimulated(const DeviceRef& device)
{
    return fail(kAudioHardwareUnsupportedOperationError,
                "\"" + device->name + "\" is not a simulated device; choose a simulated device");
}

/// Run the body of a control function that concerns one device. `find` looks the device up.
template <class Find, class Body>
int32_t withDevice(Find find, KVXDeviceID id, Body body) noexcept
{
    return withErrorText(int32_t{kAudioHardwareUnspecifiedError}, [&]() -> int32_t {
        const DeviceRef device = find(id);
        return device ? body(device) : noSuchDevice(id);
    });
}

/// Return why a simulated device cannot have these settings, or null if it can. An argument of 0 keeps the
/// present setting.
const char* refusalOf(double rate, uint32_t channels, uint32_t slice, uint32_t inputs = 0)
{
    if (rate != 0 && !(rate >= lowestRate && rate <= highestRate))
        return "a simulated device runs at 1000 to 768000 Hz";
    if (channels > mostChannels || inputs > mostChannels) return "a simulated device has at most 64 channels";
    if (slice > largestSlice) return "a simulated device's slice has at most 8192 frames";
    return nullptr;
}

KVXDeviceInfo infoOf(const Device& device, AudioObjectID defaultOutput)
{
    KVXDeviceInfo row = {};
    row.device = static_cast<KVXDeviceID>(device.id);
    copyText(row.name, device.name);
    copyText(row.manufacturer, device.manufacturer);
    copyText(row.uid, device.uid);
    row.sampleRate = device.settings.rate;
    row.outputChannels = static_cast<uint32_t>(device.settings.outputChannels);
    row.inputChannels = static_cast<uint32_t>(device.settings.inputChannels);
    row.sliceFrames = static_cast<uint32_t>(device.settings.sliceFrames);
    row.latencyFrames = static_cast<uint32_t>(device.settings.latencyFrames);
    row.isSimulated = device.isSimulated;
    row.isDefaultOutput = device.id == defaultOutput;
    row.isAlive = device.isAlive;
    row.isRunning = device.isRunning();
    copyText(row.system, device.system);
    return row;
}

/// Copy up to `capacity` devices into rows, with propertyLock. Returns the number of devices.
uint32_t copyRows(const std::vector<DeviceRef>& devices, const DeviceList& list, KVXDeviceInfo* rows,
                  uint32_t capacity)
{
    for (std::size_t i = 0; i < devices.size() && i < capacity; ++i)
        rows[i] = infoOf(*devices[i], list.inRole(Role::output));
    return static_cast<uint32_t>(devices.size());
}

void setDriver(const DeviceRef& device, Driver driver)
{
    {
        const std::lock_guard<std::mutex> control(device->control);
        // A device whose output is discarded keeps the timer thread as its driver.
        if (!device->isDiscarding) handOver(device, driver);
    }
    device->scope.wait(); // the last cycle of the former driver may still be in progress
}

} // namespace

const char* KVXPlatformErrorText(void)
{
    return isOutOfResources ? "no memory or no thread is left; close other programs" : errorText.c_str();
}

uint32_t KVXPlatformGetDevices(KVXDeviceInfo* rows, uint32_t capacity)
{
    return withErrorText(uint32_t{0}, [=] {
        const DeviceList& list = deviceList();
        const std::lock_guard<std::mutex> lock(propertyLock);
        return copyRows(list.listed(), list, rows, capacity);
    });
}

uint32_t KVXPlatformFindDevices(const char* text, KVXDeviceInfo* rows, uint32_t capacity)
{
    return withErrorText(uint32_t{0}, [=] {
        const DeviceList& list = deviceList();
        const std::lock_guard<std::mutex> lock(propertyLock);
        return copyRows(devicesFitting(list.listed(), text ? text : ""), list, rows, capacity);
    });
}

KVXDeviceID KVXPlatformBuiltInSimulatedDevice(void)
{
    return withErrorText(KVXDeviceID{0}, [&]() -> KVXDeviceID {
        return static_cast<KVXDeviceID>(builtInSimulatedDevice()->id);
    });
}

KVXDeviceID KVXPlatformAddSimulatedDevice(const KVXSimulatedDevice* description)
{
    return withErrorText(KVXDeviceID{0}, [&]() -> KVXDeviceID {
        if (!description) {
            fail(kAudioHardwareIllegalOperationError,
                 "a simulated device needs a description, which may be all zero");
            return 0;
        }
        if (const char* refusal = refusalOf(description->sampleRate, description->outputChannels,
                                            description->sliceFrames, description->inputChannels)) {
            fail(kAudioDeviceUnsupportedFormatError, refusal);
            return 0;
        }
        const DeviceRef device = makeSimulatedDevice(*description);
        addDevice(device);
        return static_cast<KVXDeviceID>(device->id);
    });
}

int32_t KVXPlatformRemoveSimulatedDevice(KVXDeviceID id)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        if (!device->isSimulated) return notSimulated(device);
        if (device == builtInSimulatedDevice())
            return fail(kAudioHardwareUnsupportedOperationError,
                        "the built-in simulated device is always there; add another one to remove it again");
        unplug(device);
        return noErr;
    });
}

int32_t KVXPlatformKillDevice(KVXDeviceID id)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        if (device == builtInSimulatedDevice())
            return fail(kAudioHardwareUnsupportedOperationError,
                        "the built-in simulated device is always there; add another one to let it die");
        markDead(device);
        return noErr;
    });
}

int32_t KVXPlatformRefuseStart(KVXDeviceID id, int32_t status)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        device->startRefusal = status;
        return noErr;
    });
}

int32_t KVXPlatformConfigureDevice(KVXDeviceID id, double sampleRate, uint32_t outputChannels,
                                   uint32_t sliceFrames)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        if (!device->isSimulated) return notSimulated(device);
        if (const char* refusal = refusalOf(sampleRate, outputChannels, sliceFrames))
            return fail(kAudioDeviceUnsupportedFormatError, refusal);
        if (outputChannels && !device->outputStream)
            return fail(kAudioDeviceUnsupportedFormatError,
                        "\"" + device->name + "\" has no output, so its channels stay as they are; pass 0");
        Settings before, after;
        {
            const std::lock_guard<std::mutex> lock(propertyLock);
            Settings& settings = device->settings;
            before = settings;
            if (sampleRate != 0) settings.rate = sampleRate;
            if (outputChannels) settings.outputChannels = outputChannels;
            if (sliceFrames) settings.sliceFrames = sliceFrames;
            device->outputLevels.resize(settings.outputChannels);
            after = settings;
        }
        // The levels are applied before the settings, so an added channel has its level at its first frame.
        applyLevels(device);
        applySettings(device);
        postSettingChanges(*device, before, after);
        return noErr;
    });
}

int32_t KVXPlatformChooseOutputDevice(const char* choice)
{
    return withErrorText(int32_t{kAudioHardwareUnspecifiedError}, [&]() -> int32_t {
        std::string error;
        if (choice && chooseOutput(choice, error)) return noErr;
        return fail(kAudioHardwareBadDeviceError, choice ? error : "no device was named");
    });
}

int32_t KVXPlatformRefreshDevices(void)
{
    return withErrorText(int32_t{kAudioHardwareUnspecifiedError}, [&]() -> int32_t {
        std::string error;
        return refreshHardware(error) ? int32_t{noErr} : fail(kAudioHardwareUnspecifiedError, error);
    });
}

int32_t KVXPlatformCheckHardware(void)
{
    return withErrorText(int32_t{kAudioHardwareUnspecifiedError}, [&]() -> int32_t {
        const std::string error = hardwareError();
        return error.empty() ? int32_t{noErr} : fail(kAudioHardwareUnspecifiedError, error);
    });
}

int32_t KVXPlatformSetStepped(KVXDeviceID id, uint8_t isStepped)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        if (!device->isSimulated) return notSimulated(device);
        setDriver(device, isStepped ? Driver::steps : Driver::timer);
        return noErr;
    });
}

uint32_t KVXPlatformStep(KVXDeviceID id, uint32_t frames)
{
    return withErrorText(uint32_t{0}, [&]() -> uint32_t {
        const DeviceRef device = findDevice(id);
        return device ? static_cast<uint32_t>(stepDevice(*device, frames)) : 0;
    });
}

int32_t KVXPlatformSetOutputTap(KVXDeviceID id, KVXOutputTap tap, void* context)
{
    return withDevice(findDeviceForProcs, id, [&](const DeviceRef& device) -> int32_t {
        setTap(*device, tap, context);
        return noErr;
    });
}

int32_t KVXPlatformStartCapture(KVXDeviceID id, const char* path)
{
    return withDevice(findDevice, id, [&](const DeviceRef& device) -> int32_t {
        if (!path || !*path) return fail(kAudioHardwareIllegalOperationError, "a capture needs a file name");
        Settings settings;
        {
            const std::lock_guard<std::mutex> lock(propertyLock);
            settings = device->settings;
        }
        if (!settings.outputChannels)
            return fail(kAudioHardwareUnsupportedOperationError,
                        "\"" + device->name + "\" has no output to capture");
        if (const int32_t status = KVXPlatformStopCapture(id); status != noErr) return status;
        std::string error;
        if (!startCapture(*device, CaptureOwner::program, path, settings, error))
            return fail(kAudioHardwareUnspecifiedError, error);
        return noErr;
    });
}

int32_t KVXPlatformStopCapture(KVXDeviceID id)
{
    return withErrorText(int32_t{kAudioHardwareUnspecifiedError}, [&]() -> int32_t {
        const DeviceRef device = findDeviceForProcs(id);
        if (!device) return noErr; // the end of the device has finished the capture
        std::string error;
        return finishCapture(*device, CaptureOwner::program, error)
                   ? noErr
                   : fail(kAudioHardwareUnspecifiedError, error);
    });
}
