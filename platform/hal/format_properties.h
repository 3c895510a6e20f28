// The format properties of devices and streams. A stream always has the sample rate of its device.
#pragma once

#include "platform/hal/property.h"

namespace kvxplatform::hal {

// All functions are getters and setters for rows of the property tables.

OSStatus getFormat(const Request& request, Bytes& value);
OSStatus setFormat(const Request& request, const Bytes& value, Consequences& consequences);
OSStatus getFormats(const Request& request, Bytes& value);
OSStatus getFormatSupported(const Request& request, Bytes& value);
OSStatus getFormatMatch(const Request& request, Bytes& value);

} // namespace kvxplatform::hal
