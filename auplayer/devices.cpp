#include "auplayer/devices.h"

#include "auplayer/host_dictionary.h"
#include "plugin/host_exceptions.h"
#include "plugin/host_string.h"
#include "plugin/owned.h"
#include "plugin/zeroed.h"

#include <CoreAudio/CoreAudio.h>

#include <algorithm>
#include <iterator>

namespace auplayer {

namespace {

constexpr UInt32 deviceNameBytes = 200;

AudioObjectPropertyAddress global(AudioObjectPropertySelector selector)
{
    return {selector, kAudioObjectPropertyScopeGlobal, kAudioObjectPropertyElementMaster};
}

/// Find out which selector the system uses for the device list, and the size of the list in bytes. Most
/// systems know only the second of the two selectors.
OSStatus findDeviceList(AudioObjectPropertyAddress& address, UInt32& size)
{
    OSStatus status = noErr;
    for (AudioObjectPropertySelector selector :
         {AudioObjectPropertySelector{'#dev'}, AudioObjectPropertySelector{kAudioHardwarePropertyDevices}}) {
        address = global(selector);
        status = AudioObjectGetPropertyDataSize(kAudioObjectSystemObject, &address, 0, nullptr, &size);
        if (status != kAudioHardwareUnknownPropertyError) break;
    }
    return status;
}

bool hasOutput(AudioDeviceID device)
{
    return AudioDeviceGetPropertyInfo(device, 0, false, kAudioDevicePropertyStreamFormat, nullptr, nullptr) ==
           noErr;
}

/// Make a host string from a device's name; `text` is null if the host makes no string. Returns false if the
/// platform returns no name.
bool readName(AudioDeviceID device, OwnedString& text)
{
    char name[deviceNameBytes] = {};
    UInt32 size = sizeof name;
    const AudioObjectPropertyAddress address = global(kAudioDevicePropertyDeviceName);
    if (AudioObjectGetPropertyData(device, &address, 0, nullptr, &size, name) != noErr) return false;
    const std::ptrdiff_t length = std::find(std::begin(name), std::end(name), '\0') - name;
    text.reset(REALBuildUnicodeString(name, length, encodingUTF8));
    return true;
}

struct ForgetDictionaryAtExit {
    ~ForgetDictionaryAtExit() { forgetDictionary(); }
};

} // namespace

std::uint32_t getCurrentDeviceID(REALobjectStruct* object, HostInteger)
{
    AUPlayerData& player = beginCall(object);
    AudioDeviceID device = 0;
    UInt32 size = sizeof device;
    keepStatus(player,
               AudioUnitGetProperty(loadAcquired(player.output), kAudioOutputUnitProperty_CurrentDevice,
                                    kAudioUnitScope_Global, 0, &device, &size));
    return static_cast<std::uint32_t>(device);
}

void setCurrentDeviceID(REALobjectStruct* object, HostInteger, std::uint32_t device)
{
    AUPlayerData& player = beginCall(object);
    const AudioDeviceID value = device;
    keepStatus(player,
               AudioUnitSetProperty(loadAcquired(player.output), kAudioOutputUnitProperty_CurrentDevice,
                                    kAudioUnitScope_Global, 0, &value, sizeof value));
}

std::uint32_t getDefaultDeviceID(REALobjectStruct* object, HostInteger)
{
    AUPlayerData& player = beginCall(object);
    AudioDeviceID device = 0;
    UInt32 size = sizeof device;
    keepStatus(player, AudioHardwareGetProperty(kAudioHardwarePropertyDefaultOutputDevice, &size, &device));
    return static_cast<std::uint32_t>(device);
}

REALobjectStruct* getOuputDevices(REALobjectStruct* object, HostInteger)
{
    AudioObjectPropertyAddress list;
    UInt32 size = 0;
    if (findDeviceList(list, size) != noErr) return nullptr;

    AUPlayerData& player = beginCall(object);
    const Zeroed<char> memory = allocateZeroed<char>(size);
    if (!memory) {
        RaiseException("OutOfMemoryException", "Failed to allocate buffer for device IDs.");
        return nullptr;
    }
    const UInt32 capacity = size;
    if (!keepStatus(player, AudioObjectGetPropertyData(kAudioObjectSystemObject, &list, 0, nullptr, &size,
                                                       memory.get())))
        return nullptr;

    const ForgetDictionaryAtExit atExit;
    OwnedObject dictionary(REALnewInstance("Dictionary"));
    if (!dictionary) return nullptr;
    const auto* const devices = reinterpret_cast<const AudioDeviceID*>(memory.get());
    for (UInt32 i = 0; i < std::min(size, capacity) / sizeof(AudioDeviceID); ++i) {
        // The order of declaration makes the key be released first, then the value, then the name.
        OwnedString name;
        OwnedObject value, key;
        if (!hasOutput(devices[i]) || !readName(devices[i], name)) continue;
        key.reset(REALNewVariantInteger(static_cast<HostInteger>(devices[i])));
        value.reset(REALNewVariantString(name.get()));
        storeInDictionary(dictionary.get(), key.get(), value.get());
    }
    return dictionary.release();
}

} // namespace auplayer
