// The properties that every unit has, and getters and setters that several unit kinds use in their own
// tables.
// All functions: [any].
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

extern const Property commonProperties[11];

OSStatus getStreamFormat(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setStreamFormat(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus getSampleRate(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setSampleRate(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus setConnection(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus setRenderCallback(Unit& unit, ElementAddress address, const void* data, UInt32 size);
OSStatus getEqualChannelCounts(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus getAnyChannelCounts(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus getBypass(Unit& unit, ElementAddress address, void* data, UInt32& size);
OSStatus setBypass(Unit& unit, ElementAddress address, const void* data, UInt32 size);

} // namespace kvxplatform::audiounit
