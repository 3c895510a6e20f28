#include "platform/hal/property_access.h"

#include "platform/hal/apply_settings.h"
#include "platform/hal/device_changes.h"
#include "platform/hal/formats.h"
#include "platform/hal/listeners.h"
#include "platform/hal/property_tables.h"
#include "platform/support/border.h"

#include <algorithm>

namespace kvxplatform::hal {

namespace {

bool accepts(const Interface& interface, const Object& object)
{
    using Kind = Interface::Kind;
    return interface.kind == Kind::any ||
           (object.device && object.isStream == (interface.kind == Kind::stream));
}

const Property* findIn(PropertyTable table, AudioObjectPropertySelector selector)
{
    const Property* end = table.first + table.count;
    const Property* row =
        std::find_if(table.first, end, [selector](const Property& p) { return p.selector == selector; });
    return row == end ? nullptr : row;
}

const Property* findRow(const Object& object, AudioObjectPropertySelector selector)
{
    if (!object.device) return findIn(systemProperties(), selector);
    if (object.isStream) return findIn(streamProperties(), selector);
    const Property* row = findIn(deviceProperties(), selector);
    if (!row) row = findIn(levelProperties(), selector);
    return row || !object.device->isSimulated ? row : findIn(sourceProperties(), selector);
}

bool isKnownScope(AudioObjectPropertyScope scope)
{
    return scope == kAudioObjectPropertyScopeGlobal || scope == kAudioDevicePropertyScopeInput ||
           scope == kAudioDevicePropertyScopeOutput;
}

/// Whether a scope selects the input side. If a property concerns one side only, the global scope selects the
/// output, unless the device has no output.
bool isInputSide(const Object& object, AudioObjectPropertyScope scope)
{
    if (object.isStream) return object.isInput;
    if (scope != kAudioObjectPropertyScopeGlobal || !object.device)
        return scope == kAudioDevicePropertyScopeInput;
    return object.device->settings.outputChannels == 0;
}

bool hasSide(const Property& row, const Request& request)
{
    switch (row.side) {
    case Side::present:
        return request.channels() > 0;
    case Side::output:
        return !request.isInput && request.channels() > 0;
    default:
        return true;
    }
}

bool hasElement(const Property& row, UInt32 channels, AudioObjectPropertyElement element)
{
    if (element == kAudioObjectPropertyElementMaster) return row.elements != Elements::channels;
    return row.elements != Elements::master && element <= channels;
}

/// Find the property's table row and fill in `request` from the target. The caller holds propertyLock.
/// Returns  null if the object does not have the property.
const Property* findProperty(const Object& object, const Target& target, Request& request)
{
    const AudioObjectPropertyAddress& address = target.address;
    const Property* const row = findRow(object, address.mSelector);
    if (!row || !isKnownScope(address.mScope)) return nullptr;
    request = {object.id,           object.device,    isInputSide(object, address.mScope),
               address.mSelector,   address.mElement, target.qualifier,
               target.qualifierSize};
    const UInt32 channels = object.device ? request.channels() : 0;
    return hasSide(*row, request) && hasElement(*row, channels, address.mElement) ? row : nullptr;
}

/// Call `use` with the table row and the request, while propertyLock is held. The rates of hardware are read
/// first, without propertyLock, because that may open the device.
template <class Use>
OSStatus withProperty(const Target& target, Use use)
{
    Object object;
    if (!findObject(target.object, object) || !accepts(target.interface, object))
        return target.interface.badObject;
    if (object.device) learnRates(object.device, target.address.mSelector);
    // The first call of deviceList() must not hold propertyLock, and for the system object this may be the
    // first call.
    deviceList();
    const std::lock_guard<std::mutex> lock(propertyLock);
    Request request;
    const Property* const row = findProperty(object, target, request);
    return row ? use(*row, request) : OSStatus{kAudioHardwareUnknownPropertyError};
}

/// Find the size of a value, either from the table row or by reading the value. A string is never read to
/// find its size.
OSStatus sizeOf(const Property& row, const Request& request, UInt32& size)
{
    size = row.size;
    if (row.extent == Extent::one) return noErr;
    Bytes value;
    const OSStatus status = row.get(request, value);
    size = static_cast<UInt32>(value.size());
    return status;
}

/// Copy the value to the caller's buffer: the whole value, or for a list as many whole items as fit.
OSStatus copyOut(const Property& row, const Bytes& value, UInt32& size, void* data)
{
    if (row.extent != Extent::many && size < value.size()) return kAudioHardwareBadPropertySizeError;
    const UInt32 fitting = std::min(size, static_cast<UInt32>(value.size()));
    size = row.extent == Extent::many ? fitting / row.size * row.size : fitting;
    if (size) std::memcpy(data, value.data(), size);
    return noErr;
}

/// The scope of a notification. It is the side that the property concerns, not the scope with which the
/// setter was called.
AudioObjectPropertyScope scopeOf(const Object& object, AudioObjectPropertySelector selector, bool isInput)
{
    const Property* row = findRow(object, selector);
    if (!row || !object.device || object.isStream || row->side == Side::none)
        return kAudioObjectPropertyScopeGlobal;
    return row->side == Side::output ? AudioObjectPropertyScope{kAudioDevicePropertyScopeOutput}
                                     : scopeOfSide(*object.device, isInput);
}

/// The results of a setter that has succeeded.
struct Accepted {
    /// Device settings before and after the setter; default values for the system object.
    Settings before, after;
    bool isInput = false;
    Consequences consequences;
};

OSStatus applyChanges(const Object& object, AudioObjectPropertyElement element, const Accepted& accepted)
{
    const Consequences& consequences = accepted.consequences;
    if (differ(accepted.before, accepted.after)) {
        if (const OSStatus status = applySettings(object.device); status != noErr) return status;
        postSettingChanges(*object.device, accepted.before, accepted.after);
    }
    if (consequences.hasNewLevels) applyLevels(object.device);
    for (AudioObjectPropertySelector selector : consequences.changed)
        postChange(object.id, selector, scopeOf(object, selector, accepted.isInput), element);
    for (AudioObjectPropertySelector selector : consequences.changedOfStream)
        postChange(accepted.isInput ? object.device->inputStream : object.device->outputStream, selector);
    return noErr;
}

/// Let the row's setter set the value, and note the changes in `accepted`.
OSStatus accept(const Property& row, const Request& request, const Bytes& value, Accepted& accepted)
{
    accepted.isInput = request.isInput;
    if (!request.device) return row.set(request, value, accepted.consequences);
    accepted.before = request.device->settings;
    const OSStatus status = row.set(request, value, accepted.consequences);
    accepted.after = request.device->settings;
    return status;
}

/// A copy of the caller's buffer. The buffer of a getter may hold input too, such as a translation.
Bytes bytesOf(const void* data, UInt32 size)
{
    const auto* const bytes = static_cast<const char*>(data);
    return Bytes(bytes, bytes + size);
}

} // namespace

bool findObject(AudioObjectID id, Object& object)
{
    object = {id, nullptr, false, false};
    if (id == kAudioObjectSystemObject) return true;
    if ((object.device = findDevice(id))) return true;
    const StreamRef stream = findStream(id);
    object.device = stream.device;
    object.isStream = stream.device != nullptr;
    object.isInput = stream.isInput;
    return object.isStream;
}

OSStatus getValue(const Target& target, UInt32* ioSize, void* data)
{
    const auto read = [&](const Property& row, const Request& request) {
        if (!ioSize || (!data && *ioSize)) return OSStatus{kAudioHardwareIllegalOperationError};
        if (row.extent == Extent::one && *ioSize < row.size)
            return OSStatus{kAudioHardwareBadPropertySizeError};
        Bytes value = bytesOf(data, row.extent == Extent::one ? row.size : 0);
        const OSStatus status = row.get(request, value);
        return status == noErr ? copyOut(row, value, *ioSize, data) : status;
    };
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return withProperty(target, read); });
}

OSStatus getInfo(const Target& target, UInt32* outSize, Boolean* outWritable)
{
    const auto read = [&](const Property& row, const Request& request) {
        if (outWritable) *outWritable = row.set != nullptr;
        return outSize ? sizeOf(row, request, *outSize) : OSStatus{noErr};
    };
    return withinBorder(kAudioHardwareUnspecifiedError, [&] { return withProperty(target, read); });
}

OSStatus setValue(const Target& target, UInt32 size, const void* data)
{
    Accepted accepted;
    const auto write = [&](const Property& row, const Request& request) {
        if (!row.set) return OSStatus{kAudioHardwareUnsupportedOperationError};
        if (size != row.size) return OSStatus{kAudioHardwareBadPropertySizeError};
        if (!data) return OSStatus{kAudioHardwareIllegalOperationError};
        return accept(row, request, bytesOf(data, size), accepted);
    };
    return withinBorder(kAudioHardwareUnspecifiedError, [&] {
        const OSStatus status = withProperty(target, write);
        Object object;
        // The object may have ended after propertyLock was released.
        return status == noErr && findObject(target.object, object)
                   ? applyChanges(object, target.address.mElement, accepted)
                   : status;
    });
}

} // namespace kvxplatform::hal
