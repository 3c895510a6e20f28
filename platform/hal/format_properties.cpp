#include "platform/hal/format_properties.h"

#include "platform/hal/formats.h"

namespace kvxplatform::hal {

OSStatus getFormat(const Request& r, Bytes& value) { return put(value, formatOf(*r.device, r.isInput)); }

OSStatus setFormat(const Request& r, const Bytes& value, Consequences&)
{
    const auto format = as<AudioStreamBasicDescription>(value);
    if (!isSupported(*r.device, r.isInput, format)) return kAudioDeviceUnsupportedFormatError;
    return format.mSampleRate == 0 ? OSStatus{noErr} : changeRate(*r.device, format.mSampleRate);
}

OSStatus getFormats(const Request& r, Bytes& value) { return putAll(value, formatsOf(*r.device, r.isInput)); }

OSStatus getFormatSupported(const Request& r, Bytes& value)
{
    return isSupported(*r.device, r.isInput, as<AudioStreamBasicDescription>(value))
               ? OSStatus{noErr}
               : OSStatus{kAudioDeviceUnsupportedFormatError};
}

OSStatus getFormatMatch(const Request& r, Bytes& value)
{
    return put(value, bestMatch(*r.device, r.isInput, as<AudioStreamBasicDescription>(value)));
}

} // namespace kvxplatform::hal
