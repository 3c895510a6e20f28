#include "platform/hal/formats.h"

#include "platform/hal/common_rates.h"
#include "platform/hal/portaudio_devices.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

namespace {

constexpr AudioObjectPropertySelector selectorsOfRates[] = {
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

bool supportsRate(const Device& device, double rate)
{
    if (device.rates.empty()) return rate >= lowestRate && rate <= highestRate;
    return std::find(device.rates.begin(), device.rates.end(), rate) != device.rates.end();
}

bool isSupported(const Device& device, bool isInput, const AudioStreamBasicDescription& request)
{
    const AudioStreamBasicDescription ours = formatOf(device, isInput);
    const auto agree = [](UInt32 requested, UInt32 offered) {
        return requested == 0 || requested == offered;
    };
    return (request.mSampleRate == 0 || supportsRate(device, request.mSampleRate)) &&
           agree(request.mFormatID, ours.mFormatID) && agree(request.mFormatFlags, ours.mFormatFlags) &&
           agree(request.mBytesPerPacket, ours.mBytesPerPacket) &&
           agree(request.mFramesPerPacket, ours.mFramesPerPacket) &&
           agree(request.mBytesPerFrame, ours.mBytesPerFrame) &&
           agree(request.mChannelsPerFrame, ours.mChannelsPerFrame) &&
           agree(request.mBitsPerChannel, ours.mBitsPerChannel);
}

AudioStreamBasicDescription bestMatch(const Device& device, bool isInput,
                                      const AudioStreamBasicDescription& request)
{
    AudioStreamBasicDescription match = formatOf(device, isInput);
    if (!(request.mSampleRate > 0)) return match;
    if (supportsRate(device, request.mSampleRate)) {
        match.mSampleRate = request.mSampleRate;
        return match;
    }
    const std::vector<double> rates = ratesOnOffer(device);
    match.mSampleRate = *std::min_element(rates.begin(), rates.end(), [&](double a, double b) {
        return std::fabs(a - request.mSampleRate) < std::fabs(b - request.mSampleRate);
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

bool formatListChanges(const Device& device, double before, double after)
{
    return device.rates.empty() && before != after && !(isCommon(before) && isCommon(after));
}

OSStatus changeRate(Device& device, double rate)
{
    if (!supportsRate(device, rate)) return kAudioDeviceUnsupportedFormatError;
    device.settings.rate = rate;
    return noErr;
}

void learnRates(const DeviceRef& device, AudioObjectPropertySelector selector)
{
    if (std::find(std::begin(selectorsOfRates), std::end(selectorsOfRates), selector) ==
        std::end(selectorsOfRates))
        return;
    {
        const std::lock_guard<std::mutex> lock(propertyLock);
        if (device->ratesAreKnown) return;
    }
    std::vector<double> rates = findRates(*device);
    const std::lock_guard<std::mutex> lock(propertyLock);
    device->rates = std::move(rates);
    device->ratesAreKnown = true;
}

} // namespace kvxplatform::hal
