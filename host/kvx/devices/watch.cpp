#include "host/kvx/devices/watch.h"

#include "host/kvx/devices/device_text.h"
#include "host/kvx/text/failure.h"

#include <KVXPlatform/KVXPlatform.h>

#include <fmt/core.h>

#include <algorithm>

namespace kvx {
namespace {

constexpr const char* listenerClass = "CoreAudioListenerKVX";
constexpr Code anyScope = '****';
constexpr std::uint32_t anyElement = 0xFFFFFFFF;

constexpr const char* systemSelectors[] = {
    "kAudioHardwarePropertyDevices", "kAudioHardwarePropertyDefaultOutputDevice",
    "kAudioHardwarePropertyDefaultSystemOutputDevice", "kAudioHardwarePropertyDefaultInputDevice"};

constexpr const char* deviceSelectors[] = {
    "kAudioDevicePropertyDeviceIsAlive",      "kAudioDevicePropertyDeviceIsRunning",
    "kAudioDevicePropertyNominalSampleRate",  "kAudioDevicePropertyBufferFrameSize",
    "kAudioDevicePropertyVolumeScalar",       "kAudioDevicePropertyMute",
    "kAudioDevicePropertyStreamConfiguration"};

} // namespace

Watch::Watch(host::Host& host, const CoreAudio& core, Report report)
    : host_(host), core_(core), report_(std::move(report))
{
    for (const char* selector : systemSelectors) {
        systemListeners_.push_back(listen(systemObject, selector));
        const auto status = static_cast<Status>(systemListeners_.back().get("LastError").integer());
        if (status != 0)
            throw Failure(fmt::format("--watch: no listener can be added: {}; close other programs",
                                      formatStatus(status)));
    }
    // Each device gets listeners before its properties are read, so that no change is missed.
    for (ObjectID device : readDeviceList(core_)) beginWatching(device);
    roles_ = readRoles(core_);
}

void Watch::report(const std::string& line)
{
    ++reportCount_;
    report_(line);
}

host::Object Watch::listen(ObjectID object, const char* selectorName)
{
    const Code selector = core_.selectorNamed(selectorName).value_or(0);
    host::Object listener = host_.create(listenerClass, object, selector, anyScope, anyElement);
    listener.on("Changed", [this](host::Object& sender, const std::vector<host::Value>&) {
        changed_.insert(static_cast<ObjectID>(sender.get("ObjectID").unsigned64()));
        return host::Value();
    });
    return listener;
}

void Watch::beginWatching(ObjectID device)
{
    Watched watched;
    for (const char* selector : deviceSelectors) watched.listeners.push_back(listen(device, selector));
    std::optional<DeviceFacts> facts = readDeviceFacts(core_, device);
    if (!facts) return; // the device was removed, and an event of the device list follows
    watched.facts = std::move(*facts);
    watched_[device] = std::move(watched);
    order_.push_back(device);
}

std::string Watch::nameOf(ObjectID device) const
{
    if (device == 0) return "none";
    const auto found = watched_.find(device);
    return found == watched_.end() ? fmt::format("id {}", device) : formatDevice(found->second.facts);
}

void Watch::updateList()
{
    const std::vector<ObjectID> now = readDeviceList(core_);
    std::vector<ObjectID> gone;
    for (ObjectID device : order_)
        if (std::find(now.begin(), now.end(), device) == now.end()) gone.push_back(device);
    for (ObjectID device : now) {
        if (watched_.count(device)) continue;
        beginWatching(device);
        if (watched_.count(device)) report(formatArrival(watched_[device].facts));
    }
    updateRoles(); // names removed devices too, so these are erased afterwards
    for (ObjectID device : gone) {
        report(formatDeparture(watched_[device].facts));
        watched_.erase(device);
        order_.erase(std::find(order_.begin(), order_.end(), device));
    }
}

void Watch::updateRoles()
{
    const Roles now = readRoles(core_);
    for (const std::string& line : changesOfRoles(roles_, now, [this](ObjectID id) { return nameOf(id); }))
        report(line);
    roles_ = now;
}

void Watch::updateDevice(ObjectID device)
{
    const auto found = watched_.find(device);
    if (found == watched_.end()) return;
    std::optional<DeviceFacts> facts = readDeviceFacts(core_, device);
    if (!facts) return; // the device was removed, and an event of the device list follows
    for (const std::string& line : changesOfDevice(found->second.facts, *facts)) report(line);
    found->second.facts = std::move(*facts);
}

bool Watch::reportChanges(double seconds)
{
    const std::size_t countBefore = reportCount_;
    KVXPlatformDrainMainQueue(seconds);
    host_.rethrow();
    const std::set<ObjectID> changed = std::exchange(changed_, {});
    for (ObjectID object : changed)
        if (object != systemObject) updateDevice(object);
    if (changed.count(systemObject)) updateList();
    return reportCount_ != countBefore;
}

std::vector<DeviceFacts> Watch::devices() const
{
    std::vector<DeviceFacts> devices;
    for (ObjectID id : order_) devices.push_back(watched_.at(id).facts);
    return devices;
}

} // namespace kvx
