#include "platform/hal/cycle.h"

#include "platform/hal/housekeeper.h"

#include <algorithm>

namespace kvxplatform::hal {

thread_local Device* turningDevice = nullptr;

namespace {

AudioTimeStamp timeStamp(double sampleTime, UInt64 hostTime)
{
    AudioTimeStamp stamp = {};
    stamp.mSampleTime = sampleTime;
    stamp.mHostTime = hostTime;
    stamp.mRateScalar = 1;
    stamp.mFlags =
        kAudioTimeStampSampleTimeValid | kAudioTimeStampHostTimeValid | kAudioTimeStampRateScalarValid;
    return stamp;
}

/// One buffer for the stream, or none.
AudioBufferList listOf(std::vector<float>& samples, UInt32 channels, UInt32 frames)
{
    AudioBufferList list = {};
    list.mNumberBuffers = channels ? 1 : 0;
    list.mBuffers[0].mNumberChannels = channels;
    list.mBuffers[0].mDataByteSize = channels * frames * static_cast<UInt32>(sizeof(float));
    list.mBuffers[0].mData = channels ? samples.data() : nullptr;
    return list;
}

/// Every channel glides from its gain to its target over the slice; a channel at 1 is left as it is.
void applyGains(Device& device, UInt32 frames)
{
    const UInt32 channels = device.running.outputChannels;
    for (UInt32 c = 0; c < channels; ++c) {
        const float from = device.gains[c], to = device.targetGains[c];
        if (from == 1 && to == 1) continue;
        float* sample = device.mix.data() + c;
        for (UInt32 i = 0; i < frames; ++i, sample += channels)
            *sample *= from + (to - from) * (static_cast<float>(i + 1) / static_cast<float>(frames));
        device.gains[c] = to;
    }
}

} // namespace

Buffers::Buffers(const Settings& settings)
    : mix(std::size_t{settings.sliceFrames} * settings.outputChannels), scratch(mix.size()),
      inputSilence(std::size_t{settings.sliceFrames} * settings.inputChannels),
      gains(settings.outputChannels, 1.0f), targetGains(settings.outputChannels, 1.0f)
{
}

void applyBuffers(Device& device, const Settings& settings, Buffers& buffers)
{
    for (std::size_t c = 0; c < std::min(buffers.gains.size(), device.gains.size()); ++c)
        buffers.gains[c] = device.gains[c], buffers.targetGains[c] = device.targetGains[c];
    device.running = settings;
    std::swap(device.mix, buffers.mix);
    std::swap(device.scratch, buffers.scratch);
    std::swap(device.inputSilence, buffers.inputSilence);
    std::swap(device.gains, buffers.gains);
    std::swap(device.targetGains, buffers.targetGains);
}

const float* turnCycle(Device& device, UInt32 frames, bool mayWait)
{
    turningDevice = &device;
    const Settings& settings = device.running;
    const std::size_t samples = std::size_t{frames} * settings.outputChannels;
    const UInt64 hostNow = AudioGetCurrentHostTime();
    device.lastCycleNanos.store(static_cast<std::int64_t>(hostNow), std::memory_order_relaxed);

    const AudioTimeStamp now = timeStamp(device.sampleTime, hostNow);
    const double sliceNanos = frames * 1e9 / settings.rate;
    const AudioTimeStamp none = {};
    const AudioTimeStamp outputTime =
        settings.outputChannels
            ? timeStamp(device.sampleTime + frames, hostNow + static_cast<UInt64>(sliceNanos))
            : none;
    const AudioTimeStamp inputTime = settings.inputChannels ? now : none;

    bool isFirst = true;
    const std::size_t count = device.procs.size(); // one that is added meanwhile waits for the next cycle
    for (std::size_t p = 0; p < count; ++p) {
        IOProc& entry = *device.procs[p];
        if (!entry.isStarted) continue;
        std::vector<float>& target = isFirst ? device.mix : device.scratch;
        std::fill_n(target.begin(), samples, 0.0f);
        AudioBufferList output = listOf(target, settings.outputChannels, frames);
        const AudioBufferList input = listOf(device.inputSilence, settings.inputChannels, frames);
        entry.proc(device.id, &now, &input, &inputTime, &output, &outputTime, entry.client);
        if (!isFirst)
            std::transform(device.mix.begin(), device.mix.begin() + static_cast<std::ptrdiff_t>(samples),
                           device.scratch.begin(), device.mix.begin(),
                           [](float a, float b) { return a + b; });
        isFirst = false;
    }
    if (isFirst) std::fill_n(device.mix.begin(), samples, 0.0f);
    applyGains(device, frames);
    device.sampleTime += frames;

    if (!device.isDiscarding && settings.outputChannels) {
        if (device.tap) device.tap(device.tapContext, device.mix.data(), frames, settings.outputChannels);
        if (device.capture)
            device.capture->write(device.mix.data(), frames, settings.outputChannels, mayWait);
    }
    turningDevice = nullptr;
    return device.mix.data();
}

} // namespace kvxplatform::hal
