#include "platform/hal/formats.h"

#include "platform/hal/common_rates.h"
#include "platform/hal/portaudio_driver.h"
#include "platform/hal/property.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

namespace {

constexpr AudioObjectPropertySelector aboutRates[] = {
    kAudioDevicePropertyNominalSampleRate,
    kAudioDevicePropertyAvailableNominalSampleRates,
    kAudioDevicePropertyStreamFormat,
    kAudioDevicePropertyStreamFormats,
    kAudioDevicePropertyStreamFormatSupported,
    kAudioDevicePropertyStreamFormatMatch,
    kAudioStreamPropertyAvailableVirtualFormats,
    kAudioStreamPropertyPhysicalFormat,
    kAudioStreamPropertyAvailablePhysicalFormats,
    kAudioStreamPropertyPhysicalFormats,
    kAudioStreamPropertyPhysicalFormatSupported,
    kAudioStreamPropertyPhysicalFormatMatch,
};

bool isCommon(double rate)
{
    return std::find(std::begin(commonRates), std::end(commonRates), rate) != std::end(commonRates);
}

std::vector<double> ratesOnOffer(const Device& device)
{
    if (!device.rates.empty()) return device.rates;
    std::vector<double> rates(std::begin(commonRates), std::end(commonRates));
    if (!isCommon(device.settings.rate)) rates.push_back(device.settings.rate);
    return rates;
}

} // namespace

AudioStreamBasicDescription floatFormat(double rate, UInt32 channels)
{
    AudioStreamBasicDescription format = {};
    format.mSampleRate = rate;
    format.mFormatID = kAudioFormatLinearPCM;
    format.mFormatFlags = kAudioFormatFlagsNativeFloatPacked;
    format.mFramesPerPacket = 1;
    format.mBytesPerFrame = format.mBytesPerPacket = channels * static_cast<UInt32>(sizeof(Float32));
    format.mChannelsPerFrame = channels;
    format.mBitsPerChannel = 32;
    return format;
}

AudioStreamBasicDescription formatOf(const Device& device, bool isInput)
{
    return floatFormat(device.settings.rate,
                       isInput ? device.settings.inputChannels : device.settings.outputChannels);
}

std::vector<AudioStreamBasicDescription> formatsOf(const Device& device, bool isInput)
{
    std::vector<AudioStreamBasicDescription> formats;
    for (double rate : ratesOnOffer(device))
        formats.push_back(floatFormat(rate, formatOf(device, isInput).mChannelsPerFrame));
    return formats;
}

bool takesRate(const Device& device, double rate)
{
    if (device.rates.empty()) return rate >= lowestRate && rate <= highestRate;
    return std::find(device.rates.begin(), device.rates.end(), rate) != device.rates.end();
}

bool isSupported(const Device& device, bool isInput, const AudioStreamBasicDescription& wanted)
{
    const AudioStreamBasicDescription ours = formatOf(device, isInput);
    const auto agree = [](UInt32 asked, UInt32 offered) { return asked == 0 || asked == offered; };
    return (wanted.mSampleRate == 0 || takesRate(device, wanted.mSampleRate)) &&
           agree(wanted.mFormatID, ours.mFormatID) && agree(wanted.mFormatFlags, ours.mFormatFlags) &&
           agree(wanted.mBytesPerPacket, ours.mBytesPerPacket) &&
           agree(wanted.mFramesPerPacket, ours.mFramesPerPacket) &&
           agree(wanted.mBytesPerFrame, ours.mBytesPerFrame) &&
           agree(wanted.mChannelsPerFrame, ours.mChannelsPerFrame) &&
           agree(wanted.mBitsPerChannel, ours.mBitsPerChannel);
}

AudioStreamBasicDescription bestMatch(const Device& device, bool isInput,
                                      const AudioStreamBasicDescription& wanted)
{
    AudioStreamBasicDescription match = formatOf(device, isInput);
    if (!(wanted.mSampleRate > 0)) return match;
    if (takesRate(device, wanted.mSampleRate)) {
        match.mSampleRate = wanted.mSampleRate;
        return match;
    }
    const std::vector<double> rates = ratesOnOffer(device);
    match.mSampleRate = *std::min_element(rates.begin(), rates.end(), [&](double a, double b) {
        return std::fabs(a - wanted.mSampleRate) < std::fabs(b - wanted.mSampleRate);
    });
    return match;
}

std::vector<AudioValueRange> rateRanges(const Device& device)
{
    if (device.rates.empty()) return {{lowestRate, highestRate}};
    std::vector<AudioValueRange> ranges;
    for (double rate : device.rates) ranges.push_back({rate, rate});
    return ranges;
}

bool listFollowsRate(const Device& device, double before, double after)
{
    return device.rates.empty() && before != after && !(isCommon(before) && isCommon(after));
}

OSStatus changeRate(Device& device, double rate)
{
    if (!takesRate(device, rate)) return kAudioDeviceUnsupportedFormatError;
    device.settings.rate = rate;
    return noErr;
}

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

void learnRates(const DeviceRef& device, AudioObjectPropertySelector selector)
{
    if (std::find(std::begin(aboutRates), std::end(aboutRates), selector) == std::end(aboutRates)) return;
    {
        const std::lock_guard<std::mutex> lock(treeLock());
        if (device->ratesAreKnown) return;
    }
    std::vector<double> rates = findRates(*device);
    const std::lock_guard<std::mutex> lock(treeLock());
    device->rates = std::move(rates);
    device->ratesAreKnown = true;
}

} // namespace kvxplatform::hal
