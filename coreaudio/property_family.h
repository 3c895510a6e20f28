// The six operations of the platform's older property functions, as templates for the targets of
// property_targets.h.
//
// Errors  `Lasterror` is the status of the last platform call, but -1 if there was no platform call, or if a
//         getter got a size but could not read the value. A getter that fails returns nil. Only
//         REALBuildMemoryblock and REALBuildUnicodeString can raise a host exception, while they build the
//         result.
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

/// Private copy of a property's value.
struct Value {
    Zeroed<char> bytes; ///< bytes of the value; null if there is no value
    UInt32 size = 0;    ///< number of bytes that the platform wrote, at most the announced size
};

/// Get the size of the value, then the value. There is no value if its size is 0 or too large, or after an
/// error.
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
    /// Get the size and the writability of the property. Both results are stored even after an error; they
    /// are 0 and false if the platform wrote no result.
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

    /// Return the value as text in an unknown encoding. A terminating zero in the value stays in the text.
    static REALstringStruct* GetPropertyString(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildUnicodeString(value.bytes.get(), value.size, encodingUnknown);
    }

    /// Return the value as a memory block.
    static REALmemoryBlockStruct* GetPropertyMemory(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildMemoryblock(value.bytes.get(), value.size);
    }

    /// Return the text of a property whose value is a CFString reference. A value of another size gives nil
    /// and is not an error: `Lasterror` is 0.
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
    /// Set the property to the stored bytes of `data`, without a terminator. A nil text sets an empty value.
    static void SetPropertyString(REALobjectStruct* object, Where... where, REALstringStruct* data)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        const StringContents contents = REALGetStringContents(data);
        lasterror = target.set(static_cast<UInt32>(contents.count), contents.bytes);
    }

    /// Set the property to `length` bytes at `offset` in `data`. Neither `length` nor `offset` is checked. If
    /// `data` is nil, `offset` is a memory address, so that host programs can pass their own memory.
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

/// All six operations on one target, for use in the class table.
template <class Target>
struct Family : Getters<Target>, Setters<Target> {
};

} // namespace coreaudio
