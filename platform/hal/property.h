// The rows of the property tables: one table for each kind of object serves both property interfaces.
#pragma once

#include "platform/hal/device.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace kvxplatform::hal {

using Bytes = std::vector<char>;

/// A request for one property of one object. Checked against the table: the element exists, and the side has
/// channels where the row requires them.
struct Request {
    AudioObjectID object;
    DeviceRef device; ///< null for the system object
    bool isInput;     ///< the side that the scope, or the stream, names
    AudioObjectPropertySelector selector;
    AudioObjectPropertyElement element;
    const void* qualifier;
    UInt32 qualifierSize;

    UInt32 channels() const
    {
        return isInput ? device->settings.inputChannels : device->settings.outputChannels;
    }
};

/// What a setter requires after propertyLock is released. New settings of the device are found by comparison.
struct Consequences {
    bool hasNewLevels = false;
    std::vector<AudioObjectPropertySelector> changed; ///< of the same object, at the element that was set
    std::vector<AudioObjectPropertySelector> changedOfStream; ///< of the stream of the side that was set
};

// Both: [any], with propertyLock.

/// Replace `value`, which holds the caller's buffer: a translation reads its input there.
using Getter = OSStatus (*)(const Request& request, Bytes& value);
using Setter = OSStatus (*)(const Request& request, const Bytes& value, Consequences& consequences);

/// The elements of a property.
enum class Elements { master, channels, masterAndChannels };

/// The side of a device that a property concerns: neither, that of the scope, that of the scope if it has
/// channels, or the output if it has channels.
enum class Side { none, scope, present, output };

/// The length of a value: that of the row; items of that length, of which a short buffer takes as many as
/// fit; or the length of the whole record or text, which cannot be cut.
enum class Extent { one, many, whole };

struct Property {
    AudioObjectPropertySelector selector;
    Side side;
    Elements elements;
    Extent extent;
    UInt32 size; ///< bytes of the value or of an item; 0 for a whole value, which is read to find its length
    Getter get;
    Setter set; ///< null: read-only
};

struct PropertyTable {
    const Property* first;
    std::size_t count;
};

// ---- for getters and setters ----

template <class T>
OSStatus put(Bytes& value, const T& item)
{
    static_assert(std::is_trivially_copyable_v<T>);
    value.resize(sizeof item);
    std::memcpy(value.data(), &item, sizeof item);
    return noErr;
}

template <class T>
OSStatus putAll(Bytes& value, const std::vector<T>& items)
{
    static_assert(std::is_trivially_copyable_v<T>);
    value.resize(items.size() * sizeof(T));
    if (!items.empty()) std::memcpy(value.data(), items.data(), value.size());
    return noErr;
}

/// The value's first bytes as a T; the size is checked against the table before.
template <class T>
T as(const Bytes& value)
{
    T item = {};
    std::memcpy(&item, value.data(), std::min(sizeof item, value.size()));
    return item;
}

/// A string that the caller releases.
OSStatus putCFString(Bytes& value, const std::string& text);

/// C text with its terminating zero.
OSStatus putText(Bytes& value, const std::string& text);

/// The objects if the request's qualifier, a list of classes, contains their class, or without a qualifier;
/// else none.
std::vector<AudioObjectID> ofClasses(const Request& request, AudioClassID objectClass,
                                     std::vector<AudioObjectID> objects);

/// The getter of a constant.
template <class T, T constant>
OSStatus putConstant(const Request&, Bytes& value)
{
    return put(value, constant);
}

} // namespace kvxplatform::hal
