#include "tests/soundstream/sound_spy.h"

#include "tests/support/platform_text.h"

#include <algorithm>
#include <atomic>

#include <sched.h>
#include <time.h>

namespace sound_spy {

namespace {

using spy::Code;
using spy::Hex;

Platform thePlatform;
std::map<const void*, const void*> componentOf; // component of each instance
std::map<const void*, long> refcons;
std::map<const void*, Handle> storages;
AURenderCallbackStruct lastCallback;
Registration registration;
const void* registered = nullptr;
std::atomic<int> sleepCount{0};

/// Record a call and return its status.
template <class... Arguments>
OSStatus statusOf(const char* function, const Arguments&... arguments)
{
    return spy::record(function, arguments...).status;
}

/// Name a pointer that the platform stores, such as a refcon. Each call makes a new name.
void nameStored(const char* kind, const void* pointer)
{
    if (pointer) spy::name(pointer, spy::nextName(kind));
}

template <class Value>
Value valueOf(const std::map<const void*, Value>& values, const void* key)
{
    const spy::Guard guard;
    const auto found = values.find(key);
    return found == values.end() ? Value{} : found->second;
}

/// Make a memory handle, whose bytes are a copy of `bytes` unless it is null.
Handle makeHandle(const void* bytes, Size size)
{
    return static_cast<Handle>(spy::makeMemory("handle", bytes, static_cast<std::size_t>(size)));
}

} // namespace

Platform& platform() { return thePlatform; }

void reset()
{
    spy::reset();
    const spy::Guard guard;
    thePlatform = {};
    componentOf.clear();
    refcons.clear();
    storages.clear();
    lastCallback = {};
    registration = {};
    registered = nullptr;
    sleepCount = 0;
}

Registration lastRegistration() { return registration; }

ComponentInstance newInstance()
{
    void* const instance = spy::make("instance", false);
    const spy::Guard guard;
    componentOf[instance] = registered;
    return static_cast<ComponentInstance>(instance);
}

Handle storageOf(ComponentInstance instance) { return valueOf(storages, instance); }
long refconOf(Component component) { return valueOf(refcons, component); }
AURenderCallbackStruct callback() { return lastCallback; }

std::string bytesOf(Handle handle)
{
    const spy::Object* const object = spy::find(handle);
    return object ? std::string(object->bytes, object->size) : "no handle";
}

int sleeps() { return sleepCount; }

} // namespace sound_spy

namespace spy {

static Line& operator<<(Line& line, const ComponentDescription* d)
{
    if (!d) return line << "null";
    return line << "{" << Code{d->componentType} << ", " << Code{d->componentSubType} << ", "
                << Code{d->componentManufacturer} << ", " << Hex{d->componentFlags} << ", "
                << Hex{d->componentFlagsMask} << "}";
}

static Line& operator<<(Line& line, const SoundComponentData* d)
{
    if (!d) return line << "null";
    return line << "{" << d->flags << ", " << Code{d->format} << ", " << d->numChannels << ", "
                << d->sampleSize << ", " << Hex{d->sampleRate} << ", " << d->sampleCount << ", "
                << static_cast<const void*>(d->buffer) << ", " << d->reserved << "}";
}

} // namespace spy

using namespace sound_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- time functions, which the sound bridge must not call while it waits, except for nanosleep ----

AbsoluteTime UpTime()
{
    statusOf(__func__);
    return {};
}

AbsoluteTime AddDurationToAbsolute(Duration, AbsoluteTime time)
{
    statusOf(__func__);
    return time;
}

OSStatus MPDelayUntil(AbsoluteTime*)
{
    ++sleepCount;
    return statusOf(__func__);
}

int nanosleep(const timespec*, timespec*)
{
    ++sleepCount;
    return sched_yield();
}

// ---- components ----

Component RegisterComponent(ComponentDescription* description, ComponentRoutineUPP entry, SInt16 global,
                            Handle itsName, Handle info, Handle icon)
{
    registration = {*description, entry, bytesOf(itsName)};
    const OSStatus refusal = statusOf(__func__, description, entry, global, itsName, info, icon);
    if (refusal) return nullptr;
    void* const component = spy::make("component");
    registered = component;
    return static_cast<Component>(component);
}

OSErr UnregisterComponent(Component component)
{
    spy::Release releasing(__func__, component);
    const OSStatus refusal = statusOf(__func__, component);
    releasing.isCancelled = refusal != noErr || !component;
    return static_cast<OSErr>(refusal);
}

long CountComponentInstances(Component component)
{
    statusOf(__func__, component);
    return 3; // any count, because the sound bridge ignores it
}

void SetComponentRefcon(Component component, long word)
{
    nameStored("refcon", reinterpret_cast<void*>(word));
    statusOf(__func__, component, reinterpret_cast<const void*>(word));
    const spy::Guard guard;
    refcons[component] = word;
}

long GetComponentRefcon(Component component)
{
    if (statusOf(__func__, component)) return 0;
    const void* const ofInstance = valueOf(componentOf, component);
    return valueOf(refcons, ofInstance ? ofInstance : component);
}

void SetComponentInstanceStorage(ComponentInstance instance, Handle storage)
{
    nameStored("storage", storage);
    statusOf(__func__, instance, storage);
    const spy::Guard guard;
    storages[instance] = storage;
}

Component FindNextComponent(Component previous, ComponentDescription* looking)
{
    if (statusOf(__func__, previous, looking)) return nullptr;
    return static_cast<Component>(spy::make("output", false));
}

OSErr OpenAComponent(Component component, ComponentInstance* instance)
{
    return static_cast<OSErr>(spy::giveNew(statusOf(__func__, component), "unit", instance));
}

// The handler is called as in the platform: the procedure information describes the call, not the function's
// type.
__attribute__((no_sanitize("function"))) ComponentResult
CallComponentFunctionWithStorageProcInfo(Handle storage, ComponentParameters* parameters, ProcPtr function,
                                         ProcInfoType words)
{
    const OSStatus refusal =
        statusOf(__func__, storage, parameters, function ? "a handler" : "null", Hex{words});
    if (refusal || !thePlatform.callsHandlers) return refusal;
    const long* const word = parameters->params;
    switch (words) {
    case 0xF0:
        return reinterpret_cast<ComponentResult (*)(Handle)>(function)(storage);
    case 0x2F0:
        return reinterpret_cast<ComponentResult (*)(Handle, SInt16)>(function)(storage,
                                                                               static_cast<SInt16>(word[0]));
    case 0x3F0:
        return reinterpret_cast<ComponentResult (*)(Handle, long)>(function)(storage, word[0]);
    case 0xEF0:
        return reinterpret_cast<ComponentResult (*)(Handle, SInt16, long)>(function)(
            storage, static_cast<SInt16>(word[0]), word[1]);
    case 0x3FF0:
        return reinterpret_cast<ComponentResult (*)(Handle, long, long, long)>(function)(storage, word[0],
                                                                                         word[1], word[2]);
    default:
        return paramErr;
    }
}

ComponentResult DelegateComponentCall(ComponentParameters* parameters, ComponentInstance instance)
{
    return statusOf(__func__, parameters, instance);
}

// ---- memory ----

Handle NewHandle(Size bytes) { return statusOf(__func__, bytes) ? nullptr : makeHandle(nullptr, bytes); }

StringHandle NewString(ConstStr255Param letters)
{
    const std::string shown(reinterpret_cast<const char*>(letters) + 1, letters[0]);
    if (statusOf(__func__, '"' + shown + '"')) return nullptr;
    return reinterpret_cast<StringHandle>(makeHandle(letters, letters[0] + 1));
}

void DisposeHandle(Handle handle)
{
    spy::Release releasing(__func__, handle);
    releasing.isCancelled = !handle;
    statusOf(__func__, handle);
}

void CopyCStringToPascal(const char* from, Str255 to)
{
    statusOf(__func__, '"' + std::string(from) + '"');
    to[0] = static_cast<unsigned char>(std::strlen(from));
    std::memcpy(to + 1, from, to[0]);
}

// ---- classic sound ----

OSErr OpenMixerSoundComponent(SoundComponentDataPtr description, long flags, ComponentInstance* mixer)
{
    return static_cast<OSErr>(spy::giveNew(statusOf(__func__, description, flags), "mixer", mixer));
}

OSErr CloseMixerSoundComponent(ComponentInstance mixer)
{
    spy::Release releasing(__func__, mixer);
    releasing.isCancelled = !mixer;
    return static_cast<OSErr>(statusOf(__func__, mixer));
}

ComponentResult SoundComponentGetSourceData(ComponentInstance mixer, SoundComponentDataPtr* data)
{
    const OSStatus refusal = statusOf(__func__, mixer, static_cast<const void*>(*data));
    if (thePlatform.nextData) thePlatform.nextData(data);
    return refusal;
}

ComponentResult SoundComponentGetInfo(ComponentInstance mixer, SoundSource source, OSType selector,
                                      void* info)
{
    return statusOf(__func__, mixer, source, Code{selector}, info);
}

ComponentResult SoundComponentSetInfo(ComponentInstance mixer, SoundSource source, OSType selector,
                                      void* info)
{
    return statusOf(__func__, mixer, source, Code{selector}, info);
}

ComponentResult SoundComponentStartSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return statusOf(__func__, mixer, count, sources);
}

ComponentResult SoundComponentStopSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return statusOf(__func__, mixer, count, sources);
}

ComponentResult SoundComponentPauseSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return statusOf(__func__, mixer, count, sources);
}

ComponentResult SoundComponentPlaySourceBuffer(ComponentInstance mixer, SoundSource source,
                                               SoundParamBlockPtr block, long actions)
{
    return statusOf(__func__, mixer, source, block, actions);
}

// ---- converters ----

OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                           const AudioStreamBasicDescription* destination, AudioConverterRef* converter)
{
    const OSStatus refusal = statusOf(__func__, source, destination);
    return spy::giveNew(refusal, "converter", converter,
                        false); // the sound bridge never disposes its converter
}

OSStatus AudioConverterDispose(AudioConverterRef converter) { return statusOf(__func__, converter); }

OSStatus AudioConverterFillComplexBuffer(AudioConverterRef converter,
                                         AudioConverterComplexInputDataProc input, void* client,
                                         UInt32* packets, AudioBufferList* list,
                                         AudioStreamPacketDescription* descriptions)
{
    const OSStatus refusal = statusOf(__func__, converter, input, client, *packets, list, descriptions);
    if (thePlatform.fill) return thePlatform.fill({converter, input, client, packets, list});
    return refusal;
}

// ---- output units ----

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* value, UInt32 size)
{
    AURenderCallbackStruct given = {};
    if (value) std::memcpy(&given, value, std::min<std::size_t>(size, sizeof given));
    const OSStatus refusal =
        statusOf(__func__, unit, property, "scope " + std::to_string(scope),
                 "element " + std::to_string(element), &given, size == sizeof given ? "whole" : "in part");
    if (!refusal) lastCallback = given;
    return refusal;
}

OSStatus AudioUnitInitialize(AudioUnit unit) { return statusOf(__func__, unit); }
OSStatus AudioOutputUnitStart(AudioUnit unit) { return statusOf(__func__, unit); }
OSStatus AudioOutputUnitStop(AudioUnit unit) { return statusOf(__func__, unit); }

} // extern "C"
#pragma GCC visibility pop
