// The public C functions of audio units.
#include "platform/audiounit/life_cycle.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property_access.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/unit_handle.h"
#include "platform/support/border.h"

namespace kvxplatform::audiounit {
namespace {

/// Call a function with the unit that a handle names.
/// Returns  the function's status; the status of the handle if the handle names no unit.
template <class Call>
OSStatus with(AudioUnit handle, Call call)
{
    const UnitUse unit = use(handle);
    if (unit.status) return unit.status;
    return withinBorder(memFullErr, kAudioUnitErr_FailedInitialization,
                        [&]() -> OSStatus { return call(*unit); });
}

} // namespace
} // namespace kvxplatform::audiounit

namespace audiounit = kvxplatform::audiounit;
using audiounit::Unit;
using audiounit::with;

OSStatus AudioUnitInitialize(AudioUnit unit) { return with(unit, audiounit::initialize); }
OSStatus AudioUnitUninitialize(AudioUnit unit) { return with(unit, audiounit::uninitialize); }
OSStatus AudioOutputUnitStart(AudioUnit unit) { return with(unit, audiounit::start); }
OSStatus AudioOutputUnitStop(AudioUnit unit) { return with(unit, audiounit::stop); }

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return with(unit, [&](Unit& u) { return audiounit::reset(u, scope, element); });
}

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* isWritable)
{
    return with(unit, [&](Unit& u) {
        return audiounit::getPropertyInfo(u, property, {scope, element}, size, isWritable);
    });
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    return with(unit, [&](Unit& u) {
        return audiounit::getProperty(u, property, {scope, element}, data, size);
    });
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    return with(unit, [&](Unit& u) {
        return audiounit::setProperty(u, property, {scope, element}, data, size);
    });
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* value)
{
    return with(unit, [&](Unit& u) {
        return value ? audiounit::getParameter(u, parameter, scope, element, *value) : paramErr;
    });
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue value, UInt32)
{
    return with(unit, [&](Unit& u) { return audiounit::setParameter(u, parameter, scope, element, value); });
}

OSStatus AudioUnitRender(AudioUnit unit, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list)
{
    return with(unit, [&](Unit& u) { return audiounit::render(u, flags, time, bus, frames, list); });
}
