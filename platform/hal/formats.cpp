#include "platform/hal/formats.h"

#include "platform/hal/portaudio_driver.h"
#include "platform/hal/tree.h"

#include <algorithm>
#include <cmath>

namespace kvxplatform::hal {

namespace {

constexpr double commonRates[] = {8000,  11025, 16000, 22050, 24000,  32000, 44100,
                                  48000, 64000, 88200, 96000, 176400, 192000};

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

std::vector<double> ratesOnOffer(const Device& device)
{
    if (!device.rates.empty()) return device.rates;
    std::vector<double> rates(std::begin(commonRates), std::end(commonRates));
    if (std::find(rates.begin(), rates.end(), device.settings.rate) == rates.end())
        rates.push_back(device.settings.rate);
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
