#include "tests/player/small_host.h"

#include "plugin/process_state.h"
#include "plugin/services.h"

#include <algorithm>
#include <new>
#include <string_view>

struct REALmemoryBlockStruct {
    std::vector<unsigned char> bytes;
    bool isAbsent;
    HostInteger size;
};

struct REALobjectStruct {
    std::string className, message;
    long errorNumber = -1;
};

namespace host {

namespace {

struct Text {
    REALstringStruct record; // first member, because its address is the string's handle
    std::string bytes;
};

std::vector<Raised> raisedExceptions;
std::vector<std::string> withheldNames, lookedUpNames;
int liveCount = 0;
// Plain counters instead of a container, because some tests forbid allocation in these calls.
int getPtrCalls = 0, getSizeCalls = 0;

REALstringStruct* buildString(const void* bytes, HostInteger count)
{
    ++liveCount;
    auto* text = new Text{{}, std::string(static_cast<const char*>(bytes), static_cast<std::size_t>(count))};
    return &text->record;
}

void setStringEncoding(REALstringStruct* text, std::uint32_t encoding) { text->encoding = encoding; }

void unlockString(REALstringStruct* text)
{
    --liveCount;
    delete reinterpret_cast<Text*>(text);
}

REALobjectStruct* newInstance(const char* className)
{
    ++liveCount;
    return new REALobjectStruct{className, {}};
}

void unlockObject(REALobjectStruct* object)
{
    --liveCount;
    delete object;
}

void setPropValueString(REALobjectStruct* object, const char* property, REALstringStruct* value)
{
    if (std::string_view(property) == "Message") object->message = reinterpret_cast<Text*>(value)->bytes;
}

void setPropValueInteger(REALobjectStruct* object, const char* property, HostInteger value)
{
    if (std::string_view(property) == "ErrorNumber") object->errorNumber = value;
}

void raiseException(REALobjectStruct* exception)
{
    raisedExceptions.push_back({exception->className, exception->message, exception->errorNumber});
}

void* memoryBlockGetPtr(REALmemoryBlockStruct* block)
{
    ++getPtrCalls;
    return block->isAbsent ? nullptr : block->bytes.data();
}

HostInteger memoryBlockGetSize(REALmemoryBlockStruct* block)
{
    ++getSizeCalls;
    return block->size;
}

const struct {
    const char* name;
    AnyFunction function;
} services[] = {
    {"REALBuildString", reinterpret_cast<AnyFunction>(buildString)},
    {"REALSetStringEncoding", reinterpret_cast<AnyFunction>(setStringEncoding)},
    {"REALUnlockString", reinterpret_cast<AnyFunction>(unlockString)},
    {"PluginNewInstance", reinterpret_cast<AnyFunction>(newInstance)},
    {"REALUnlockObject", reinterpret_cast<AnyFunction>(unlockObject)},
    {"REALSetPropValueString", reinterpret_cast<AnyFunction>(setPropValueString)},
    {"REALSetPropValueInteger", reinterpret_cast<AnyFunction>(setPropValueInteger)},
    {"RuntimeRaiseException", reinterpret_cast<AnyFunction>(raiseException)},
    {"memoryBlockGetPtr", reinterpret_cast<AnyFunction>(memoryBlockGetPtr)},
    {"memoryBlockGetSize", reinterpret_cast<AnyFunction>(memoryBlockGetSize)},
};

void* resolve(const char* name)
{
    lookedUpNames.push_back(name);
    if (std::count(withheldNames.begin(), withheldNames.end(), name)) return nullptr;
    for (const auto& row : services)
        if (std::string_view(row.name) == name) return reinterpret_cast<void*>(row.function);
    return nullptr;
}

/// Clear the plug-in's cached address of one host function by constructing the cache again.
template <class Service>
void forget(Service& service, const char* name)
{
    service.~Service();
    new (&service) Service(name);
}

} // namespace

Block::Block(std::vector<unsigned char> bytes) : block_(new REALmemoryBlockStruct{std::move(bytes), false, 0})
{
    block_->size = static_cast<HostInteger>(block_->bytes.size());
}

Block::Block(WithoutMemory absent) : block_(new REALmemoryBlockStruct{{}, true, absent.size}) {}

Block::~Block() { delete block_; }

void Block::setSize(HostInteger bytes) { block_->size = bytes; }

std::vector<Raised> raised() { return raisedExceptions; }

void withhold(std::initializer_list<const char*> names) { withheldNames.assign(names.begin(), names.end()); }

void load(std::initializer_list<const char*> withheld)
{
    withhold(withheld);
    lookedUpNames.clear();
    forget(REALMemoryBlockGetPtr, "memoryBlockGetPtr");
    forget(REALMemoryBlockGetSize, "memoryBlockGetSize");
    raisedExceptions.clear();
    getPtrCalls = getSizeCalls = 0;
    gResolver = resolve;
    rbversion_rbversion = 2013.04;
}

int lookUps(std::string_view name)
{
    return static_cast<int>(std::count(lookedUpNames.begin(), lookedUpNames.end(), name));
}

int pointerCalls() { return getPtrCalls; }
int sizeCalls() { return getSizeCalls; }

int liveValues() { return liveCount; }

} // namespace host
