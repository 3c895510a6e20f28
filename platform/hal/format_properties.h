// The format properties of devices and streams: the rate of a stream is that of its device.
#pragma once

#include "platform/hal/property.h"

namespace kvxplatform::hal {

// All: getters and setters of property rows.

OSStatus getFormat(const Request& request, Bytes& value);
OSStatus setFormat(const Request& request, const Bytes& value, Consequences& consequences);
OSStatus getFormats(const Request& request, Bytes& value);
OSStatus getFormatSupported(const Request& request, Bytes& value);
OSStatus getFormatMatch(const Request& request, Bytes& value);

} // namespace kvxplatform::hal
