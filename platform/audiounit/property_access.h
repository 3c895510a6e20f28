// Reading and writing properties. Before calling a getter or setter, these functions check what all
// properties have in common: address, size, access, and whether the property can be set now.
// All functions: [any].
#pragma once

#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

OSStatus getPropertyInfo(Unit& unit, AudioUnitPropertyID id, ElementAddress address, UInt32* size,
                         Boolean* isWritable);
OSStatus getProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, void* data, UInt32* size);
OSStatus setProperty(Unit& unit, AudioUnitPropertyID id, ElementAddress address, const void* data,
                     UInt32 size);

} // namespace kvxplatform::audiounit
