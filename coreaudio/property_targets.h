// The four targets of the functions in property_family.h: device, stream, hardware and unit.
//
// `Read` and `Write` are the types of the leading arguments of a target's getters and setters, in declared
// order; a target has a constructor for each of the two. The functions info, get and set of a target make one
// platform call each.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "plugin/four_character_code.h"
#include "plugin/services.h"

#include <AudioUnit/AudioUnit.h>
#include <CoreAudio/CoreAudio.h>

namespace coreaudio {

template <class... Types>
struct Arguments {
};

/// Time stamp in a memory block, whose size is not checked. For a nil block, the result is null, which means
/// "now" to the platform.
inline const AudioTimeStamp* timeStampIn(REALmemoryBlockStruct* when)
{
    return when ? static_cast<const AudioTimeStamp*>(REALMemoryBlockGetPtr(when)) : nullptr;
}

struct Device {
    using Read = Arguments<HostInteger, HostInteger, HostBoolean, REALstringStruct*>;
    using Write = Arguments<HostInteger, REALmemoryBlockStruct*, HostInteger, HostBoolean, REALstringStruct*>;

    Device(HostInteger id, HostInteger channel, HostBoolean isInput, REALstringStruct* propertyID)
        : Device(id, nullptr, channel, isInput, propertyID)
    {
    }
    Device(HostInteger id, REALmemoryBlockStruct* when, HostInteger channel, HostBoolean isInput,
           REALstringStruct* propertyID)
        : device(static_cast<AudioDeviceID>(id)), time(timeStampIn(when)),
          element(static_cast<UInt32>(channel)), side(isInput != 0), selector(REALstringToOSType(propertyID))
    {
    }

    OSStatus info(UInt32* size, Boolean* writable) const
    {
        return AudioDeviceGetPropertyInfo(device, element, side, selector, size, writable);
    }
    OSStatus get(UInt32* size, void* data) const
    {
        return AudioDeviceGetProperty(device, element, side, selector, size, data);
    }
    OSStatus set(UInt32 size, const void* data) const
    {
        return AudioDeviceSetProperty(device, time, element, side, selector, size, data);
    }
    // The CFString getter of devices is the only getter that does not store the status of a failed info call.
    static constexpr bool storesInfoErrorOfCFString = false;

    AudioDeviceID device;
    const AudioTimeStamp* time;
    UInt32 element;
    Boolean side;
    UInt32 selector;
};

struct Stream {
    using Read = Arguments<HostInteger, HostInteger, REALstringStruct*>;
    using Write = Arguments<HostInteger, REALmemoryBlockStruct*, HostInteger, REALstringStruct*>;

    Stream(HostInteger id, HostInteger channel, REALstringStruct* propertyID)
        : Stream(id, nullptr, channel, propertyID)
    {
    }
    Stream(HostInteger id, REALmemoryBlockStruct* when, HostInteger channel, REALstringStruct* propertyID)
        : stream(static_cast<AudioStreamID>(id)), time(timeStampIn(when)),
          element(static_cast<UInt32>(channel)), selector(REALstringToOSType(propertyID))
    {
    }

    OSStatus info(UInt32* size, Boolean* writable) const
    {
        return AudioStreamGetPropertyInfo(stream, element, selector, size, writable);
    }
    OSStatus get(UInt32* size, void* data) const
    {
        return AudioStreamGetProperty(stream, element, selector, size, data);
    }
    OSStatus set(UInt32 size, const void* data) const
    {
        return AudioStreamSetProperty(stream, time, element, selector, size, data);
    }
    static constexpr bool storesInfoErrorOfCFString = true;

    AudioStreamID stream;
    const AudioTimeStamp* time;
    UInt32 element;
    UInt32 selector;
};

struct Hardware {
    using Read = Arguments<REALstringStruct*>;
    using Write = Read;

    explicit Hardware(REALstringStruct* propertyID) : selector(REALstringToOSType(propertyID)) {}

    OSStatus info(UInt32* size, Boolean* writable) const
    {
        return AudioHardwareGetPropertyInfo(selector, size, writable);
    }
    OSStatus get(UInt32* size, void* data) const { return AudioHardwareGetProperty(selector, size, data); }
    OSStatus set(UInt32 size, const void* data) const
    {
        return AudioHardwareSetProperty(selector, size, data);
    }
    static constexpr bool storesInfoErrorOfCFString = true;

    UInt32 selector;
};

struct Unit {
    using Read = Arguments<HostInteger, HostInteger, HostInteger, HostInteger>;
    using Write = Read;

    Unit(HostInteger handle, HostInteger propertyID, HostInteger unitScope, HostInteger unitElement)
        : unit(reinterpret_cast<AudioUnit>(handle)), selector(static_cast<UInt32>(propertyID)),
          scope(static_cast<UInt32>(unitScope)), element(static_cast<UInt32>(unitElement))
    {
    }

    OSStatus info(UInt32* size, Boolean* writable) const
    {
        return AudioUnitGetPropertyInfo(unit, selector, scope, element, size, writable);
    }
    OSStatus get(UInt32* size, void* data) const
    {
        return AudioUnitGetProperty(unit, selector, scope, element, data, size);
    }
    OSStatus set(UInt32 size, const void* data) const
    {
        return AudioUnitSetProperty(unit, selector, scope, element, data, size);
    }
    static constexpr bool storesInfoErrorOfCFString = true;

    AudioUnit unit;
    UInt32 selector;
    UInt32 scope;
    UInt32 element;
};

} // namespace coreaudio
