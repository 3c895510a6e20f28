#include "platform/hal/tree.h"

#include "platform/hal/device_capture.h"
#include "platform/hal/housekeeper.h"
#include "platform/hal/io_procs.h"
#include "platform/hal/listeners.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/simulated_device.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <utility>

namespace kvxplatform::hal {

namespace {

struct Tree {
    std::mutex lock;
    std::vector<DeviceRef> listed, unplugged;
    AudioObjectID nextID = kAudioObjectSystemObject + 1;
    AudioObjectID roles[static_cast<int>(Role::count)] = {};
    DeviceRef builtIn;
    std::string capturePath; ///< of the environment; empty when taken
    std::string hardwareError;
};

struct RoleFacts {
    Role role;
    AudioObjectPropertySelector selector;
    bool isInput;
};
constexpr RoleFacts roleFacts[] = {
    {Role::output, kAudioHardwarePropertyDefaultOutputDevice, false},
    {Role::systemOutput, kAudioHardwarePropertyDefaultSystemOutputDevice, false},
    {Role::input, kAudioHardwarePropertyDefaultInputDevice, true},
};

AudioObjectID& roleOf(Tree& tree, Role role) { return tree.roles[static_cast<int>(role)]; }

bool canHave(const RoleFacts& role, const Device& device)
{
    return device.isAlive && device.isListed &&
           (role.isInput ? device.settings.inputChannels : device.settings.outputChannels) > 0;
}

/// Who takes over a role: the first piece of hardware that works, else the simulated device, else anyone.
AudioObjectID successor(Tree& tree, const RoleFacts& role)
{
    AudioObjectID simulated = 0;
    for (const DeviceRef& device : tree.listed) {
        if (!canHave(role, *device)) continue;
        if (!device->isSimulated) return device->id;
        if (!simulated) simulated = device->id;
    }
    return simulated;
}

void enter(Tree& tree, const DeviceRef& device)
{
    device->id = tree.nextID++;
    if (device->settings.outputChannels) device->outputStream = tree.nextID++;
    if (device->settings.inputChannels) device->inputStream = tree.nextID++;
    device->outputLevels.resize(device->settings.outputChannels);
    for (auto& gain : device->targetGains) gain = 1.0f;
    device->shape = std::make_unique<Shape>(device->settings); // nobody else knows the device yet
    device->applied = device->settings;
    tree.listed.push_back(device);
}

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

/// Which device a user means: "simulated", a number of the list, a name, or a part of one that fits just one.
DeviceRef meantBy(const std::vector<DeviceRef>& devices, const DeviceRef& builtIn, const std::string& choice,
                  std::string& error)
{
    if (choice == "simulated") return builtIn;
    char* end = nullptr;
    const unsigned long number = std::strtoul(choice.c_str(), &end, 10);
    std::vector<DeviceRef> fitting;
    for (std::size_t row = 0; row < devices.size(); ++row) {
        const DeviceRef& device = devices[row];
        if (device->settings.outputChannels == 0) continue;
        const bool isNumber = !choice.empty() && *end == 0 && row == number;
        if (isNumber || device->name == choice || device->uid == choice) return device;
        if (!choice.empty() && lowerCase(device->name).find(lowerCase(choice)) != std::string::npos)
            fitting.push_back(device);
    }
    if (fitting.size() == 1) return fitting[0];
    error = (fitting.empty() ? "there is no output device \"" : "more than one output device fits \"") +
            choice + "\"; there are:";
    for (std::size_t row = 0; row < devices.size(); ++row)
        if (devices[row]->settings.outputChannels)
            error += " " + std::to_string(row) + " \"" + devices[row]->name + "\"";
    return nullptr;
}

void findDevices(Tree& tree)
{
    const char* choice = std::getenv("KVX_AUDIO_DEVICE");
    if (choice && !*choice) choice = nullptr;
    const char* capture = std::getenv("KVX_AUDIO_CAPTURE");
    if (capture) tree.capturePath = capture;

    std::string error;
    // Who wants the simulated device wants quiet and speed: PortAudio is not even started.
    if (!choice || std::string(choice) != "simulated")
        for (const DeviceRef& device : readHardware(tree.hardwareError)) enter(tree, device);
    tree.builtIn = makeSimulatedDevice({});
    enter(tree, tree.builtIn);
    enter(tree, makeSimulatedInput());

    const auto opens = std::find_if(tree.listed.begin(), tree.listed.end(), [](const DeviceRef& device) {
        return device->isSimulated || canOpen(*device, device->settings);
    });
    DeviceRef chosen = *opens;
    const DeviceRef meant = choice ? meantBy(tree.listed, tree.builtIn, choice, error) : chosen;
    if (meant)
        chosen = meant;
    else
        std::fprintf(stderr,
                     "KVX_AUDIO_DEVICE: %s; playing to \"%s\". Set it to one of these names or numbers, or "
                     "to \"simulated\"\n",
                     error.c_str(), chosen->name.c_str());
    roleOf(tree, Role::output) = roleOf(tree, Role::systemOutput) = chosen->id;
    roleOf(tree, Role::input) = successor(tree, roleFacts[static_cast<int>(Role::input)]);
}

/// Lives as long as the process: threads may outlast main.
Tree& tree()
{
    static Tree& instance = []() -> Tree& {
        Tree& made = *new Tree;
        findDevices(made);
        return made;
    }();
    static const bool isKept = (startHousekeeper(), true);
    (void)isKept;
    return instance;
}

template <class List>
DeviceRef byID(const List& devices, AudioObjectID id)
{
    const auto found =
        std::find_if(devices.begin(), devices.end(), [id](const DeviceRef& d) { return d->id == id; });
    return found == devices.end() ? nullptr : *found;
}

/// Move every role away from devices that can no longer have it. Returns what changed.
std::vector<AudioObjectPropertySelector> moveRoles(Tree& tree)
{
    std::vector<AudioObjectPropertySelector> changed;
    for (const RoleFacts& role : roleFacts) {
        const DeviceRef holder = byID(tree.listed, roleOf(tree, role.role));
        if (holder && canHave(role, *holder)) continue;
        const AudioObjectID next = successor(tree, role);
        if (next == roleOf(tree, role.role)) continue;
        roleOf(tree, role.role) = next;
        changed.push_back(role.selector);
    }
    return changed;
}

void finishCapturesAtExit()
{
    for (const DeviceRef& device : devicesForProcs()) finishCaptures(*device);
}

} // namespace

std::mutex& treeLock() { return tree().lock; }

DeviceRef findDevice(AudioObjectID id)
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    return byID(t.listed, id);
}

DeviceRef findDeviceForProcs(AudioObjectID id)
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    const DeviceRef device = byID(t.listed, id);
    return device ? device : byID(t.unplugged, id);
}

StreamRef findStream(AudioObjectID id)
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    for (const DeviceRef& device : t.listed) {
        if (id && device->outputStream == id) return {device, false};
        if (id && device->inputStream == id) return {device, true};
    }
    return {};
}

std::vector<DeviceRef> listedDevices()
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    return t.listed;
}

std::vector<DeviceRef> devicesForProcs()
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    std::vector<DeviceRef> all = t.listed;
    all.insert(all.end(), t.unplugged.begin(), t.unplugged.end());
    return all;
}

AudioObjectID deviceInRole(Role role)
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    return roleOf(t, role);
}

std::vector<AudioObjectID> listedIDsLocked()
{
    std::vector<AudioObjectID> ids;
    for (const DeviceRef& device : tree().listed) ids.push_back(device->id);
    return ids;
}

AudioObjectID deviceInRoleLocked(Role role) { return roleOf(tree(), role); }

AudioObjectID deviceOfUIDLocked(CFStringRef uid)
{
    std::vector<char> text(static_cast<std::size_t>(
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(uid), kCFStringEncodingUTF8) + 1));
    if (!CFStringGetCString(uid, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8))
        return 0;
    for (const DeviceRef& device : tree().listed)
        if (device->uid == text.data()) return device->id;
    return 0;
}

Change setDeviceInRoleLocked(Role role, AudioObjectID id)
{
    Tree& t = tree();
    const DeviceRef device = byID(t.listed, id);
    if (!device || !canHave(roleFacts[static_cast<int>(role)], *device)) return Change::refused;
    if (roleOf(t, role) == id) return Change::none;
    roleOf(t, role) = id;
    return Change::done;
}

namespace {

/// Give a role, and tell listeners. False if the device cannot have it.
bool assign(Role role, AudioObjectID id)
{
    Change change;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        change = setDeviceInRoleLocked(role, id);
    }
    if (change == Change::done)
        postChange(kAudioObjectSystemObject, roleFacts[static_cast<int>(role)].selector);
    return change != Change::refused;
}

} // namespace

DeviceRef enterDevice(const DeviceRef& device)
{
    Tree& t = tree();
    std::vector<AudioObjectPropertySelector> changed = {kAudioHardwarePropertyDevices,
                                                        kAudioObjectPropertyOwnedObjects};
    {
        const std::lock_guard<std::mutex> lock(t.lock);
        enter(t, device);
        for (auto selector : moveRoles(t)) changed.push_back(selector);
    }
    for (auto selector : changed) postChange(kAudioObjectSystemObject, selector);
    return device;
}

namespace {

/// A device leaves the living, and perhaps the list.
void end(const DeviceRef& device, bool isUnplugged)
{
    Tree& t = tree();
    std::vector<AudioObjectPropertySelector> changed;
    bool wasAlive;
    {
        const std::lock_guard<std::mutex> lock(t.lock);
        if (!device->isAlive && (!isUnplugged || !device->isListed)) return;
        wasAlive = std::exchange(device->isAlive, false);
        if (isUnplugged) {
            device->isListed = false;
            t.listed.erase(std::remove(t.listed.begin(), t.listed.end(), device), t.listed.end());
            t.unplugged.push_back(device);
            changed = {kAudioHardwarePropertyDevices, kAudioObjectPropertyOwnedObjects};
        }
        for (auto selector : moveRoles(t)) changed.push_back(selector);
    }
    if (wasAlive) postChange(device->id, kAudioDevicePropertyDeviceIsAlive);
    for (auto selector : changed) postChange(kAudioObjectSystemObject, selector);
    finishCaptures(*device);
    beginDiscarding(device);
    const std::lock_guard<std::mutex> control(device->control);
    device->procs.sweep();
    forgetIfUnused(device);
}

} // namespace

void unplug(const DeviceRef& device) { end(device, true); }

void letDie(const DeviceRef& device) { end(device, false); }

void forgetIfUnused(const DeviceRef& device)
{
    if (!device->procs.isEmpty() || device->isRunning()) return;
    Tree& t = tree();
    {
        const std::lock_guard<std::mutex> lock(t.lock);
        if (device->isListed) return;
        t.unplugged.erase(std::remove(t.unplugged.begin(), t.unplugged.end(), device), t.unplugged.end());
    }
    device->mustEnd = true;
    device->timerWake.raise();
}

bool chooseOutput(const std::string& choice, std::string& error)
{
    const DeviceRef device = meantBy(listedDevices(), builtInSimulatedDevice(), choice, error);
    if (!device) return false;
    if (assign(Role::output, device->id) && assign(Role::systemOutput, device->id)) return true;
    error = "\"" + device->name + "\" is no longer alive; choose another device";
    return false;
}

namespace {

bool isAlive(const Device& device)
{
    const std::lock_guard<std::mutex> lock(treeLock());
    return device.isAlive;
}

} // namespace

bool refreshHardware(std::string& error)
{
    const std::vector<DeviceRef> found = readHardwareAnew(error);
    if (!error.empty()) return false;
    {
        Tree& t = tree();
        const std::lock_guard<std::mutex> lock(t.lock);
        t.hardwareError.clear();
    }
    const auto isSame = [](const DeviceRef& a, const DeviceRef& b) { return a->uid == b->uid; };
    const std::vector<DeviceRef> known = listedDevices();
    std::vector<DeviceRef> staying;
    for (const DeviceRef& device : known) {
        if (device->isSimulated) continue;
        const bool isFound =
            std::any_of(found.begin(), found.end(), [&](const DeviceRef& f) { return isSame(f, device); });
        if (isFound && isAlive(*device))
            staying.push_back(device);
        else
            unplug(device); // a dead one that is found again is another one
    }
    for (const DeviceRef& device : found)
        if (std::none_of(staying.begin(), staying.end(),
                         [&](const DeviceRef& k) { return isSame(k, device); }))
            enterDevice(device);
    return true;
}

std::string hardwareError()
{
    Tree& t = tree();
    const std::lock_guard<std::mutex> lock(t.lock);
    return t.hardwareError;
}

DeviceRef builtInSimulatedDevice() { return tree().builtIn; }

void startCaptureOfEnvironment(const DeviceRef& device)
{
    Tree& t = tree();
    std::string path;
    Settings settings;
    {
        const std::lock_guard<std::mutex> lock(t.lock);
        if (t.capturePath.empty() || roleOf(t, Role::output) != device->id) return;
        path.swap(t.capturePath);
        settings = device->settings;
    }
    std::string error;
    if (startCapture(*device, CaptureWish::environment, path, settings, error))
        std::atexit(finishCapturesAtExit);
    else
        std::fprintf(stderr, "KVX_AUDIO_CAPTURE: %s\n", error.c_str());
}

} // namespace kvxplatform::hal
