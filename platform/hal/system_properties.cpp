// The system object: the list of devices, the roles that they have, and how the process stands.
#include "platform/hal/property.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

// The tree's lock is held here, so the list is asked for without it.
OSStatus getDevices(const Request&, Bytes& value) { return putAll(value, listedIDsLocked()); }

template <Role role>
OSStatus getRole(const Request&, Bytes& value)
{
    return put(value, deviceInRoleLocked(role));
}

template <Role role>
OSStatus setRole(const Request& request, const Bytes& value, Consequences& consequences)
{
    switch (setDeviceInRoleLocked(role, as<AudioDeviceID>(value))) {
    case Change::none:
        return noErr;
    case Change::done:
        consequences.changed.push_back(request.selector);
        return noErr;
    default:
        return kAudioHardwareBadDeviceError;
    }
}

OSStatus getDeviceForUID(const Request&, Bytes& value)
{
    const auto translation = as<AudioValueTranslation>(value);
    if (translation.mInputDataSize != sizeof(CFStringRef) ||
        translation.mOutputDataSize != sizeof(AudioDeviceID) || !translation.mInputData ||
        !translation.mOutputData)
        return kAudioHardwareBadPropertySizeError;
    const CFStringRef wanted = *static_cast<const CFStringRef*>(translation.mInputData);
    *static_cast<AudioDeviceID*>(translation.mOutputData) =
        wanted ? deviceOfUIDLocked(wanted) : kAudioDeviceUnknown;
    return noErr;
}

OSStatus getOwned(const Request& request, Bytes& value)
{
    return putAll(value, ofClasses(request, kAudioDeviceClassID, listedIDsLocked()));
}

// What a program may tell the process. Nothing here sleeps or unloads, so the word is kept and that is all.
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
    const auto wanted = as<UInt32>(value);
    if (wanted == word) return noErr;
    word = wanted;
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
