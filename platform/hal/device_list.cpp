#include "platform/hal/device_list.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

DeviceRef byID(const std::vector<DeviceRef>& devices, AudioObjectID id)
{
    const auto found =
        std::find_if(devices.begin(), devices.end(), [id](const DeviceRef& each) { return each->id == id; });
    return found == devices.end() ? nullptr : *found;
}

void erase(std::vector<DeviceRef>& devices, const DeviceRef& device)
{
    devices.erase(std::remove(devices.begin(), devices.end(), device), devices.end());
}

} // namespace

void DeviceList::add(const DeviceRef& device)
{
    device->id = nextID_++;
    if (device->settings.outputChannels) device->outputStream = nextID_++;
    if (device->settings.inputChannels) device->inputStream = nextID_++;
    device->outputLevels.resize(device->settings.outputChannels);
    for (std::atomic<float>& gain : device->targetGains) gain = 1.0f;
    // The `control` mutex is not needed, because no other thread knows the device yet.
    device->buffers.publish(std::make_unique<CycleBuffers>(device->settings), device->scope);
    device->applied = device->settings;
    listed_.push_back(device);
}

void DeviceList::unplug(const DeviceRef& device)
{
    erase(listed_, device);
    unplugged_.push_back(device);
}

void DeviceList::forget(const DeviceRef& device) { erase(unplugged_, device); }

std::vector<AudioObjectID> DeviceList::ids() const
{
    std::vector<AudioObjectID> ids;
    for (const DeviceRef& device : listed_) ids.push_back(device->id);
    return ids;
}

DeviceRef DeviceList::find(AudioObjectID id) const { return byID(listed_, id); }

DeviceRef DeviceList::findUnplugged(AudioObjectID id) const { return byID(unplugged_, id); }

StreamRef DeviceList::findStream(AudioObjectID id) const
{
    for (const DeviceRef& device : listed_) {
        if (id && device->outputStream == id) return {device, false};
        if (id && device->inputStream == id) return {device, true};
    }
    return {};
}

std::vector<DeviceRef> DeviceList::all() const
{
    std::vector<DeviceRef> all = listed_;
    all.insert(all.end(), unplugged_.begin(), unplugged_.end());
    return all;
}

bool DeviceList::canHave(Role role, const Device& device) const
{
    const Settings& settings = device.settings;
    return device.isAlive && device.isListed &&
           (role == Role::input ? settings.inputChannels : settings.outputChannels) > 0;
}

DeviceList::Change DeviceList::setInRole(Role role, AudioObjectID id)
{
    const DeviceRef device = find(id);
    if (!device || !canHave(role, *device)) return Change::refused;
    if (inRole(role) == id) return Change::none;
    roles_[static_cast<std::size_t>(role)] = id;
    return Change::done;
}

Selectors DeviceList::moveRoles()
{
    Selectors changed;
    for (Role role : {Role::output, Role::systemOutput, Role::input}) {
        const DeviceRef holder = find(inRole(role));
        if (holder && canHave(role, *holder)) continue;
        AudioObjectID next = 0;
        for (const DeviceRef& device : listed_) {
            if (!canHave(role, *device)) continue;
            if (!next || !device->isSimulated) next = device->id;
            if (!device->isSimulated) break;
        }
        if (next == inRole(role)) continue;
        roles_[static_cast<std::size_t>(role)] = next;
        changed.push_back(selectorOf(role));
    }
    return changed;
}

AudioObjectPropertySelector selectorOf(Role role)
{
    switch (role) {
    case Role::output:
        return kAudioHardwarePropertyDefaultOutputDevice;
    case Role::systemOutput:
        return kAudioHardwarePropertyDefaultSystemOutputDevice;
    default:
        return kAudioHardwarePropertyDefaultInputDevice;
    }
}

DeviceList& deviceList()
{
    // The device list is never freed, because threads may outlive main().
    static DeviceList& list = []() -> DeviceList& {
        auto& made = *new DeviceList;
        findDevices(made);
        return made;
    }();
    static const bool isWatched = (startHousekeeper(), true);
    (void)isWatched;
    return list;
}

DeviceRef findDevice(AudioObjectID id)
{
    const DeviceList& list = deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    return list.find(id);
}

DeviceRef findDeviceForProcs(AudioObjectID id)
{
    const DeviceList& list = deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    const DeviceRef device = list.find(id);
    return device ? device : list.findUnplugged(id);
}

StreamRef findStream(AudioObjectID id)
{
    const DeviceList& list = deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    return list.findStream(id);
}

std::vector<DeviceRef> listedDevices()
{
    const DeviceList& list = deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    return list.listed();
}

std::vector<DeviceRef> devicesForProcs()
{
    const DeviceList& list = deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    return list.all();
}

} // namespace kvxplatform::hal
