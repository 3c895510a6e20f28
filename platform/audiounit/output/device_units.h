// The table rows of the three output units that drive a device. The units differ in how the device is chosen,
// and only the HAL unit has the device's input. An I/O cycle of the device renders them.
// unit_kind.h states the contracts of the functions.
#pragma once

#include "platform/audiounit/output/device_control.h"
#include "platform/audiounit/output/device_cycle.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"

namespace kvxplatform::audiounit {

/// The property tables. Only the HAL unit lets a client set the device, the enabled sides and the input
/// callback.
template <bool isHAL>
struct DeviceProperties {
    static const Property rows[22];
};
extern template struct DeviceProperties<true>;
extern template struct DeviceProperties<false>;

extern const Parameter deviceParameters[1];

// Open a unit that uses the device the client selects, otherwise the default output device.
OSStatus openHALOutput(Unit& unit);
// Open a unit that follows the default output device.
OSStatus openDefaultOutput(Unit& unit);
// Open a unit that follows the device of system sounds.
OSStatus openSystemOutput(Unit& unit);
OSStatus renewDeviceOutput(Unit& unit);
void closeDeviceOutput(Unit& unit);
void destroyDeviceOutput(void* state);

} // namespace kvxplatform::audiounit
