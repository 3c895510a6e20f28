#include "tests/auplayer/graph_spy.h"

#include <Carbon/Carbon.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <deque>
#include <initializer_list>

namespace graph_spy {

namespace {

/// Anything that the platform has made. Its address is the handle that callers get.
struct Thing {
    std::string name;
    bool isLive;
};

Platform thePlatform;
std::deque<Thing> things; // addresses stay
std::map<std::string, int> made;
std::map<const void*, std::string> names;
std::map<AUNode, std::string> nodes;
std::string value;
AURenderCallbackStruct lastCallback;
Notes notes, wrongs;
constexpr AUNode firstNode = 70;

/// It spins, so that noting a call never touches a lock that a test watches.
class Guard {
public:
    Guard()
    {
        while (flag.test_and_set(std::memory_order_acquire)) {
        }
    }
    ~Guard() { flag.clear(std::memory_order_release); }
    Guard(const Guard&) = delete;
    Guard& operator=(const Guard&) = delete;

private:
    static std::atomic_flag flag;
};
std::atomic_flag Guard::flag = ATOMIC_FLAG_INIT;

// ---- what was made ----

Thing* find(const void* handle)
{
    const auto found =
        std::find_if(things.begin(), things.end(), [&](const Thing& thing) { return &thing == handle; });
    return found == things.end() ? nullptr : &*found;
}

void* make(const std::string& kind)
{
    const Guard guard;
    things.push_back({kind + std::to_string(++made[kind]), true});
    return &things.back();
}

void* makeNamed(const std::string& itsName)
{
    const Guard guard;
    things.push_back({itsName, true});
    return &things.back();
}

/// A call that takes `handle` back, however it ends.
class Release {
public:
    Release(const char* function, const void* handle) : function_(function), handle_(handle) {}
    ~Release()
    {
        const Guard guard;
        Thing* const thing = find(handle_);
        if (!thing)
            wrongs.push_back(std::string(function_) + " of a foreign address");
        else if (!thing->isLive)
            wrongs.push_back(std::string(function_) + " of " + thing->name + " again");
        else
            thing->isLive = false;
    }
    Release(const Release&) = delete;
    Release& operator=(const Release&) = delete;

private:
    const char* function_;
    const void* handle_;
};

/// Things that go together with another.
void end(std::initializer_list<const char*> beginnings)
{
    const Guard guard;
    for (Thing& thing : things)
        for (const std::string beginning : beginnings)
            if (thing.name.compare(0, beginning.size(), beginning) == 0) thing.isLive = false;
}

// ---- arguments as text ----

std::string decimal(unsigned long long number) { return std::to_string(number); }

std::string real(double number)
{
    char text[40];
    std::snprintf(text, sizeof text, "%g", number);
    return text;
}

std::string hex(unsigned long long number)
{
    char text[24];
    std::snprintf(text, sizeof text, "0x%llX", number);
    return text;
}

/// 'lpcm' for four plain characters, else a number.
std::string code(UInt32 word)
{
    const char text[] = {'\'',
                         static_cast<char>(word >> 24),
                         static_cast<char>(word >> 16),
                         static_cast<char>(word >> 8),
                         static_cast<char>(word),
                         '\''};
    const bool isText =
        std::all_of(text, text + sizeof text, [](char letter) { return letter >= ' ' && letter <= '~'; });
    return isText ? std::string(text, sizeof text) : decimal(word);
}

std::string text(const void* pointer)
{
    if (!pointer) return "null";
    const auto named = names.find(pointer);
    if (named != names.end()) return named->second;
    if (const Thing* thing = find(pointer)) {
        if (!thing->isLive) wrongs.push_back(thing->name + " used, which is gone");
        return thing->name;
    }
    return "memory";
}

std::string text(CFAllocatorRef allocator) { return allocator ? "an allocator" : "default"; }

std::string format(const void* bytes)
{
    AudioStreamBasicDescription f;
    std::memcpy(&f, bytes, sizeof f);
    return "{" + real(f.mSampleRate) + ", " + code(f.mFormatID) + ", " + hex(f.mFormatFlags) + ", " +
           decimal(f.mBytesPerPacket) + ", " + decimal(f.mFramesPerPacket) + ", " +
           decimal(f.mBytesPerFrame) + ", " + decimal(f.mChannelsPerFrame) + ", " +
           decimal(f.mBitsPerChannel) + ", " + decimal(f.mReserved) + "}";
}

struct Node {
    AUNode number;
};
std::string text(Node node)
{
    const auto found = nodes.find(node.number);
    return found == nodes.end() ? "node " + std::to_string(node.number) : found->second + " node";
}

struct Scope {
    AudioUnitScope number;
};
std::string text(Scope scope)
{
    static const char* const scopes[] = {"global", "input", "output"};
    return scope.number < 3 ? scopes[scope.number] : "scope " + decimal(scope.number);
}

struct Code {
    UInt32 word;
};
std::string text(Code word) { return code(word.word); }

struct Number {
    unsigned long long value;
};
std::string text(Number number) { return decimal(number.value); }

struct Bytes {
    UInt32 count;
};
std::string text(Bytes bytes) { return decimal(bytes.count) + " bytes"; }

struct InOut {
    const UInt32* size;
};
std::string text(InOut size) { return size.size ? "size " + decimal(*size.size) : "size nowhere"; }

/// With as many digits as tell any two apart.
std::string text(Float32 number)
{
    char digits[40];
    std::snprintf(digits, sizeof digits, "%.9g", static_cast<double>(number));
    return digits;
}

std::string text(const AudioObjectPropertyAddress* address)
{
    if (!address) return "null";
    return "{" + code(address->mSelector) + ", " + code(address->mScope) + ", " + decimal(address->mElement) +
           "}";
}

std::string text(const AudioComponentDescription* d)
{
    if (!d) return "null";
    return "{" + code(d->componentType) + ", " + code(d->componentSubType) + ", " +
           code(d->componentManufacturer) + ", " + decimal(d->componentFlags) + ", " +
           decimal(d->componentFlagsMask) + "}";
}

std::string text(const AURenderCallbackStruct* given)
{
    if (!given) return "null";
    return "{" + text(reinterpret_cast<const void*>(given->inputProc)) + ", " + text(given->inputProcRefCon) +
           "}";
}

/// A property's value on its way in.
struct Value {
    const void* bytes;
    UInt32 size;
};
std::string text(Value given)
{
    if (!given.bytes) return "null";
    if (given.size == sizeof(AudioStreamBasicDescription)) return format(given.bytes);
    if (given.size != sizeof(UInt32)) return text(given.bytes);
    UInt32 word;
    std::memcpy(&word, given.bytes, sizeof word);
    return decimal(word);
}

struct Reference {
    const FSRef* of;
};
std::string text(Reference reference)
{
    if (!reference.of) return "null";
    const auto* bytes = reinterpret_cast<const char*>(reference.of);
    return '"' + std::string(bytes, strnlen(bytes, sizeof(FSRef))) + '"';
}

struct Characters {
    const UniChar* units;
    CFIndex count;
};
std::string text(Characters characters)
{
    std::string shown = "\"";
    for (CFIndex i = 0; i < std::min<CFIndex>(characters.count, 20); ++i) {
        const UniChar unit = characters.units[i];
        shown += unit >= ' ' && unit <= '~' ? std::string(1, static_cast<char>(unit)) : "<" + hex(unit) + ">";
    }
    return shown + (characters.count > 20 ? "...\"" : "\"");
}

std::string text(const AudioBufferList* list)
{
    if (!list) return "null";
    std::string shown = "{";
    for (UInt32 i = 0; i < list->mNumberBuffers; ++i) {
        const AudioBuffer& buffer = list->mBuffers[i];
        shown += (i ? "; " : "") + decimal(buffer.mNumberChannels) + " channels, " +
                 decimal(buffer.mDataByteSize) + " bytes, " + text(buffer.mData);
    }
    return shown + "}";
}

// ---- a call ----

struct Call {
    OSStatus refusal;
    Answer scripted;
};

template <class... Arguments>
Call note(const char* function, Arguments... arguments)
{
    std::size_t number;
    Call call;
    std::function<void(std::size_t)> inEachCall;
    {
        const Guard guard;
        std::string line = std::string(function) + "(";
        [[maybe_unused]] const char* between = "";
        ((line += between + text(arguments), between = ", "), ...);
        number = notes.size();
        notes.push_back(line + ")");
        call.scripted = thePlatform.answers[function];
        inEachCall = thePlatform.inEachCall;
    }
    if (inEachCall) inEachCall(number);
    if (call.scripted.during) call.scripted.during();
    call.refusal = call.scripted.each ? call.scripted.each() : call.scripted.status;
    const auto refused = thePlatform.refusals.find(number);
    if (refused != thePlatform.refusals.end()) call.refusal = refused->second;
    return call;
}

void rubbish(void* bytes, std::size_t size)
{
    if (bytes) std::memset(bytes, 0x3F, size);
}

/// Write an answer of a known size; a refused call leaves rubbish.
template <class T>
OSStatus give(OSStatus refusal, T* place, const T& given)
{
    if (refusal)
        rubbish(place, sizeof *place);
    else if (place)
        *place = given;
    return refusal;
}

/// The same for a property, whose size the caller gives.
template <class T>
OSStatus giveProperty(OSStatus refusal, UInt32* size, void* place, const T& given)
{
    if (!refusal && *size < sizeof given) refusal = OSStatus{paramErr};
    if (refusal) {
        rubbish(place, *size);
        return refusal;
    }
    std::memcpy(place, &given, sizeof given);
    *size = sizeof given;
    return noErr;
}

/// What the test has scripted for a property.
OSStatus giveScripted(const Call& call, UInt32* size, void* place)
{
    if (call.refusal) {
        if (size && call.scripted.leavesRubbish) rubbish(place, *size);
        return call.refusal;
    }
    if (place && size)
        std::memcpy(place, call.scripted.value.data(),
                    std::min<std::size_t>(call.scripted.value.size(), *size));
    if (size && call.scripted.size) *size = *call.scripted.size;
    return noErr;
}

const Device* findDevice(AudioDeviceID id)
{
    const auto& devices = thePlatform.devices;
    const auto found =
        std::find_if(devices.begin(), devices.end(), [&](const Device& device) { return device.id == id; });
    return found == devices.end() ? nullptr : &*found;
}

void keepValue(const void* bytes, UInt32 size)
{
    const Guard guard;
    value.assign(static_cast<const char*>(bytes), bytes ? size : 0);
}

std::string unitName(OSType subType)
{
    switch (subType) {
    case 'vari':
        return "varispeed";
    case 'nutp':
    case 'tmpt':
        return "timePitch";
    case 'greq':
        return "equalizer";
    case 'mcmx':
        return "mixer";
    case 'conv':
        return "converter";
    default:
        return "output";
    }
}

} // namespace

Platform& platform() { return thePlatform; }
Answer& answer(const std::string& function) { return thePlatform.answers[function]; }

void reset()
{
    thePlatform = {};
    things.clear();
    made.clear();
    names.clear();
    nodes.clear();
    value.clear();
    lastCallback = {};
    wrongs.clear();
    forgetCalls();
}

Notes calls()
{
    const Guard guard;
    return notes;
}

void forgetCalls()
{
    const Guard guard;
    notes.clear();
}

void name(const void* pointer, const std::string& text) { names[pointer] = text; }
std::string lastValue() { return value; }
AURenderCallbackStruct callback() { return lastCallback; }
Notes faults() { return wrongs; }

Notes live()
{
    Notes left;
    for (const Thing& thing : things)
        if (thing.isLive) left.push_back(thing.name);
    return left;
}

} // namespace graph_spy

using namespace graph_spy;

#pragma GCC visibility push(default)
extern "C" {

// ---- sound files ----

OSStatus ExtAudioFileOpenURL(CFURLRef url, ExtAudioFileRef* file)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(url)).refusal;
    const bool opens = !refusal && !thePlatform.opensNothing;
    return give(refusal, file, opens ? static_cast<ExtAudioFileRef>(make("file")) : nullptr);
}

OSStatus ExtAudioFileDispose(ExtAudioFileRef file)
{
    const Release releasing(__func__, file);
    const OSStatus refusal = note(__func__, static_cast<const void*>(file)).refusal;
    end({"audio"}); // the handle inside it
    return refusal;
}

OSStatus ExtAudioFileGetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32* size,
                                 void* data)
{
    OSStatus refusal = note(__func__, static_cast<const void*>(file), Code{property}, InOut{size}).refusal;
    switch (property) {
    case 'ffmt':
        return giveProperty(refusal, size, data, thePlatform.file.format);
    case '#frm':
        return giveProperty(refusal, size, data, thePlatform.file.length);
    case 'afil':
        return giveProperty(refusal, size, data, refusal ? nullptr : make("audio"));
    default:
        return kExtAudioFileError_InvalidProperty;
    }
}

OSStatus ExtAudioFileSetProperty(ExtAudioFileRef file, ExtAudioFilePropertyID property, UInt32 size,
                                 const void* data)
{
    keepValue(data, size);
    return note(__func__, static_cast<const void*>(file), Code{property}, Bytes{size}, Value{data, size})
        .refusal;
}

OSStatus ExtAudioFileRead(ExtAudioFileRef file, UInt32* frames, AudioBufferList* list)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(file), Number{*frames},
                                  static_cast<const AudioBufferList*>(list))
                                 .refusal;
    const UInt32 read = thePlatform.file.framesRead.value_or(*frames);
    const AudioBuffer& buffer = list->mBuffers[0];
    if (buffer.mData && thePlatform.file.touchesBuffer) {
        const std::size_t room = buffer.mDataByteSize / sizeof(float);
        const std::size_t count = std::min<std::size_t>(room, std::size_t{read} * buffer.mNumberChannels);
        for (std::size_t i = 0; i < count; ++i) static_cast<float*>(buffer.mData)[i] = static_cast<float>(i);
    }
    return give(refusal, frames, read);
}

OSStatus AudioFileGetProperty(AudioFileID file, AudioFilePropertyID property, UInt32* size, void* data)
{
    const OSStatus refusal =
        note(__func__, static_cast<const void*>(file), Code{property}, InOut{size}).refusal;
    return giveProperty(refusal, size, data, thePlatform.file.seconds);
}

OSStatus AudioFileClose(AudioFileID file)
{
    const Release releasing(__func__, file);
    return note(__func__, static_cast<const void*>(file)).refusal;
}

// ---- graphs ----

OSStatus NewAUGraph(AUGraph* graph)
{
    const OSStatus refusal = note(__func__).refusal;
    return give(refusal, graph, refusal ? nullptr : static_cast<AUGraph>(make("graph")));
}

OSStatus DisposeAUGraph(AUGraph graph)
{
    const Release releasing(__func__, graph);
    end({"output", "varispeed", "timePitch", "equalizer", "mixer", "converter"});
    return note(__func__, static_cast<const void*>(graph)).refusal;
}

OSStatus AUGraphAddNode(AUGraph graph, const AudioComponentDescription* description, AUNode* node)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph), description).refusal;
    const Guard guard;
    const AUNode added = firstNode + static_cast<AUNode>(nodes.size());
    if (!refusal) nodes[added] = unitName(description->componentSubType);
    return give(refusal, node, added);
}

OSStatus AUGraphConnectNodeInput(AUGraph graph, AUNode source, UInt32 output, AUNode destination,
                                 UInt32 input)
{
    return note(__func__, static_cast<const void*>(graph), Node{source}, Number{output}, Node{destination},
                Number{input})
        .refusal;
}

OSStatus AUGraphOpen(AUGraph graph) { return note(__func__, static_cast<const void*>(graph)).refusal; }

OSStatus AUGraphNodeInfo(AUGraph graph, AUNode node, AudioComponentDescription* description, AudioUnit* unit)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph), Node{node},
                                  static_cast<const AudioComponentDescription*>(description))
                                 .refusal;
    return give(refusal, unit, refusal ? nullptr : static_cast<AudioUnit>(makeNamed(nodes[node])));
}

OSStatus AUGraphSetNodeInputCallback(AUGraph graph, AUNode node, UInt32 input,
                                     const AURenderCallbackStruct* given)
{
    lastCallback = *given;
    return note(__func__, static_cast<const void*>(graph), Node{node}, Number{input}, given).refusal;
}

OSStatus AUGraphInitialize(AUGraph graph) { return note(__func__, static_cast<const void*>(graph)).refusal; }

OSStatus AUGraphStart(AUGraph graph)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    if (!refusal) thePlatform.isRunning = true;
    return refusal;
}

OSStatus AUGraphStop(AUGraph graph)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    if (!refusal) thePlatform.isRunning = false;
    return refusal;
}

OSStatus AUGraphIsRunning(AUGraph graph, Boolean* isRunning)
{
    const OSStatus refusal = note(__func__, static_cast<const void*>(graph)).refusal;
    return give(refusal, isRunning, Boolean{thePlatform.isRunning});
}

// ---- audio units ----

OSStatus AudioUnitGetPropertyInfo(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                                  AudioUnitElement element, UInt32* size, Boolean* writable)
{
    const Call call = note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope},
                           Number{element}, InOut{size}, static_cast<const void*>(writable));
    return giveScripted(call, size, nullptr);
}

OSStatus AudioUnitGetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, void* data, UInt32* size)
{
    const Call call = note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope},
                           Number{element}, InOut{size});
    return giveScripted(call, size, data);
}

OSStatus AudioUnitSetProperty(AudioUnit unit, AudioUnitPropertyID property, AudioUnitScope scope,
                              AudioUnitElement element, const void* data, UInt32 size)
{
    keepValue(data, size);
    return note(__func__, static_cast<const void*>(unit), Code{property}, Scope{scope}, Number{element},
                Value{data, size}, Bytes{size})
        .refusal;
}

OSStatus AudioUnitGetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue* number)
{
    const Call call =
        note(__func__, static_cast<const void*>(unit), Code{parameter}, Scope{scope}, Number{element});
    if (call.refusal && call.scripted.number == 0) return call.refusal; // where it stands, what stood there
    if (number) *number = call.scripted.number;
    return call.refusal;
}

OSStatus AudioUnitSetParameter(AudioUnit unit, AudioUnitParameterID parameter, AudioUnitScope scope,
                               AudioUnitElement element, AudioUnitParameterValue number, UInt32 offset)
{
    return note(__func__, static_cast<const void*>(unit), Code{parameter}, Scope{scope}, Number{element},
                number, Number{offset})
        .refusal;
}

OSStatus AudioUnitReset(AudioUnit unit, AudioUnitScope scope, AudioUnitElement element)
{
    return note(__func__, static_cast<const void*>(unit), Scope{scope}, Number{element}).refusal;
}

// ---- devices ----

OSStatus AudioObjectGetPropertyDataSize(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                        UInt32 qualifierSize, const void* qualifier, UInt32* size)
{
    const Call call = note(__func__, Number{object}, address, Number{qualifierSize}, qualifier);
    if (call.refusal) return call.refusal;
    if (!thePlatform.deviceLists.count(address->mSelector)) return kAudioHardwareUnknownPropertyError;
    *size =
        call.scripted.size.value_or(static_cast<UInt32>(thePlatform.devices.size() * sizeof(AudioDeviceID)));
    return noErr;
}

OSStatus AudioObjectGetPropertyData(AudioObjectID object, const AudioObjectPropertyAddress* address,
                                    UInt32 qualifierSize, const void* qualifier, UInt32* size, void* data)
{
    Call call = note(__func__, Number{object}, address, Number{qualifierSize}, qualifier, InOut{size});
    if (address->mSelector == 'name') {
        const Device* const device = findDevice(object);
        if (device && device->nameStatus) call.refusal = device->nameStatus;
        if (device) call.scripted.value = device->name;
    } else if (call.scripted.value.empty()) {
        for (const Device& device : thePlatform.devices) call.scripted.value += bytesOf(device.id);
    }
    return giveScripted(call, size, data);
}

OSStatus AudioHardwareGetProperty(AudioHardwarePropertyID property, UInt32* size, void* data)
{
    return giveScripted(note(__func__, Code{property}, InOut{size}), size, data);
}

OSStatus AudioDeviceGetPropertyInfo(AudioDeviceID device, UInt32 channel, Boolean isInput,
                                    AudioDevicePropertyID property, UInt32* size, Boolean* writable)
{
    const OSStatus refusal = note(__func__, Number{device}, Number{channel}, Number{isInput}, Code{property},
                                  InOut{size}, static_cast<const void*>(writable))
                                 .refusal;
    const Device* const found = findDevice(device);
    return refusal || (found && found->hasOutput) ? refusal : OSStatus{kAudioHardwareUnknownPropertyError};
}

// ---- paths and strings ----

CFURLRef CFURLCreateFromFSRef(CFAllocatorRef allocator, const FSRef* reference)
{
    const bool isRefused = note(__func__, allocator, Reference{reference}).refusal != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(make("url"));
}

CFURLRef CFURLCreateCopyAppendingPathComponent(CFAllocatorRef allocator, CFURLRef url, CFStringRef component,
                                               Boolean isDirectory)
{
    const bool isRefused = note(__func__, allocator, static_cast<const void*>(url),
                                static_cast<const void*>(component), Number{isDirectory})
                               .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFURLRef>(make("url"));
}

CFStringRef CFStringCreateWithCharacters(CFAllocatorRef allocator, const UniChar* units, CFIndex count)
{
    const bool isRefused =
        note(__func__, allocator, Characters{units, count}, Number{static_cast<unsigned long long>(count)})
            .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFStringRef>(make("string"));
}

CFMutableStringRef CFStringCreateMutableCopy(CFAllocatorRef allocator, CFIndex longest, CFStringRef text)
{
    const bool isRefused = note(__func__, allocator, Number{static_cast<unsigned long long>(longest)},
                                static_cast<const void*>(text))
                               .refusal != noErr;
    return isRefused ? nullptr : static_cast<CFMutableStringRef>(make("string"));
}

void CFStringNormalize(CFMutableStringRef text, CFStringNormalizationForm form)
{
    note(__func__, static_cast<const void*>(text), Number{static_cast<unsigned long long>(form)});
}

void CFRelease(CFTypeRef object)
{
    const Release releasing(__func__, object);
    note(__func__, object);
}

} // extern "C"
#pragma GCC visibility pop
