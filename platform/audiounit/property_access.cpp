#include "platform/audiounit/property_access.h"

#include "platform/audiounit/common_properties.h"

namespace kvxplatform::audiounit {
namespace {

bool takesElement(const Unit& unit, const Property& row, ElementAddress address)
{
    if (row.element == anyNumber) return true;
    return hasElement(unit, address.scope, address.element) &&
           (row.element == anyElement || row.element == address.element);
}

/// Find the table row for a property at an element. If the unit kind has rows for the property in a scope,
/// they replace the common rows for that scope.
/// Errors  InvalidProperty: no row has the property; InvalidScope: no row has it in the scope;
///         InvalidElement: no row has it at the element.
OSStatus find(const Unit& unit, AudioUnitPropertyID id, ElementAddress address, const Property*& out)
{
    OSStatus reason = kAudioUnitErr_InvalidProperty;
    for (const Rows<Property>& table : {unit.kind.properties, Rows<Property>(commonProperties)}) {
        for (const Property& row : table) {
            if (row.id != id) continue;
            if (reason == kAudioUnitErr_InvalidProperty) reason = kAudioUnitErr_InvalidScope;
            if (address.scope >= scopeCount || !(row.scopes & 1u << address.scope)) continue;
            reason = kAudioUnitErr_InvalidElement;
            if (!takesElement(unit, row, address)) continue;
            out = &row;
            return noErr;
        }
        if (reason == kAudioUnitErr_InvalidElement) break;
    }
    return reason;
}

// The caller of sizeOf() and of checkSize() holds the `settings` lock.
UInt32 sizeOf(Unit& unit, const Property& row, ElementAddress address)
{
    return row.size ? row.size : row.sizeOf(unit, address);
}

OSStatus checkSize(Unit& unit, const Property& row, ElementAddress address, const void* data, UInt32 size)
{
    if (!data && size == 0 && row.isRemovable) return noErr;
    if (!data) return kAudioUnitErr_InvalidPropertyValue;
    // The setter itself checks the size of a value of variable size.
    return row.size == 0 || size == sizeOf(unit, row, address) ? noErr : kAudioUnitErr_InvalidPropertyValue;
}

} // namespace

OSStatus getPropertyInfo(Unit& unit, AudioUnitPropertyID id, ElementAddress address, UInt32* size,
                         Boolean* isWritable)
{
    const std::lock_guard<std::mutex> guard(unit.settings);
    const Property* row = nullptr;
    if (const OSStatus status = find(unit, id, address, row)) return status;
    if (size) *size = sizeOf(unit, *row, address);
    if (isWritable) *isWritable = row->access != Access::readOnly;
    return noErr;
}

OSStatus getProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, void* data, UInt32* size)
{
    if (!size) return paramErr;
    const std::lock_guard<std::mutex> guard(unit.settings);
    const Property* row = nullptr;
    if (const OSStatus status = find(unit, id, address, row)) return status;
    if (!row->get) return kAudioUnitErr_InvalidProperty;
    UInt32 needed = sizeOf(unit, *row, address);
    if (!data) {
        *size = needed;
        return noErr;
    }
    if (*size < needed) return kAudioUnitErr_InvalidPropertyValue;
    const OSStatus status = row->get(unit, address, data, needed);
    if (!status) *size = needed;
    return status;
}

OSStatus setProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, const void* data,
                     UInt32 size)
{
    const Property* row = nullptr;
    {
        const std::lock_guard<std::mutex> guard(unit.settings);
        if (const OSStatus status = find(unit, id, address, row)) return status;
        if (row->access == Access::readOnly) return kAudioUnitErr_PropertyNotWritable;
        if (row->settable == Settable::beforeInitialize && unit.isInitialized)
            return kAudioUnitErr_Initialized;
        if (const OSStatus status = checkSize(unit, *row, address, data, size)) return status;
        if (row->settable == Settable::always) return row->set(unit, address, data, size);
    }
    if (row->settable == Settable::alwaysUnlocked) return row->set(unit, address, data, size);

    if (unit.scope.isInside()) return kAudioUnitErr_Initialized;
    const std::lock_guard<std::mutex> life(unit.lifeCycle);
    const std::lock_guard<std::mutex> guard(unit.settings);
    if (unit.isInitialized) return kAudioUnitErr_Initialized;
    return row->set(unit, address, data, size);
}

} // namespace kvxplatform::audiounit
