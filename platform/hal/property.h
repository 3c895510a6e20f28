// Properties: one table of facts for each kind of object, behind both of the platform's interfaces.
#pragma once

#include "platform/hal/formats.h"
#include "platform/hal/tree.h"

#include <CoreFoundation/CoreFoundation.h>

#include <cstring>
#include <type_traits>
#include <vector>

namespace kvxplatform::hal {

/// One question about one object, checked against the table: the element exists, and a side has channels.
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

/// What a setter wants done when the tree's lock has been let go. New settings of the device are seen by
/// comparison.
struct Consequences {
    bool hasNewLevels = false;
    std::vector<AudioObjectPropertySelector> changed; ///< of the same object, at the element that was set
    std::vector<AudioObjectPropertySelector> changedOfStream; ///< of the stream of the side that was set
};

/// Reads a value into `value`, which arrives as the caller's buffer: a translation finds its input there.
using Getter = OSStatus (*)(const Request& request, Bytes& value);
/// Takes a value; called with the tree's lock held.
using Setter = OSStatus (*)(const Request& request, const Bytes& value, Consequences& consequences);

/// Which elements a property has.
enum class Elements { master, channels, masterAndChannels };
/// Which side of a device a property is about: neither, the one that the scope names, that one if it has
/// channels, or the output if it has.
enum class Side { none, scope, present, output };
/// How long a value is: as stated; a number of items of the stated size, of which a short buffer takes those
/// that fit; or as long as it is, for a record or text that means nothing when it is cut.
enum class Extent { one, many, whole };

struct Property {
    AudioObjectPropertySelector selector;
    Side side;
    Elements elements;
    Extent extent;
    UInt32 size; ///< bytes, of the value or of an item; of a whole one it is found by reading
    Getter get;
    Setter set; ///< null: read-only
};

struct PropertyTable {
    const Property* first;
    std::size_t count;
};

PropertyTable systemProperties();
PropertyTable deviceProperties();
PropertyTable levelProperties();  ///< a device's volumes and mutes
PropertyTable sourceProperties(); ///< a simulated device's data sources
PropertyTable streamProperties();

/// Whether there is such an object.
bool exists(AudioObjectID object);

// ---- for the rows ----

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

/// The value's first bytes as a T; the table has seen to its size.
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

/// The objects of one class, if the question's qualifier - a list of classes - names it; all without a
/// qualifier.
std::vector<AudioObjectID> ofClasses(const Request& request, AudioClassID theirs,
                                     std::vector<AudioObjectID> objects);

/// One constant value, for a row.
template <class T, T constant>
OSStatus putConstant(const Request&, Bytes& value)
{
    return put(value, constant);
}

} // namespace kvxplatform::hal
