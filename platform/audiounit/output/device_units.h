// The rows of the three output units that drive a device. They differ in how the device is chosen, and only
// the HAL unit has the device's input. An I/O cycle of the device renders them.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/output/device_control.h"
#include "platform/audiounit/output/device_cycle.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

/// A client sets device, enabled sides and input callback of the HAL unit only.
template <bool isHAL>
struct DeviceProperties {
    static const Property rows[21];
};
extern template struct DeviceProperties<true>;
extern template struct DeviceProperties<false>;

extern const Parameter deviceParameters[1];

OSStatus openHALOutput(Unit& unit);     // the device that the client selects, else the default one
OSStatus openDefaultOutput(Unit& unit); // follows the default output device
OSStatus openSystemOutput(Unit& unit);  // follows the device of system sounds
void closeDeviceOutput(Unit& unit);
void destroyDeviceOutput(void* state);

} // namespace kvxplatform::audiounit
