// The six operations of the older property functions, for each target of property_targets.h.
//
// Errors  `Lasterror` is the status of the last platform call, or -1 if the method ended before its main
//         platform call. A getter that fails returns nil. Only REALBuildMemoryblock raises a host
//         exception, if the host has no memory.
// All functions: [main].
#pragma once

#include "coreaudio/core_audio.h"
#include "coreaudio/property_targets.h"
#include "plugin/host_string.h"
#include "plugin/memory_block.h"
#include "plugin/owned_cf.h"
#include "plugin/string_contents.h"
#include "plugin/zeroed.h"

#include <algorithm>

namespace coreaudio {

/// A property's value in private memory.
struct Value {
    Zeroed<char> bytes; ///< null: no value
    UInt32 size = 0;    ///< bytes that the platform wrote; may be less than it announced
};

/// Get the size, then the value. A size of 0, or one that the host cannot store, gives no value.
template <class Target>
Value readValue(const Target& target, HostInteger& lasterror)
{
    UInt32 announced = 0;
    if (const OSStatus status = target.info(&announced, nullptr); status != noErr) {
        lasterror = status;
        return {};
    }
    Value value = {allocateZeroed<char>(announced), announced};
    if (!value.bytes) return {};
    lasterror = target.get(&value.size, value.bytes.get());
    if (lasterror != noErr) return {};
    value.size = std::min(value.size, announced);
    return value;
}

template <class Target, class Read = typename Target::Read>
struct Getters;
template <class Target, class... Where>
struct Getters<Target, Arguments<Where...>> {
    /// Size and writability, also after an error; 0 and false if the platform wrote none.
    static void GetPropertyInfo(REALobjectStruct* object, Where... where, HostInteger* size,
                                HostBoolean* writeable)
    {
        HostInteger& lasterror = beginCall(object);
        *size = 0;
        *writeable = false;
        UInt32 bytes = 0;
        Boolean isWritable = false;
        lasterror = Target(where...).info(&bytes, &isWritable);
        *size = static_cast<HostInteger>(bytes);
        *writeable = isWritable;
    }

    /// The value as text in an unknown encoding, with any terminating zero.
    static REALstringStruct* GetPropertyString(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildUnicodeString(value.bytes.get(), value.size, encodingUnknown);
    }

    /// The value as a memory block.
    static REALmemoryBlockStruct* GetPropertyMemory(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildMemoryblock(value.bytes.get(), value.size);
    }

    /// The text of a property whose value is a CFString reference; nil, without an error, for a value of
    /// another size.
    static REALstringStruct* GetPropertyCFString(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        UInt32 size = 0;
        if (const OSStatus status = target.info(&size, nullptr); status != noErr) {
            if (Target::storesInfoErrorOfCFString) lasterror = status;
            return nullptr;
        }
        if (size != sizeof(CFStringRef)) {
            lasterror = noErr;
            return nullptr;
        }
        CFStringRef text = nullptr;
        lasterror = target.get(&size, &text);
        const OwnedCF<CFStringRef> owner(lasterror == noErr ? text : nullptr);
        return CFString2RBString(owner.get());
    }
};

template <class Target, class Write = typename Target::Write>
struct Setters;
template <class Target, class... Where>
struct Setters<Target, Arguments<Where...>> {
    /// Set the property to the stored bytes of the text, without a terminator; no bytes for nil.
    static void SetPropertyString(REALobjectStruct* object, Where... where, REALstringStruct* data)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        const StringContents contents = REALGetStringContents(data);
        lasterror = target.set(static_cast<UInt32>(contents.count), contents.bytes);
    }

    /// Set the property to `length` bytes at `offset`. Neither is checked. With a nil block, `offset` is an
    /// address: host programs may pass their own memory.
    static void SetPropertyMemory(REALobjectStruct* object, Where... where, REALmemoryBlockStruct* data,
                                  HostInteger offset, HostInteger length)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        const Word base = data ? reinterpret_cast<Word>(REALMemoryBlockGetPtr(data)) : 0;
        const Word address = base + static_cast<Word>(offset);
        lasterror = target.set(static_cast<UInt32>(length), reinterpret_cast<const void*>(address));
    }
};

/// All six operations on one target, for the class table.
template <class Target>
struct Family : Getters<Target>, Setters<Target> {
};

} // namespace coreaudio
