#include "platform/hal/find_devices.h"

#include "platform/hal/device_choice.h"
#include "platform/hal/device_end.h"
#include "platform/hal/environment_capture.h"
#include "platform/hal/listeners.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/simulated_device.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>

namespace kvxplatform::hal {

namespace {

/// Results of the device search that are not in the device list. They are never freed, because threads may
/// outlive main().
struct Found {
    DeviceRef builtIn;
    std::string hardwareError; ///< reason why PortAudio's devices could not be read; guarded by propertyLock
};
Found& found()
{
    static Found& instance = *new Found;
    return instance;
}

/// The output device that KVX_AUDIO_DEVICE names; without the variable, the first output device that opens.
DeviceRef initialOutput(const DeviceList& list, const char* choice)
{
    const std::vector<DeviceRef>& devices = list.listed();
    const DeviceRef& working = *std::find_if(devices.begin(), devices.end(), [](const DeviceRef& device) {
        return device->isSimulated || canOpen(*device, device->settings);
    });
    if (!choice) return working;
    std::string error;
    if (DeviceRef chosen = findOutputByChoice(devices, found().builtIn, choice, error)) return chosen;
    std::fprintf(stderr,
                 "KVX_AUDIO_DEVICE: %s; playing to \"%s\". Set it to one of these names or numbers, or "
                 "to \"simulated\"\n",
                 error.c_str(), working->name.c_str());
    return working;
}

bool setDefault(Role role, AudioObjectID id)
{
    DeviceList& list = deviceList();
    DeviceList::Change change;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        change = list.setInRole(role, id);
    }
    if (change == DeviceList::Change::done) postChange(kAudioObjectSystemObject, selectorOf(role));
    return change != DeviceList::Change::refused;
}

} // namespace

void findDevices(DeviceList& list)
{
    const char* choice = std::getenv("KVX_AUDIO_DEVICE");
    if (choice && !*choice) choice = nullptr;
    readCaptureEnvironment();
    // If the user chose the simulated device, PortAudio is not started, because its start takes time and may
    // write messages.
    if (!choice || std::string(choice) != "simulated")
        for (const DeviceRef& device : readHardware(found().hardwareError)) list.add(device);
    found().builtIn = makeSimulatedDevice({});
    list.add(found().builtIn);
    list.add(makeSimulatedInput());

    const DeviceRef output = initialOutput(list, choice);
    list.setInRole(Role::output, output->id);
    list.setInRole(Role::systemOutput, output->id);
    list.moveRoles(); // makes a device the default input
}

void addDevice(const DeviceRef& device)
{
    DeviceList& list = deviceList();
    Selectors changed = {kAudioHardwarePropertyDevices, kAudioObjectPropertyOwnedObjects};
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        list.add(device);
        for (AudioObjectPropertySelector selector : list.moveRoles()) changed.push_back(selector);
    }
    for (AudioObjectPropertySelector selector : changed) postChange(kAudioObjectSystemObject, selector);
}

bool chooseOutput(const std::string& choice, std::string& error)
{
    const DeviceRef device = findOutputByChoice(listedDevices(), builtInSimulatedDevice(), choice, error);
    if (!device) return false;
    if (setDefault(Role::output, device->id) && setDefault(Role::systemOutput, device->id)) return true;
    error = "\"" + device->name + "\" is no longer alive; choose another device";
    return false;
}

bool refreshHardware(std::string& error)
{
    const std::vector<DeviceRef> current = readHardwareAnew(error);
    if (!error.empty()) return false;
    const std::vector<DeviceRef> known = listedDevices();
    const auto contains = [](const std::vector<DeviceRef>& devices, const DeviceRef& device) {
        return std::any_of(devices.begin(), devices.end(),
                           [&](const DeviceRef& each) { return each->uid == device->uid; });
    };
    std::vector<DeviceRef> staying, leaving;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        found().hardwareError.clear();
        for (const DeviceRef& device : known)
            if (!device->isSimulated)
                (device->isAlive && contains(current, device) ? staying : leaving).push_back(device);
    }
    for (const DeviceRef& device : leaving) unplug(device);
    for (const DeviceRef& device : current)
        if (!contains(staying, device)) addDevice(device);
    return true;
}

std::string hardwareError()
{
    deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    return found().hardwareError;
}

DeviceRef builtInSimulatedDevice()
{
    deviceList();
    return found().builtIn;
}

} // namespace kvxplatform::hal
