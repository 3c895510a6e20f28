// Stream formats: the current format, the supported formats, and the supported format nearest to a request.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// The format of native-endian, packed, interleaved 32-bit float samples.
/// [any]
AudioStreamBasicDescription floatFormat(double rate, UInt32 channels);

// The caller of the functions from here to changeRate() holds propertyLock.
// These functions: [any].

/// The current format of the device's input or output side.
AudioStreamBasicDescription formatOf(const Device& device, bool isInput);

/// The supported formats, one for each rate. A simulated device lists the common rates and its current rate.
std::vector<AudioStreamBasicDescription> formatsOf(const Device& device, bool isInput);

bool supportsRate(const Device& device, double rate);

/// Whether the device supports the requested format. A request field of 0 matches any value.
bool isSupported(const Device& device, bool isInput, const AudioStreamBasicDescription& request);

/// The supported format nearest to the request: with the requested rate if the device supports that rate,
/// else the nearest supported rate. All other fields are those of the device's current format.
AudioStreamBasicDescription bestMatch(const Device& device, bool isInput,
                                      const AudioStreamBasicDescription& request);

/// The supported rates as ranges.
std::vector<AudioValueRange> rateRanges(const Device& device);

/// Whether a change of the rate from `before` to `after` changes the list of supported formats.
bool formatListChanges(const Device& device, double before, double after);

/// Run the device at another rate. Returns '!dat' if the device does not support that rate.
OSStatus changeRate(Device& device, double rate);

/// Read the rates that hardware supports, once per device, if the property `selector` reports formats or
/// rates.
/// The caller does not hold propertyLock.
/// [any]
void learnRates(const DeviceRef& device, AudioObjectPropertySelector selector);

} // namespace kvxplatform::hal
