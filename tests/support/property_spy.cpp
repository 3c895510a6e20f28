#include "tests/support/property_spy.h"

#include "tests/support/platform_text.h"

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <set>

namespace property_spy {

namespace {

using spy::Answer;
using spy::Call;
using spy::Hex;
using spy::InOut;
using spy::Line;
using spy::record;

bool valuesAreRead = true;
std::string qualifier;
std::vector<Registration> added;
std::set<const void*> platformStrings;

// ---- arguments as text ----

/// A 32-bit float, recorded as its bits.
struct Bits {
    Float32 number;
};
Line& operator<<(Line& line, Bits bits)
{
    UInt32 word;
    std::memcpy(&word, &bits.number, sizeof word);
    return line << "bits " << Hex{word};
}

struct Address {
    const AudioObjectPropertyAddress* fields;
};
Line& operator<<(Line& line, Address address)
{
    if (!address.fields) return line << "null";
    return line << "{" << Hex{address.fields->mSelector} << ", " << Hex{address.fields->mScope} << ", "
                << Hex{address.fields->mElement} << "}";
}

/// A handle of an audio unit or a component instance: a number that the test has chosen.
struct HandleOf {
    const void* value;
};
Line& operator<<(Line& line, HandleOf handle)
{
    return line << "handle " << Hex{reinterpret_cast<std::uintptr_t>(handle.value)};
}

struct Writable {
    const Boolean* flag;
};
Line& operator<<(Line& line, Writable writable)
{
    return writable.flag ? line << "writable " << *writable.flag : line << "writable null";
}

/// The caller's buffer for a value, recorded as its name, or as its size and whether it holds zeros only.
struct Buffer {
    const void* bytes;
    const UInt32* size;
};
Line& operator<<(Line& line, Buffer buffer)
{
    if (!buffer.bytes || spy::isNamed(buffer.bytes) || !buffer.size) return line << buffer.bytes;
    const char* const bytes = static_cast<const char*>(buffer.bytes);
    const bool isZeroed = std::all_of(bytes, bytes + *buffer.size, [](char byte) { return byte == 0; });
    return line << *buffer.size << (isZeroed ? " zeros" : " bytes that are not all zero");
}

/// The output variable of AudioUnitGetParameter, recorded with the value that it has before the call.
struct ParameterOutput {
    const Float32* number;
};
Line& operator<<(Line& line, ParameterOutput output)
{
    return output.number ? line << "output of " << Bits{*output.number} : line << "null";
}

// ---- the common part of the calls ----

OSStatus giveInfo(const Call& call, UInt32* size, Boolean* writable)
{
    if (call.scripted.size && size) *size = *call.scripted.size;
    if (call.scripted.writable && writable) *writable = *call.scripted.writable;
    return call.status;
}

OSStatus giveValue(const Call& call, UInt32* size, void* data)
{
    const std::string& value = call.scripted.value;
    if (data && size) std::memcpy(data, value.data(), std::min<std::size_t>(value.size(), *size));
    return giveInfo(call, size, nullptr);
}

void keepValue(const void* bytes, UInt32 size) { spy::keepValue(valuesAreRead ? bytes : nullptr, size); }

void keepQualifier(const void* bytes, UInt32 size)
{
    qualifier.clear();
    if (bytes && valuesAreRead) qualifier.assign(static_cast<const char*>(bytes), size);
}

template <class Number>
Number resultOf(const Call& call)
{
    Number number;
    std::memcpy(&number, &call.scripted.bits, sizeof number);
    return number;
}

bool isSame(const Registration& a, const Registration& b)
{
    return a.object == b.object && a.procedure == b.procedure && a.client == b.client &&
           a.address.mSelector == b.address.mSelector && a.address.mScope == b.address.mScope &&
           a.address.mElement == b.address.mElement;
}

const PlatformString* platformString(const void* reference)
{
    return platformStrings.count(reference) ? static_cast<const PlatformString*>(reference) : nullptr;
}

/// Return the platform's own function, which a spy function calls for strings that the test did not make.
template <class Function>
Function* realFunction(Function*, const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

void reset()
{
    spy::reset();
    valuesAreRead = true;
    qualifier.clear();
    added.clear();
}

void readValues(bool areRead) { valuesAreRead = areRead; }
std::string lastQualifier() { return qualifier; }
const std::vector<Registration>& registrations() { return added; }

PlatformString::PlatformString(std::optional<std::string> text, CFIndex units)
    : utf8(std::move(text)), length(units)
{
    platformStrings.insert(this);
}

PlatformString::~PlatformString() { platformStrings.erase(this); }

std::string PlatformString::asValue() const
{
    const CFStringRef pointer = reference();
    return std::string(reinterpret_cast<const char*>(&pointer), sizeof pointer);
}

} // namespace property_spy

using namespace property_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- devices, streams, hardware ----

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID selector, UInt32* size, Boolean* writable)
{
    return giveInfo(
        record(__func__, Hex{device}, Hex{channel}, isInput, Hex{selector}, InOut{size}, Writable{writable}),
        size, writable);
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32* size, void* data)
{
    return giveValue(
        record(__func__, Hex{device}, Hex{channel}, isInput, Hex{selector}, InOut{size}, Buffer{data, size}),
        size, data);
}

OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp* when, UInt32 channel,
                                Boolean isInput, AudioDevicePropertyID selector, UInt32 size,
                                const void* data)
{
    keepValue(data, size);
    return record(__func__, Hex{device}, when, Hex{channel}, isInput, Hex{selector}, Hex{size}, data).status;
}

OSStatus AudioStreamGetPropertyInfo(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                    UInt32* size, Boolean* writable)
{
    return giveInfo(
        record(__func__, Hex{stream}, Hex{channel}, Hex{selector}, InOut{size}, Writable{writable}), size,
        writable);
}

OSStatus AudioStreamGetProperty(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                UInt32* size, void* data)
{
    return giveValue(
        record(__func__, Hex{stream}, Hex{channel}, Hex{selector}, InOut{size}, Buffer{data, size}), size,
        data);
}

OSStatus AudioStreamSetProperty(AudioStreamID stream, const AudioTimeStamp* when, UInt32 channel,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    keepValue(data, size);
    return record(__func__, Hex{stream}, when, Hex{channel}, Hex{selector}, Hex{size}, data).status;
}

OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID selector, UInt32* size, Boolean* writable)
{
    return giveInfo(record(__func__, Hex{selector}, InOut{size}, Writable{writable}), size, writable);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* size, void* data)
{
    return giveValue(record(__func__, Hex{selector}, InOut{size}, Buffer{data, size}), size, data);
}

OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID selector, UInt32 size, const void* data)
{
    keepValue(data, size);
    return record(__func__, Hex{selector}, Hex{size}, data).status;
}

// ---- audio units ----

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* writable)
{
    return giveInfo(record(__func__, HandleOf{unit}, Hex{property}, Hex{scope}, Hex{element}, InOut{size},
                           Writable{writable}),
                    size, writable);
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    return giveValue(record(__func__, HandleOf{unit}, Hex{property}, Hex{scope}, Hex{element},
                            Buffer{data, size}, InOut{size}),
                     size, data);
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    keepValue(data, size);
    return record(__func__, HandleOf{unit}, Hex{property}, Hex{scope}, Hex{element}, data, Hex{size}).status;
}

OSStatus AudioUnitInitialize(AudioUnit unit) { return record(__func__, HandleOf{unit}).status; }
OSStatus AudioUnitUninitialize(AudioUnit unit) { return record(__func__, HandleOf{unit}).status; }
OSStatus AudioOutputUnitStart(AudioUnit unit) { return record(__func__, HandleOf{unit}).status; }
OSStatus AudioOutputUnitStop(AudioUnit unit) { return record(__func__, HandleOf{unit}).status; }

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return record(__func__, HandleOf{unit}, Hex{scope}, Hex{element}).status;
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue number, UInt32 offset)
{
    return record(__func__, HandleOf{unit}, Hex{parameter}, Hex{scope}, Hex{element}, Bits{number},
                  Hex{offset})
        .status;
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* number)
{
    const Call call =
        record(__func__, HandleOf{unit}, Hex{parameter}, Hex{scope}, Hex{element}, ParameterOutput{number});
    const std::string& value = call.scripted.value;
    if (!value.empty()) std::memcpy(number, value.data(), sizeof *number);
    return call.status;
}

// ---- components ----

ComponentInstance OpenDefaultComponent(OSType type, OSType subtype)
{
    return reinterpret_cast<ComponentInstance>(
        resultOf<std::uintptr_t>(record(__func__, Hex{type}, Hex{subtype})));
}

OSErr CloseComponent(ComponentInstance instance)
{
    return static_cast<OSErr>(record(__func__, HandleOf{instance}).status);
}

// ---- audio objects ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifierData, UInt32* size)
{
    keepQualifier(qualifierData, qualifierSize);
    return giveInfo(
        record(__func__, Hex{object}, Address{address}, Hex{qualifierSize}, qualifierData, InOut{size}), size,
        nullptr);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifierData, UInt32* size, void* data)
{
    keepQualifier(qualifierData, qualifierSize);
    return giveValue(record(__func__, Hex{object}, Address{address}, Hex{qualifierSize}, qualifierData,
                            InOut{size}, Buffer{data, size}),
                     size, data);
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifierData, UInt32 size,
                                    const void* data)
{
    keepQualifier(qualifierData, qualifierSize);
    keepValue(data, size);
    return record(__func__, Hex{object}, Address{address}, Hex{qualifierSize}, qualifierData, Hex{size}, data)
        .status;
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc procedure, void* client)
{
    const OSStatus status = record(__func__, Hex{object}, Address{address}, procedure, client).status;
    if (status == noErr) added.push_back({object, *address, procedure, client});
    return status;
}

OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc procedure, void* client)
{
    const OSStatus status = record(__func__, Hex{object}, Address{address}, procedure, client).status;
    const Registration gone = {object, *address, procedure, client};
    const auto found = std::find_if(added.begin(), added.end(),
                                    [&](const Registration& each) { return isSame(each, gone); });
    if (status == noErr && found != added.end()) added.erase(found);
    return status;
}

// ---- the host clock ----

Float64 AudioGetHostClockFrequency() { return resultOf<Float64>(record(__func__)); }
UInt32 AudioGetHostClockMinimumTimeDelta() { return resultOf<UInt32>(record(__func__)); }
UInt64 AudioGetCurrentHostTime() { return resultOf<UInt64>(record(__func__)); }
UInt64 AudioConvertHostTimeToNanos(UInt64 time) { return resultOf<UInt64>(record(__func__, Hex{time})); }
UInt64 AudioConvertNanosToHostTime(UInt64 nanos) { return resultOf<UInt64>(record(__func__, Hex{nanos})); }

// ---- platform strings: calls for strings that the test did not make go to the platform ----

CFIndex CFStringGetLength(CFStringRef reference)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realFunction(CFStringGetLength, __func__)(reference);
    record(__func__, reference);
    return known->length;
}

Boolean CFStringGetCString(CFStringRef reference, char* buffer, CFIndex capacity, CFStringEncoding encoding)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realFunction(CFStringGetCString, __func__)(reference, buffer, capacity, encoding);
    record(__func__, reference, Hex{static_cast<UInt32>(capacity)}, Hex{static_cast<UInt32>(encoding)});
    if (!known->utf8 || static_cast<std::size_t>(capacity) <= known->utf8->size()) return false;
    std::memcpy(buffer, known->utf8->c_str(), known->utf8->size() + 1);
    return true;
}

void CFRelease(CFTypeRef reference)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realFunction(CFRelease, __func__)(reference);
    ++const_cast<PlatformString*>(known)->releases;
    record(__func__, reference);
}

} // extern "C"
#pragma GCC visibility pop
