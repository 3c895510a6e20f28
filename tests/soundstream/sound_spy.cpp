#include "tests/soundstream/sound_spy.h"

#include "tests/support/record_text.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <deque>
#include <memory>
#include <mutex>

#include <sched.h>
#include <time.h>

namespace sound_spy {

namespace {

/// A simulated object of the platform. Callers use its address as the handle.
struct Thing {
    std::string name;
    bool isLive = true;
    bool isOwed = true; ///< whether the code under test must release the object

    Thing* component = nullptr; ///< component of an instance
    long refcon = 0;
    Handle storage = nullptr;
};

/// The memory of a handle. It has exactly the requested size, so that a sanitizer finds a write past its end.
struct Block {
    Ptr bytes; ///< address of the memory; the first field, because a handle is the address of this field
    std::unique_ptr<char[]> memory;
    std::size_t size;
    std::string name;
    bool isLive = true;
};

std::recursive_mutex lock;
Platform thePlatform;
std::deque<Thing> things; // a deque, because its objects must keep their addresses
std::deque<Block> blocks;
std::map<std::string, int> made;
std::map<const void*, std::string> names;
AURenderCallbackStruct lastCallback;
Registration registration;
Thing* registered = nullptr;
Notes notes, errors;
std::atomic<int> sleepCount{0};

using Guard = std::lock_guard<std::recursive_mutex>;

std::string numbered(const std::string& kind) { return kind + std::to_string(++made[kind]); }

Thing* make(const std::string& kind, bool isOwed = true)
{
    const Guard guard(lock);
    things.push_back({numbered(kind), true, isOwed});
    return &things.back();
}

Thing* find(const void* handle)
{
    const auto found =
        std::find_if(things.begin(), things.end(), [&](const Thing& thing) { return &thing == handle; });
    return found == things.end() ? nullptr : &*found;
}

Block* findBlock(const void* handle)
{
    const auto found =
        std::find_if(blocks.begin(), blocks.end(), [&](const Block& block) { return &block == handle; });
    return found == blocks.end() ? nullptr : &*found;
}

Handle makeHandle(const void* bytes, Size size)
{
    const Guard guard(lock);
    blocks.emplace_back();
    Block& block = blocks.back();
    block.size = static_cast<std::size_t>(size);
    block.memory.reset(new char[block.size]);
    block.bytes = block.memory.get();
    block.name = numbered("handle");
    if (bytes) std::memcpy(block.bytes, bytes, block.size);
    return &block.bytes;
}

/// Releases `handle` at the end of a platform call, even if the call throws.
class Release {
public:
    Release(const char* function, const void* handle) : function_(function), handle_(handle) {}
    ~Release()
    {
        if (isRefused) return;
        const Guard guard(lock);
        Thing* const thing = find(handle_);
        Block* const block = findBlock(handle_);
        if (thing && !thing->isLive)
            errors.push_back(std::string(function_) + " of " + thing->name + " again");
        else if (block && !block->isLive)
            errors.push_back(std::string(function_) + " of " + block->name + " again");
        else if (thing)
            thing->isLive = false;
        else if (block)
            block->isLive = false, block->memory.reset();
        else if (handle_)
            errors.push_back(std::string(function_) + " of an unknown address");
    }
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;

    bool isRefused = false;

private:
    const char* function_;
    const void* handle_;
};

/// Give a name to a pointer that the platform stores, such as a refcon. Each call makes a new name.
void nameStored(const char* kind, const void* pointer)
{
    const Guard guard(lock);
    if (pointer) names[pointer] = numbered(kind);
}

// ---- arguments as text ----

using record_text::hex;

struct Code {
    UInt32 word;
};
std::string text(Code code)
{
    const std::string quoted = record_text::quotedCode(code.word);
    return quoted.empty() ? hex(code.word) : quoted;
}

std::string text(const void* pointer)
{
    if (!pointer) return "null";
    const auto named = names.find(pointer);
    if (named != names.end()) return named->second;
    if (const Thing* thing = find(pointer)) {
        if (!thing->isLive) errors.push_back(thing->name + " used after its release");
        return thing->name;
    }
    if (const Block* block = findBlock(pointer)) {
        if (!block->isLive) errors.push_back(block->name + " used after its release");
        return block->name;
    }
    return "memory";
}

std::string text(long long number) { return std::to_string(number); }
std::string text(const char* words) { return words; }
std::string text(const std::string& words) { return words; }

std::string text(const ComponentDescription* d)
{
    if (!d) return "null";
    return "{" + text(Code{d->componentType}) + ", " + text(Code{d->componentSubType}) + ", " +
           text(Code{d->componentManufacturer}) + ", " + hex(d->componentFlags) + ", " +
           hex(d->componentFlagsMask) + "}";
}

std::string text(const SoundComponentData* d)
{
    if (!d) return "null";
    return "{" + std::to_string(d->flags) + ", " + text(Code{d->format}) + ", " +
           std::to_string(d->numChannels) + ", " + std::to_string(d->sampleSize) + ", " + hex(d->sampleRate) +
           ", " + std::to_string(d->sampleCount) + ", " + text(static_cast<const void*>(d->buffer)) + ", " +
           std::to_string(d->reserved) + "}";
}

std::string text(const AudioStreamBasicDescription* f)
{
    return f ? record_text::streamFormat(*f, text(Code{f->mFormatID})) : "null";
}

std::string text(const AURenderCallbackStruct& given)
{
    return "{" + text(reinterpret_cast<const void*>(given.inputProc)) + ", " + text(given.inputProcRefCon) +
           "}";
}

// ---- recording of a call ----

/// Record a call, run the functions that the test has set, and return the test's status for this call.
template <class... Arguments>
OSStatus note(const char* function, Arguments... arguments)
{
    Answer scripted;
    std::function<void(const std::string&)> inEachCall;
    {
        const Guard guard(lock);
        std::string line = std::string(function) + "(";
        [[maybe_unused]] const char* between = "";
        ((line += between + text(arguments), between = ", "), ...);
        notes.push_back(line + ")");
        const auto found = thePlatform.answers.find(function);
        if (found != thePlatform.answers.end()) scripted = found->second;
        inEachCall = thePlatform.inEachCall;
    }
    if (inEachCall) inEachCall(function);
    if (scripted.during) scripted.during();
    return scripted.status;
}

template <class Value>
void fillWithGarbage(Value* out)
{
    if (out) std::memset(out, 0x3F, sizeof *out);
}

/// Store the address of a new object in `out`. If the call is refused, fill `out` with garbage.
template <class Reference>
OSStatus give(OSStatus refusal, const char* kind, Reference* out)
{
    if (refusal)
        fillWithGarbage(out);
    else
        *out = reinterpret_cast<Reference>(make(kind));
    return refusal;
}

Thing* thingOf(const void* handle)
{
    const Guard guard(lock);
    return find(handle);
}

} // namespace

Platform& platform() { return thePlatform; }
Answer& answer(const std::string& function) { return thePlatform.answers[function]; }

void reset()
{
    const Guard guard(lock);
    thePlatform = {};
    things.clear();
    blocks.clear();
    made.clear();
    names.clear();
    lastCallback = {};
    registration = {};
    registered = nullptr;
    errors.clear();
    notes.clear();
    sleepCount = 0;
}

Notes calls()
{
    const Guard guard(lock);
    return notes;
}

void forgetCalls()
{
    const Guard guard(lock);
    notes.clear();
}

void name(const void* pointer, const std::string& text)
{
    const Guard guard(lock);
    names[pointer] = text;
}

Registration lastRegistration() { return registration; }

ComponentInstance newInstance()
{
    Thing* const instance = make("instance", false);
    instance->component = registered;
    return reinterpret_cast<ComponentInstance>(instance);
}

Handle storageOf(ComponentInstance instance)
{
    const Guard guard(lock);
    return find(instance)->storage;
}

long refconOf(Component component)
{
    const Guard guard(lock);
    return find(component)->refcon;
}

AURenderCallbackStruct callback() { return lastCallback; }

std::string bytesOf(Handle handle)
{
    const Guard guard(lock);
    const Block* const block = findBlock(handle);
    return block ? std::string(block->bytes, block->size) : "no handle";
}

Notes live()
{
    const Guard guard(lock);
    Notes left;
    for (const Thing& thing : things)
        if (thing.isLive && thing.isOwed) left.push_back(thing.name);
    for (const Block& block : blocks)
        if (block.isLive) left.push_back(block.name);
    return left;
}

Notes faults()
{
    const Guard guard(lock);
    return errors;
}

int sleeps() { return sleepCount; }

} // namespace sound_spy

using namespace sound_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- time functions, which the sound bridge must not call while it waits, except for nanosleep ----

AbsoluteTime UpTime()
{
    note(__func__);
    return {};
}

AbsoluteTime AddDurationToAbsolute(Duration, AbsoluteTime time)
{
    note(__func__);
    return time;
}

OSStatus MPDelayUntil(AbsoluteTime*)
{
    ++sleepCount;
    return note(__func__);
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
    const OSStatus refusal =
        note(__func__, static_cast<const ComponentDescription*>(description), reinterpret_cast<void*>(entry),
             static_cast<long long>(global), static_cast<const void*>(itsName),
             static_cast<const void*>(info), static_cast<const void*>(icon));
    if (refusal) return nullptr;
    registered = make("component");
    return reinterpret_cast<Component>(registered);
}

OSErr UnregisterComponent(Component component)
{
    Release releasing(__func__, component);
    const OSStatus refusal = note(__func__, static_cast<const void*>(component));
    releasing.isRefused = refusal != noErr;
    return static_cast<OSErr>(refusal);
}

long CountComponentInstances(Component component)
{
    note(__func__, static_cast<const void*>(component));
    return 3; // any count, because the sound bridge ignores it
}

void SetComponentRefcon(Component component, long word)
{
    nameStored("refcon", reinterpret_cast<void*>(word));
    note(__func__, static_cast<const void*>(component), reinterpret_cast<const void*>(word));
    if (Thing* const thing = thingOf(component)) thing->refcon = word;
}

long GetComponentRefcon(Component component)
{
    if (note(__func__, static_cast<const void*>(component))) return 0;
    const Thing* const thing = thingOf(component);
    return thing ? (thing->component ? thing->component : thing)->refcon : 0;
}

void SetComponentInstanceStorage(ComponentInstance instance, Handle storage)
{
    nameStored("storage", storage);
    note(__func__, static_cast<const void*>(instance), static_cast<const void*>(storage));
    if (Thing* const thing = thingOf(instance)) thing->storage = storage;
}

Component FindNextComponent(Component previous, ComponentDescription* looking)
{
    if (note(__func__, static_cast<const void*>(previous), static_cast<const ComponentDescription*>(looking)))
        return nullptr;
    return reinterpret_cast<Component>(make("output", false));
}

OSErr OpenAComponent(Component component, ComponentInstance* instance)
{
    return static_cast<OSErr>(give(note(__func__, static_cast<const void*>(component)), "unit", instance));
}

// The handler is called as in the platform: the procedure information describes the call, not the function's
// type.
__attribute__((no_sanitize("function"))) ComponentResult
CallComponentFunctionWithStorageProcInfo(Handle storage, ComponentParameters* parameters, ProcPtr function,
                                         ProcInfoType words)
{
    const OSStatus refusal =
        note(__func__, static_cast<const void*>(storage), static_cast<const void*>(parameters),
             function ? "a handler" : "null", hex(words));
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
    return note(__func__, static_cast<const void*>(parameters), static_cast<const void*>(instance));
}

// ---- memory ----

Handle NewHandle(Size bytes)
{
    return note(__func__, static_cast<long long>(bytes)) ? nullptr : makeHandle(nullptr, bytes);
}

StringHandle NewString(ConstStr255Param letters)
{
    const std::string shown(reinterpret_cast<const char*>(letters) + 1, letters[0]);
    if (note(__func__, '"' + shown + '"')) return nullptr;
    return reinterpret_cast<StringHandle>(makeHandle(letters, letters[0] + 1));
}

void DisposeHandle(Handle handle)
{
    const Release releasing(__func__, handle);
    note(__func__, static_cast<const void*>(handle));
}

void CopyCStringToPascal(const char* from, Str255 to)
{
    note(__func__, '"' + std::string(from) + '"');
    to[0] = static_cast<unsigned char>(std::strlen(from));
    std::memcpy(to + 1, from, to[0]);
}

// ---- classic sound ----

OSErr OpenMixerSoundComponent(SoundComponentDataPtr description, long flags, ComponentInstance* mixer)
{
    return static_cast<OSErr>(give(
        note(__func__, static_cast<const SoundComponentData*>(description), static_cast<long long>(flags)),
        "mixer", mixer));
}

OSErr CloseMixerSoundComponent(ComponentInstance mixer)
{
    const Release releasing(__func__, mixer);
    return static_cast<OSErr>(note(__func__, static_cast<const void*>(mixer)));
}

ComponentResult SoundComponentGetSourceData(ComponentInstance mixer, SoundComponentDataPtr* data)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(mixer), static_cast<const void*>(*data));
    if (thePlatform.nextData) thePlatform.nextData(data);
    return refusal;
}

ComponentResult SoundComponentGetInfo(ComponentInstance mixer, SoundSource source, OSType selector,
                                      void* info)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<const void*>(source), Code{selector},
                static_cast<const void*>(info));
}

ComponentResult SoundComponentSetInfo(ComponentInstance mixer, SoundSource source, OSType selector,
                                      void* info)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<const void*>(source), Code{selector},
                static_cast<const void*>(info));
}

ComponentResult SoundComponentStartSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<long long>(count),
                static_cast<const void*>(sources));
}

ComponentResult SoundComponentStopSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<long long>(count),
                static_cast<const void*>(sources));
}

ComponentResult SoundComponentPauseSource(ComponentInstance mixer, short count, SoundSource* sources)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<long long>(count),
                static_cast<const void*>(sources));
}

ComponentResult SoundComponentPlaySourceBuffer(ComponentInstance mixer, SoundSource source,
                                               SoundParamBlockPtr block, long actions)
{
    return note(__func__, static_cast<const void*>(mixer), static_cast<const void*>(source),
                static_cast<const void*>(block), static_cast<long long>(actions));
}

// ---- converters ----

OSStatus AudioConverterNew(const AudioStreamBasicDescription* source,
                           const AudioStreamBasicDescription* destination, AudioConverterRef* converter)
{
    const OSStatus refusal = note(__func__, source, destination);
    if (refusal)
        fillWithGarbage(converter);
    else
        // The sound bridge never disposes its converter.
        *converter = reinterpret_cast<AudioConverterRef>(make("converter", false));
    return refusal;
}

OSStatus AudioConverterDispose(AudioConverterRef converter)
{
    return note(__func__, reinterpret_cast<const void*>(converter));
}

OSStatus AudioConverterFillComplexBuffer(AudioConverterRef converter,
                                         AudioConverterComplexInputDataProc input, void* client,
                                         UInt32* packets, AudioBufferList* list,
                                         AudioStreamPacketDescription* descriptions)
{
    const OSStatus refusal =
        note(__func__, reinterpret_cast<const void*>(converter), reinterpret_cast<const void*>(input),
             static_cast<const void*>(client), static_cast<long long>(*packets),
             static_cast<const void*>(list), static_cast<const void*>(descriptions));
    if (thePlatform.fill) return thePlatform.fill({converter, input, client, packets, list});
    return refusal;
}

// ---- output units ----

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* value, UInt32 size)
{
    AURenderCallbackStruct given = {};
    if (value) std::memcpy(&given, value, std::min<std::size_t>(size, sizeof given));
    const OSStatus refusal = note(__func__, static_cast<const void*>(unit), static_cast<long long>(property),
                                  "scope " + std::to_string(scope), "element " + std::to_string(element),
                                  given, size == sizeof given ? "whole" : "in part");
    if (!refusal) lastCallback = given;
    return refusal;
}

OSStatus AudioUnitInitialize(AudioUnit unit) { return note(__func__, static_cast<const void*>(unit)); }
OSStatus AudioOutputUnitStart(AudioUnit unit) { return note(__func__, static_cast<const void*>(unit)); }
OSStatus AudioOutputUnitStop(AudioUnit unit) { return note(__func__, static_cast<const void*>(unit)); }

} // extern "C"
#pragma GCC visibility pop
