// Stream formats: what a stream runs at, what is on offer, and what comes nearest.
#pragma once

#include "platform/hal/device.h"

namespace kvxplatform::hal {

struct Request;
struct Consequences;

/// Native-endian packed 32-bit float, interleaved.
AudioStreamBasicDescription floatFormat(double rate, UInt32 channels);

/// The format of a side of the device. The tree's lock held, as for all here.
AudioStreamBasicDescription formatOf(const Device& device, bool isInput);

/// The formats on offer, one for each rate; a simulated device names the common ones.
std::vector<AudioStreamBasicDescription> formatsOf(const Device& device, bool isInput);

/// Whether the device takes the rate.
bool takesRate(const Device& device, double rate);

/// Whether a format is on offer: zero fields are not compared.
bool isSupported(const Device& device, bool isInput, const AudioStreamBasicDescription& wanted);

/// The format nearest to the one wanted: its rate if the device takes it, else the nearest; the rest as the
/// device has it.
AudioStreamBasicDescription bestMatch(const Device& device, bool isInput,
                                      const AudioStreamBasicDescription& wanted);

/// The rates on offer as ranges.
std::vector<AudioValueRange> rateRanges(const Device& device);

/// Whether the list of formats is another when the rate has changed: a simulated device names the common
/// rates and its own. The tree's lock held.
bool listFollowsRate(const Device& device, double before, double after);

/// Run the device at another rate; '!dat' if it does not take it.
OSStatus changeRate(Device& device, double rate);

// ---- properties of devices and of streams alike: a stream's rate is its device's ----

using Bytes = std::vector<char>;
OSStatus getFormat(const Request& request, Bytes& value);
OSStatus setFormat(const Request& request, const Bytes& value, Consequences& consequences);
OSStatus getFormats(const Request& request, Bytes& value);
OSStatus getFormatSupported(const Request& request, Bytes& value);
OSStatus getFormatMatch(const Request& request, Bytes& value);

/// Find out hardware's rates, once, if the selector is about formats or rates. Without the tree's lock.
void learnRates(const DeviceRef& device, AudioObjectPropertySelector selector);

} // namespace kvxplatform::hal
