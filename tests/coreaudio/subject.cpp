#include "tests/coreaudio/subject.h"

#include "coreaudio/core_audio.h"
#include "plugin/process_state.h"
#include "plugin/services.h"

#include <algorithm>
#include <cstring>

namespace subject {

namespace {

constexpr Word dataOffset = 48;
Subject* current = nullptr;

/// Reconstruct a service wrapper, so that it forgets the address of the host's function.
template <class Service, class... Names>
void forget(Service& service, Names... names)
{
    service.~Service();
    new (&service) Service(names...);
}

void forgetServices()
{
    forget(REALnewInstance, "PluginNewInstance");
    forget(REALLockObject, "REALLockObject");
    forget(REALUnlockObject, "REALUnlockObject");
    forget(REALSetPropValueString, "REALSetPropValueString");
    forget(REALSetPropValueInteger, "REALSetPropValueInteger", "REALSetPropValueInt");
    forget(REALRaiseException, "RuntimeRaiseException");
    forget(REALLockString, "REALLockString");
    forget(REALUnlockString, "REALUnlockString");
    forget(REALBuildString, "REALBuildString");
    forget(REALBuildStringWithEncoding, "REALBuildStringWithEncoding");
    forget(REALGetStringEncoding, "REALGetStringEncoding");
    forget(REALSetStringEncoding, "REALSetStringEncoding");
    forget(REALConvertString, "REALConvertString");
    forget(REALGetStringBytes, "StringGetCString");
    forget(REALGetStringData, "PluginGetStringData");
    forget(REALDisposeStringData, "PluginDisposeStringData");
    forget(REALLoadFrameworkMethod, "REALLoadGlobalMethod");
    forget(REALNewMemoryBlock, "newMemoryBlock");
    forget(REALMemoryBlockGetPtr, "memoryBlockGetPtr");
    forget(REALMemoryBlockGetSize, "memoryBlockGetSize");
}

const char* const services[] = {
    "REALLockObject",        "REALUnlockObject",      "REALLockString",
    "REALUnlockString",      "REALBuildString",       "REALBuildStringWithEncoding",
    "REALGetStringEncoding", "REALSetStringEncoding", "REALConvertString",
    "StringGetCString",      "PluginGetStringData",   "PluginDisposeStringData",
    "REALLoadGlobalMethod",  "newMemoryBlock",        "memoryBlockGetPtr",
    "memoryBlockGetSize",    "PluginNewInstance",     "LenB",
};

const char* const platformFunctions[] = {
    "AudioDeviceGetPropertyInfo",
    "AudioDeviceGetProperty",
    "AudioDeviceSetProperty",
    "AudioStreamGetPropertyInfo",
    "AudioStreamGetProperty",
    "AudioStreamSetProperty",
    "AudioHardwareGetPropertyInfo",
    "AudioHardwareGetProperty",
    "AudioHardwareSetProperty",
    "AudioUnitGetPropertyInfo",
    "AudioUnitGetProperty",
    "AudioUnitSetProperty",
    "AudioUnitInitialize",
    "AudioUnitUninitialize",
    "AudioOutputUnitStart",
    "AudioOutputUnitStop",
    "AudioUnitReset",
    "AudioUnitSetParameter",
    "AudioUnitGetParameter",
    "OpenDefaultComponent",
    "CloseComponent",
    "AudioObjectGetPropertyDataSize",
    "AudioObjectGetPropertyData",
    "AudioObjectSetPropertyData",
};

} // namespace

AnyFunction methodNamed(const std::string& name)
{
    const auto find = [&](void* rows, Word count) -> AnyFunction {
        const auto* row = static_cast<const REALmethod*>(rows);
        for (Word i = 0; i < count; ++i) {
            const std::string declaration = row[i].declaration;
            if (declaration.substr(0, declaration.find_first_of("( ")) == name) return row[i].function;
        }
        return nullptr;
    };
    AnyFunction function = find(coreAudioClass.methods, coreAudioClass.methodCount);
    if (!function) function = find(coreAudioClass.sharedMethods, coreAudioClass.sharedMethodCount);
    if (!function) throw std::runtime_error("the class has no method " + name);
    return function;
}

Subject::Subject() : memory_(new char[dataOffset + sizeof(coreaudio::CoreAudioData)])
{
    current = this;
    property_spy::reset();
    blocksBefore_ = watched::liveBlocks();
    coreAudioClass.dataOffset = dataOffset;
    std::memset(memory_.get(), 0x5A, dataOffset + sizeof(coreaudio::CoreAudioData));
    gResolver = resolve;
    startHost(2016.0);
}

Subject::~Subject()
{
    current = nullptr;
    coreAudioClass.dataOffset = 0;
    for (std::size_t i = 0; i < dataOffset; ++i)
        if (memory_[i] != 0x5A) ADD_FAILURE() << "the object was changed outside its class data, at " << i;
    EXPECT_EQ(watched::liveBlocks(), blocksBefore_) << "some buffers were not freed";
}

void Subject::startHost(double version)
{
    host_.reset();
    host_ = std::make_unique<fake::Host>(version);
    rbversion_rbversion = version;
    claimedSizes_.clear();
    withoutMemory_.clear();
    forgetServices();
}

HostInteger& Subject::lasterror() { return *reinterpret_cast<HostInteger*>(memory_.get() + dataOffset); }

void Subject::throwInPlatform(const std::string& function)
{
    spy::answer(function).during = [] { throw Thrown(); };
}

void Subject::throwInHost(const std::string& service)
{
    host().inNext(service, [] { throw Thrown(); });
}

void Subject::claimSize(Block block, HostInteger size) { claimedSizes_[block] = size; }
void Subject::takeMemory(Block block) { withoutMemory_[block] = true; }

const void* Subject::addressOf(Block block)
{
    return reinterpret_cast<void* (*)(Block)>(fake::Host::resolve("memoryBlockGetPtr"))(block);
}

void Subject::watchFirstCall()
{
    firstSeen_.clear();
    const auto note = [this] {
        if (firstSeen_.empty()) firstSeen_.push_back(lasterror());
    };
    for (const char* service : services) host().inNext(service, note);
    for (const char* function : platformFunctions) spy::answer(function).during = note;
}

void Subject::expectBalance(const fake::Notes& live)
{
    fake::Notes found = host().live(); // live values in address order
    std::sort(found.begin(), found.end());
    EXPECT_EQ(found, live);
    EXPECT_EQ(host().faults(), fake::Notes());
    claimedSizes_.clear(); // cleared because a later block may have the same address
    withoutMemory_.clear();
}

// Replacements of two host services. They return false results for chosen blocks and the fake host's results
// for all other blocks.
HostInteger Subject::blockSize(Block block)
{
    const auto service = reinterpret_cast<HostInteger (*)(Block)>(fake::Host::resolve("memoryBlockGetSize"));
    const HostInteger size = service(block);
    const auto claimed = current->claimedSizes_.find(block);
    return claimed == current->claimedSizes_.end() ? size : claimed->second;
}

void* Subject::blockAddress(Block block)
{
    const auto service = reinterpret_cast<void* (*)(Block)>(fake::Host::resolve("memoryBlockGetPtr"));
    void* address = service(block);
    return current->withoutMemory_.count(block) ? nullptr : address;
}

void* Subject::resolve(const char* name)
{
    void* service = fake::Host::resolve(name);
    if (service && !std::strcmp(name, "memoryBlockGetSize")) return reinterpret_cast<void*>(&blockSize);
    if (service && !std::strcmp(name, "memoryBlockGetPtr")) return reinterpret_cast<void*>(&blockAddress);
    return service;
}

} // namespace subject
