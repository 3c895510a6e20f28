// Stream formats: the current one, those on offer, and the nearest to a request.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

/// Native-endian packed 32-bit float, interleaved.
/// [any]
AudioStreamBasicDescription floatFormat(double rate, UInt32 channels);

// The functions of the next group: [any], with propertyLock.

/// The format of a side of the device.
AudioStreamBasicDescription formatOf(const Device& device, bool isInput);

/// The formats on offer, one for each rate; a simulated device offers the common rates and its own.
std::vector<AudioStreamBasicDescription> formatsOf(const Device& device, bool isInput);

bool supportsRate(const Device& device, double rate);

/// Whether a requested format is on offer. A field of 0 matches any value.
bool isSupported(const Device& device, bool isInput, const AudioStreamBasicDescription& request);

/// The nearest format on offer: the requested rate if the device supports it, else the nearest; the other
/// fields are the device's.
AudioStreamBasicDescription bestMatch(const Device& device, bool isInput,
                                      const AudioStreamBasicDescription& request);

/// The rates on offer as ranges.
std::vector<AudioValueRange> rateRanges(const Device& device);

/// Whether a change of the rate changes the formats on offer.
bool formatListChanges(const Device& device, double before, double after);

/// Run the device at another rate; '!dat' if it does not support that rate.
OSStatus changeRate(Device& device, double rate);

/// Read the rates of hardware, once, if the property reports formats or rates.
/// [any], without propertyLock
void learnRates(const DeviceRef& device, AudioObjectPropertySelector selector);

} // namespace kvxplatform::hal
