// The properties of the system object: the device list, the default devices, and the state of the process.
#include "platform/hal/device_list.h"
#include "platform/hal/property_tables.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

OSStatus getDevices(const Request&, Bytes& value) { return putAll(value, deviceList().ids()); }

template <Role role>
OSStatus getRole(const Request&, Bytes& value)
{
    return put(value, deviceList().inRole(role));
}

template <Role role>
OSStatus setRole(const Request& request, const Bytes& value, Consequences& consequences)
{
    switch (deviceList().setInRole(role, as<AudioDeviceID>(value))) {
    case DeviceList::Change::none:
        return noErr;
    case DeviceList::Change::done:
        consequences.changed.push_back(request.selector);
        return noErr;
    default:
        return kAudioHardwareBadDeviceError;
    }
}

AudioDeviceID deviceOfUID(CFStringRef uid)
{
    std::vector<char> text(static_cast<std::size_t>(
        CFStringGetMaximumSizeForEncoding(CFStringGetLength(uid), kCFStringEncodingUTF8) + 1));
    if (!CFStringGetCString(uid, text.data(), static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8))
        return kAudioDeviceUnknown;
    for (const DeviceRef& device : deviceList().listed())
        if (device->uid == text.data()) return device->id;
    return kAudioDeviceUnknown;
}

OSStatus getDeviceForUID(const Request&, Bytes& value)
{
    const auto translation = as<AudioValueTranslation>(value);
    if (translation.mInputDataSize != sizeof(CFStringRef) ||
        translation.mOutputDataSize != sizeof(AudioDeviceID) || !translation.mInputData ||
        !translation.mOutputData)
        return kAudioHardwareBadPropertySizeError;
    const auto uid = *static_cast<const CFStringRef*>(translation.mInputData);
    *static_cast<AudioDeviceID*>(translation.mOutputData) = uid ? deviceOfUID(uid) : kAudioDeviceUnknown;
    return noErr;
}

OSStatus getOwned(const Request& request, Bytes& value)
{
    return putAll(value, ofClasses(request, kAudioDeviceClassID, deviceList().ids()));
}

// The values of two settable properties that have no effect, because this platform neither sleeps nor
// unloads.
UInt32 isSleepingAllowed = 1;
UInt32 isUnloadingAllowed = 0;

template <UInt32& word>
OSStatus getWord(const Request&, Bytes& value)
{
    return put(value, word);
}

template <UInt32& word>
OSStatus setWord(const Request& request, const Bytes& value, Consequences& consequences)
{
    const auto next = as<UInt32>(value);
    if (next == word) return noErr;
    word = next;
    consequences.changed.push_back(request.selector);
    return noErr;
}

constexpr auto zero = putConstant<UInt32, 0>;
constexpr auto one = putConstant<UInt32, 1>;

constexpr Side none = Side::none;
constexpr Elements master = Elements::master;

// clang-format off
constexpr Property rows[] = {
    // selector                                          side  elements extent        size                           get                           set
    {kAudioHardwarePropertyDevices,                      none, master,  Extent::many, sizeof(AudioDeviceID),         getDevices,                   nullptr},
    {kAudioHardwarePropertyDefaultOutputDevice,          none, master,  Extent::one,  sizeof(AudioDeviceID),         getRole<Role::output>,        setRole<Role::output>},
    {kAudioHardwarePropertyDefaultSystemOutputDevice,    none, master,  Extent::one,  sizeof(AudioDeviceID),         getRole<Role::systemOutput>,  setRole<Role::systemOutput>},
    {kAudioHardwarePropertyDefaultInputDevice,           none, master,  Extent::one,  sizeof(AudioDeviceID),         getRole<Role::input>,         setRole<Role::input>},
    {kAudioHardwarePropertyDeviceForUID,                 none, master,  Extent::one,  sizeof(AudioValueTranslation), getDeviceForUID,              nullptr},
    {kAudioHardwarePropertySleepingIsAllowed,            none, master,  Extent::one,  sizeof(UInt32),                getWord<isSleepingAllowed>,   setWord<isSleepingAllowed>},
    {kAudioHardwarePropertyUnloadingIsAllowed,           none, master,  Extent::one,  sizeof(UInt32),                getWord<isUnloadingAllowed>,  setWord<isUnloadingAllowed>},
    {kAudioHardwarePropertyProcessIsMaster,              none, master,  Extent::one,  sizeof(UInt32),                one,                          nullptr},
    {kAudioHardwarePropertyIsInitingOrExiting,           none, master,  Extent::one,  sizeof(UInt32),                zero,                         nullptr},
    {kAudioHardwarePropertyProcessIsAudible,             none, master,  Extent::one,  sizeof(UInt32),                one,                          nullptr},
    {kAudioHardwarePropertyHogModeIsAllowed,             none, master,  Extent::one,  sizeof(UInt32),                one,                          nullptr},
    {kAudioHardwarePropertyUserSessionIsActiveOrHeadless,none, master,  Extent::one,  sizeof(UInt32),                one,                          nullptr},
    {kAudioHardwarePropertyMixStereoToMono,              none, master,  Extent::one,  sizeof(UInt32),                zero,                         nullptr},
    {kAudioObjectPropertyClass,                          none, master,  Extent::one,  sizeof(AudioClassID),          putConstant<AudioClassID, kAudioSystemObjectClassID>, nullptr},
    {kAudioObjectPropertyOwner,                          none, master,  Extent::one,  sizeof(AudioObjectID),         putConstant<AudioObjectID, kAudioObjectUnknown>,      nullptr},
    {kAudioObjectPropertyOwnedObjects,                   none, master,  Extent::many, sizeof(AudioObjectID),         getOwned,                     nullptr},
};
// clang-format on

} // namespace

PropertyTable systemProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
