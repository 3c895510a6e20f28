#include "tests/support/property_spy.h"

#include "tests/support/record_text.h"

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <algorithm>
#include <cstring>
#include <dlfcn.h>
#include <map>
#include <set>

namespace property_spy {

namespace {

std::map<std::string, Answer> answers;
std::map<const void*, std::string> names;
Notes notes;
bool valuesAreRead = true;
std::string value, qualifier;
std::vector<Registration> added;
std::set<const void*> platformStrings;

// ---- arguments as text ----

using record_text::hex;

std::string text(UInt32 number) { return hex(number); }
std::string text(UInt64 number) { return hex(number); }
std::string text(Boolean truth) { return std::to_string(truth); }
std::string text(Float32 number)
{
    UInt32 bits;
    std::memcpy(&bits, &number, sizeof bits);
    return "bits " + hex(bits);
}
std::string text(const void* pointer)
{
    if (!pointer) return "null";
    const auto found = names.find(pointer);
    return found == names.end() ? "memory" : found->second;
}
std::string text(const AudioObjectPropertyAddress* address)
{
    if (!address) return "null";
    return "{" + hex(address->mSelector) + ", " + hex(address->mScope) + ", " + hex(address->mElement) + "}";
}

/// A handle is a number that came from the platform.
struct HandleOf {
    const void* value;
};
std::string text(HandleOf handle) { return "handle " + hex(reinterpret_cast<std::uintptr_t>(handle.value)); }

/// A size that is read, and written back.
struct InOut {
    UInt32* size;
};
std::string text(InOut size) { return size.size ? "size " + std::to_string(*size.size) : "size nowhere"; }

struct Writable {
    Boolean* truth;
};
std::string text(Writable writable)
{
    return writable.truth ? "writable " + std::to_string(*writable.truth) : "writable nowhere";
}

/// A place for a value: what it held tells whether it was zeroed.
struct Buffer {
    const void* bytes;
    const UInt32* size;
};
std::string text(Buffer buffer)
{
    if (!buffer.bytes || names.count(buffer.bytes) || !buffer.size) return text(buffer.bytes);
    const char* bytes = static_cast<const char*>(buffer.bytes);
    const bool isZeroed = std::all_of(bytes, bytes + *buffer.size, [](char byte) { return byte == 0; });
    return std::to_string(*buffer.size) + (isZeroed ? " zeros" : " bytes that are not all zero");
}

struct Place {
    const Float32* number;
};
std::string text(Place place) { return place.number ? "place of " + text(*place.number) : "null"; }

template <class... Arguments>
Answer& note(const char* function, Arguments... arguments)
{
    std::string call = std::string(function) + "(";
    const char* between = "";
    ((call += between + text(arguments), between = ", "), ...);
    notes.push_back(call + ")");
    Answer& scripted = answers[function];
    if (scripted.during) scripted.during();
    return scripted;
}

// ---- what the calls have in common ----

OSStatus tell(const Answer& scripted, UInt32* size, Boolean* writable)
{
    if (scripted.size && size) *size = *scripted.size;
    if (scripted.writable && writable) *writable = *scripted.writable;
    return scripted.status;
}

OSStatus fill(const Answer& scripted, UInt32* size, void* data)
{
    if (data && size)
        std::memcpy(data, scripted.value.data(), std::min<std::size_t>(scripted.value.size(), *size));
    return tell(scripted, size, nullptr);
}

void readBytes(std::string& into, const void* bytes, UInt32 size)
{
    into.clear();
    if (bytes && valuesAreRead) into.assign(static_cast<const char*>(bytes), size);
}

template <class Number>
Number numberOf(const Answer& scripted)
{
    Number number;
    std::memcpy(&number, &scripted.number, sizeof number);
    return number;
}

bool isSame(const Registration& a, const Registration& b)
{
    return a.object == b.object && a.procedure == b.procedure && a.client == b.client &&
           text(&a.address) == text(&b.address);
}

const PlatformString* platformString(const void* reference)
{
    return platformStrings.count(reference) ? static_cast<const PlatformString*>(reference) : nullptr;
}

/// The platform's own function, for strings that are not the test's.
template <class Function>
Function* realOne(Function*, const char* function)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, function));
}

} // namespace

Answer& answer(const std::string& function) { return answers[function]; }

void reset()
{
    answers.clear();
    names.clear();
    notes.clear();
    valuesAreRead = true;
    value.clear();
    qualifier.clear();
    added.clear();
}

Notes calls() { return notes; }
void forgetCalls() { notes.clear(); }
void name(const void* pointer, const std::string& text) { names[pointer] = text; }
void readValues(bool areRead) { valuesAreRead = areRead; }
std::string lastValue() { return value; }
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
    return tell(note(__func__, device, channel, isInput, selector, InOut{size}, Writable{writable}), size,
                writable);
}

OSStatus AudioDeviceGetProperty(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                AudioDevicePropertyID selector, UInt32* size, void* data)
{
    return fill(note(__func__, device, channel, isInput, selector, InOut{size}, Buffer{data, size}), size,
                data);
}

OSStatus AudioDeviceSetProperty(AudioDeviceID device, const AudioTimeStamp* when, UInt32 channel,
                                Boolean isInput, AudioDevicePropertyID selector, UInt32 size,
                                const void* data)
{
    readBytes(value, data, size);
    return note(__func__, device, static_cast<const void*>(when), channel, isInput, selector, size, data)
        .status;
}

OSStatus AudioStreamGetPropertyInfo(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                    UInt32* size, Boolean* writable)
{
    return tell(note(__func__, stream, channel, selector, InOut{size}, Writable{writable}), size, writable);
}

OSStatus AudioStreamGetProperty(AudioStreamID stream, UInt32 channel, AudioDevicePropertyID selector,
                                UInt32* size, void* data)
{
    return fill(note(__func__, stream, channel, selector, InOut{size}, Buffer{data, size}), size, data);
}

OSStatus AudioStreamSetProperty(AudioStreamID stream, const AudioTimeStamp* when, UInt32 channel,
                                AudioDevicePropertyID selector, UInt32 size, const void* data)
{
    readBytes(value, data, size);
    return note(__func__, stream, static_cast<const void*>(when), channel, selector, size, data).status;
}

OSStatus AudioHardwareGetPropertyInfo(AudioHardwarePropertyID selector, UInt32* size, Boolean* writable)
{
    return tell(note(__func__, selector, InOut{size}, Writable{writable}), size, writable);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID selector, UInt32* size, void* data)
{
    return fill(note(__func__, selector, InOut{size}, Buffer{data, size}), size, data);
}

OSStatus AudioHardwareSetProperty(AudioHardwarePropertyID selector, UInt32 size, const void* data)
{
    readBytes(value, data, size);
    return note(__func__, selector, size, data).status;
}

// ---- audio units ----

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* writable)
{
    return tell(note(__func__, HandleOf{unit}, property, scope, element, InOut{size}, Writable{writable}),
                size, writable);
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    return fill(note(__func__, HandleOf{unit}, property, scope, element, Buffer{data, size}, InOut{size}),
                size, data);
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    readBytes(value, data, size);
    return note(__func__, HandleOf{unit}, property, scope, element, data, size).status;
}

OSStatus AudioUnitInitialize(AudioUnit unit) { return note(__func__, HandleOf{unit}).status; }
OSStatus AudioUnitUninitialize(AudioUnit unit) { return note(__func__, HandleOf{unit}).status; }
OSStatus AudioOutputUnitStart(AudioUnit unit) { return note(__func__, HandleOf{unit}).status; }
OSStatus AudioOutputUnitStop(AudioUnit unit) { return note(__func__, HandleOf{unit}).status; }

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return note(__func__, HandleOf{unit}, scope, element).status;
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue number, UInt32 offset)
{
    return note(__func__, HandleOf{unit}, parameter, scope, element, number, offset).status;
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* number)
{
    const Answer& scripted = note(__func__, HandleOf{unit}, parameter, scope, element, Place{number});
    if (!scripted.value.empty()) std::memcpy(number, scripted.value.data(), sizeof *number);
    return scripted.status;
}

// ---- components ----

ComponentInstance OpenDefaultComponent(OSType type, OSType subtype)
{
    return reinterpret_cast<ComponentInstance>(numberOf<std::uintptr_t>(note(__func__, type, subtype)));
}

OSErr CloseComponent(ComponentInstance instance)
{
    return static_cast<OSErr>(note(__func__, HandleOf{instance}).status);
}

// ---- audio objects ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifierData, UInt32* size)
{
    readBytes(qualifier, qualifierData, qualifierSize);
    return tell(note(__func__, object, address, qualifierSize, qualifierData, InOut{size}), size, nullptr);
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifierData, UInt32* size, void* data)
{
    readBytes(qualifier, qualifierData, qualifierSize);
    return fill(
        note(__func__, object, address, qualifierSize, qualifierData, InOut{size}, Buffer{data, size}), size,
        data);
}

OSStatus AudioObjectSetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifierData, UInt32 size,
                                    const void* data)
{
    readBytes(qualifier, qualifierData, qualifierSize);
    readBytes(value, data, size);
    return note(__func__, object, address, qualifierSize, qualifierData, size, data).status;
}

OSStatus AudioObjectAddPropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        AudioObjectPropertyListenerProc procedure, void* client)
{
    const OSStatus status = note(__func__, object, address, reinterpret_cast<const void*>(procedure),
                                 static_cast<const void*>(client))
                                .status;
    if (status == noErr) added.push_back({object, *address, procedure, client});
    return status;
}

OSStatus AudioObjectRemovePropertyListener(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                           AudioObjectPropertyListenerProc procedure, void* client)
{
    const OSStatus status = note(__func__, object, address, reinterpret_cast<const void*>(procedure),
                                 static_cast<const void*>(client))
                                .status;
    const Registration gone = {object, *address, procedure, client};
    const auto found = std::find_if(added.begin(), added.end(),
                                    [&](const Registration& each) { return isSame(each, gone); });
    if (status == noErr && found != added.end()) added.erase(found);
    return status;
}

// ---- the host clock ----

Float64 AudioGetHostClockFrequency() { return numberOf<Float64>(note(__func__)); }
UInt32 AudioGetHostClockMinimumTimeDelta() { return numberOf<UInt32>(note(__func__)); }
UInt64 AudioGetCurrentHostTime() { return numberOf<UInt64>(note(__func__)); }
UInt64 AudioConvertHostTimeToNanos(UInt64 time) { return numberOf<UInt64>(note(__func__, time)); }
UInt64 AudioConvertNanosToHostTime(UInt64 nanos) { return numberOf<UInt64>(note(__func__, nanos)); }

// ---- platform strings: the test's own; all others are the platform's ----

CFIndex CFStringGetLength(CFStringRef reference)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realOne(CFStringGetLength, __func__)(reference);
    note(__func__, static_cast<const void*>(reference));
    return known->length;
}

Boolean CFStringGetCString(CFStringRef reference, char* buffer, CFIndex capacity, CFStringEncoding encoding)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realOne(CFStringGetCString, __func__)(reference, buffer, capacity, encoding);
    note(__func__, static_cast<const void*>(reference), static_cast<UInt32>(capacity),
         static_cast<UInt32>(encoding));
    if (!known->utf8 || static_cast<std::size_t>(capacity) <= known->utf8->size()) return false;
    std::memcpy(buffer, known->utf8->c_str(), known->utf8->size() + 1);
    return true;
}

void CFRelease(CFTypeRef reference)
{
    const PlatformString* known = platformString(reference);
    if (!known) return realOne(CFRelease, __func__)(reference);
    ++const_cast<PlatformString*>(known)->releases;
    note(__func__, reference);
}

} // extern "C"
#pragma GCC visibility pop
