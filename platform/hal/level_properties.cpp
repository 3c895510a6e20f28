// The level properties of a device: a volume and a mute for each output channel, and one mute for all of
// them.
#include "platform/hal/property_tables.h"

#include <iterator>

namespace kvxplatform::hal {

namespace {

Level& levelOf(const Request& r) { return r.device->outputLevels[r.element - 1]; }

OSStatus getScalar(const Request& r, Bytes& value) { return put<Float32>(value, levelOf(r).scalar); }
OSStatus getDecibels(const Request& r, Bytes& value)
{
    return put<Float32>(value, decibelsOfScalar(levelOf(r).scalar));
}
OSStatus getRange(const Request&, Bytes& value) { return put(value, AudioValueRange{lowestDecibels, 0}); }
OSStatus convertToDecibels(const Request&, Bytes& value)
{
    return put<Float32>(value, decibelsOfScalar(as<Float32>(value)));
}
OSStatus convertToScalar(const Request&, Bytes& value)
{
    return put<Float32>(value, scalarOfDecibels(as<Float32>(value)));
}

OSStatus changeScalar(const Request& r, float scalar, Consequences& consequences)
{
    if (!(scalar >= 0)) scalar = 0; // not-a-number also becomes 0
    if (scalar > 1) scalar = 1;
    if (levelOf(r).scalar == scalar) return noErr;
    levelOf(r).scalar = scalar;
    consequences.hasNewLevels = true;
    consequences.changed = {kAudioDevicePropertyVolumeScalar, kAudioDevicePropertyVolumeDecibels};
    return noErr;
}
OSStatus setScalar(const Request& r, const Bytes& value, Consequences& c)
{
    return changeScalar(r, as<Float32>(value), c);
}
OSStatus setDecibels(const Request& r, const Bytes& value, Consequences& c)
{
    return changeScalar(r, scalarOfDecibels(as<Float32>(value)), c);
}

bool& muteOf(const Request& r)
{
    return r.element == kAudioObjectPropertyElementMaster ? r.device->isMuted : levelOf(r).isMuted;
}
OSStatus getMute(const Request& r, Bytes& value) { return put<UInt32>(value, muteOf(r)); }
OSStatus setMute(const Request& r, const Bytes& value, Consequences& consequences)
{
    const bool isMuted = as<UInt32>(value) != 0;
    if (muteOf(r) == isMuted) return noErr;
    muteOf(r) = isMuted;
    consequences.hasNewLevels = true;
    consequences.changed = {kAudioDevicePropertyMute};
    return noErr;
}

constexpr UInt32 number = sizeof(Float32);

// clang-format off
constexpr Property rows[] = {
    // selector                                     side          elements                     extent       size                     get                set
    {kAudioDevicePropertyVolumeScalar,              Side::output, Elements::channels,          Extent::one, number,                  getScalar,         setScalar},
    {kAudioDevicePropertyVolumeDecibels,            Side::output, Elements::channels,          Extent::one, number,                  getDecibels,       setDecibels},
    {kAudioDevicePropertyVolumeRangeDecibels,       Side::output, Elements::channels,          Extent::one, sizeof(AudioValueRange), getRange,          nullptr},
    {kAudioDevicePropertyVolumeScalarToDecibels,    Side::output, Elements::channels,          Extent::one, number,                  convertToDecibels, nullptr},
    {kAudioDevicePropertyVolumeDecibelsToScalar,    Side::output, Elements::channels,          Extent::one, number,                  convertToScalar,   nullptr},
    {kAudioDevicePropertyMute,                      Side::output, Elements::masterAndChannels, Extent::one, sizeof(UInt32),          getMute,           setMute},
};
// clang-format on

} // namespace

PropertyTable levelProperties() { return {rows, std::size(rows)}; }

} // namespace kvxplatform::hal
