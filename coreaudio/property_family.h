// The six operations of the older property interface, written once over any target of property_targets.h.
//
// Thread  [main].
// Errors  no operation raises a host exception of its own; REALBuildMemoryblock raises one when the host
//         has no memory for a block. `Lasterror` is -1 if the method stopped before its main platform call,
//         else the status of the last one; a getter that fails returns nil.
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

/// A property's value as bytes of our own.
struct Value {
    Zeroed<char> bytes; ///< null: there is none
    UInt32 size = 0;    ///< what the platform wrote, which may be less than it announced
};

/// Ask for the size, then for the value. A size of 0, or beyond what the host can count, is refused.
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
    /// Size and writability, whatever the status; 0 and false where the platform wrote nothing.
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

    /// The bytes as text of no known encoding: a terminating zero that the property has is part of it.
    static REALstringStruct* GetPropertyString(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildUnicodeString(value.bytes.get(), value.size, encodingUnknown);
    }

    /// The bytes as they are.
    static REALmemoryBlockStruct* GetPropertyMemory(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Value value = readValue(Target(where...), lasterror);
        return REALBuildMemoryblock(value.bytes.get(), value.size);
    }

    /// The text of a property that is a reference to a platform string; a property of another size is no
    /// error.
    static REALstringStruct* GetPropertyCFString(REALobjectStruct* object, Where... where)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        UInt32 size = 0;
        if (const OSStatus status = target.info(&size, nullptr); status != noErr) {
            if (Target::tellsInfoFailureOfCFString) lasterror = status;
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
    /// The bytes of the text as the host stores them, without a terminator; none for no text.
    static void SetPropertyString(REALobjectStruct* object, Where... where, REALstringStruct* data)
    {
        HostInteger& lasterror = beginCall(object);
        const Target target(where...);
        const StringContents contents = REALGetStringContents(data);
        lasterror = target.set(static_cast<UInt32>(contents.count), contents.bytes);
    }

    /// `length` bytes from `offset` on, neither of them checked: the caller may mean memory of its own, and
    /// no block at all makes the offset an address.
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
