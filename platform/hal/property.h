// Types of the property tables. Each kind of object has one table, which serves both property interfaces.
#pragma once

#include "platform/hal/device.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace kvxplatform::hal {

using Bytes = std::vector<char>;

/// A request for one property of one object. The request agrees with the property table: the element exists,
/// and the requested side has channels if the table row requires channels.
struct Request {
    AudioObjectID object;
    DeviceRef device; ///< device of the object; null for the system object
    bool isInput;     ///< side of the device that the scope or the stream selects
    AudioObjectPropertySelector selector;
    AudioObjectPropertyElement element;
    const void* qualifier;
    UInt32 qualifierSize;

    UInt32 channels() const
    {
        return isInput ? device->settings.inputChannels : device->settings.outputChannels;
    }
};

/// Results of a setter that are handled after propertyLock is released. A change of the device's settings is
/// not listed here; the caller compares the settings before and after.
struct Consequences {
    bool hasNewLevels = false;
    /// Changed properties of the same object, at the element that was set.
    std::vector<AudioObjectPropertySelector> changed;
    /// Changed properties of the stream on the side that was set.
    std::vector<AudioObjectPropertySelector> changedOfStream;
};

// The caller of a getter or setter holds propertyLock.
// Getter and Setter: [any].

/// Replace `value` by the property's value. On entry `value` has the caller's bytes, from which a translation
/// reads its input.
using Getter = OSStatus (*)(const Request& request, Bytes& value);
using Setter = OSStatus (*)(const Request& request, const Bytes& value, Consequences& consequences);

/// The elements that a property has.
enum class Elements { master, channels, masterAndChannels };

/// The side of a device that a property concerns: no side (none), the side of the scope (scope), the side of
/// the scope if it has channels (present), or the output if it has channels (output).
enum class Side { none, scope, present, output };

/// The length of a value. one: the row's size. many: several items of the row's size, of which a short buffer
/// receives as many as fit. whole: a structure or text of variable length, which cannot be cut.
enum class Extent { one, many, whole };

struct Property {
    AudioObjectPropertySelector selector;
    Side side;
    Elements elements;
    Extent extent;
    /// Bytes of the value or of one item; 0 for a whole value, because its length is found by reading it.
    UInt32 size;
    Getter get;
    Setter set; ///< function that sets the value; null for a read-only property
};

struct PropertyTable {
    const Property* first;
    std::size_t count;
};

// ---- helpers of getters and setters ----

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

/// The first bytes of the value as a T. The caller has checked the size against the table.
template <class T>
T as(const Bytes& value)
{
    T item = {};
    std::memcpy(&item, value.data(), std::min(sizeof item, value.size()));
    return item;
}

/// Store a new string in `value`, which the caller of the property function must release.
OSStatus putCFString(Bytes& value, const std::string& text);

/// Store the text and a terminating zero in `value`.
OSStatus putText(Bytes& value, const std::string& text);

/// The objects that an owned-objects request selects: all objects if the request has no qualifier or if the
/// qualifier (a list of classes) contains `objectClass`; else none.
std::vector<AudioObjectID> ofClasses(const Request& request, AudioClassID objectClass,
                                     std::vector<AudioObjectID> objects);

/// Getter of a property whose value is the constant.
template <class T, T constant>
OSStatus putConstant(const Request&, Bytes& value)
{
    return put(value, constant);
}

} // namespace kvxplatform::hal
