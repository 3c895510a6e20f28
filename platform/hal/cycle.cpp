#include "platform/hal/cycle.h"

#include <algorithm>

namespace kvxplatform::hal {

thread_local Device* deviceInCycle = nullptr;

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

/// A buffer list with one buffer for the stream, or without buffers if the device has no channels on this
/// side. If the stream is switched off, its buffer has a size but a null data pointer.
AudioBufferList listOf(std::vector<float>& samples, UInt32 channels, UInt32 frames, bool isOff)
{
    AudioBufferList list = {};
    list.mNumberBuffers = channels ? 1 : 0;
    list.mBuffers[0].mNumberChannels = channels;
    list.mBuffers[0].mDataByteSize = channels * frames * static_cast<UInt32>(sizeof(float));
    list.mBuffers[0].mData = channels && !isOff ? samples.data() : nullptr;
    return list;
}

struct Times {
    AudioTimeStamp now, input, output;
};

Times timesOf(const Device& device, const Settings& settings, UInt32 frames, UInt64 hostNow)
{
    const auto sliceNanos = static_cast<UInt64>(frames * 1e9 / settings.rate);
    const AudioTimeStamp none = {};
    const AudioTimeStamp now = timeStamp(device.sampleTime, hostNow);
    const AudioTimeStamp output = timeStamp(device.sampleTime + frames, hostNow + sliceNanos);
    return {now, settings.inputChannels ? now : none, settings.outputChannels ? output : none};
}

/// Make the procedure the one in progress, unless it is stopped. A thread that stops a procedure clears
/// `isStarted`, then reads `called`: either that thread finds the call in progress, or the cycle finds
/// `isStarted` cleared.
bool beginCall(Device& device, const IOProc& proc)
{
    if (!proc.isStarted.load(std::memory_order_relaxed)) return false;
    device.called = &proc;
    if (proc.isStarted && !proc.isRemoved) return true;
    device.called = nullptr;
    return false;
}

/// Among many procedures, the IOProc objects of the next procedures have left the near processor caches, so
/// prefetch them while the present procedure renders. A prefetch never faults, so any client pointer is
/// allowed.
void prefetchNext(const std::shared_ptr<IOProc>* row, const std::shared_ptr<IOProc>* end)
{
    if (end - row > 2) __builtin_prefetch(row[2].get());
    if (end - row > 1) __builtin_prefetch(row[1]->client);
}

/// Call every started procedure and store the sum of their outputs in `mix`.
void callProcs(Device& device, CycleBuffers& buffers, UInt32 frames, const Times& times)
{
    const Settings& settings = buffers.settings;
    const std::size_t samples = std::size_t{frames} * settings.outputChannels;
    bool isFirst = true;
    const ProcList::List& list = device.procs.current();
    const std::shared_ptr<IOProc>* const end = list.data() + list.size();
    for (const std::shared_ptr<IOProc>* row = list.data(); row != end; ++row) {
        const IOProc& proc = **row;
        prefetchNext(row, end);
        if (!beginCall(device, proc)) continue;
        std::vector<float>& target = isFirst ? buffers.mix : buffers.scratch;
        std::fill_n(target.begin(), samples, 0.0f);
        const bool isOutputOff = proc.isOutputOff.load(std::memory_order_relaxed);
        const bool isInputOff = proc.isInputOff.load(std::memory_order_relaxed);
        AudioBufferList output = listOf(target, settings.outputChannels, frames, isOutputOff);
        const AudioBufferList input =
            listOf(buffers.inputSilence, settings.inputChannels, frames, isInputOff);
        proc.proc(device.id, &times.now, &input, &times.input, &output, &times.output, proc.client);
        device.called = nullptr;
        if (isOutputOff) continue;
        if (!isFirst)
            for (std::size_t i = 0; i < samples; ++i) buffers.mix[i] += buffers.scratch[i];
        isFirst = false;
    }
    if (isFirst) std::fill_n(buffers.mix.begin(), samples, 0.0f);
}

/// Let the gain of every channel glide to its target and end exactly there. Samples at gain 1 are unchanged.
void applyGains(Device& device, CycleBuffers& buffers, UInt32 frames)
{
    const UInt32 channels = buffers.settings.outputChannels;
    const bool jumps = device.hasJustStarted.exchange(false);
    for (UInt32 c = 0; c < channels; ++c) {
        Glide& glide = device.glides[c];
        const float target = device.targetGains[c].load(std::memory_order_relaxed);
        if (jumps)
            glide = {target, target, 0};
        else if (glide.to != target)
            glide = {glide.now(), target, glideFrames};
        float* sample = buffers.mix.data() + c;
        UInt32 i = 0;
        for (; i < frames && glide.framesLeft; ++i, sample += channels) {
            --glide.framesLeft;
            *sample *= glide.now();
        }
        if (glide.to == 1) continue;
        for (; i < frames; ++i, sample += channels) *sample *= glide.to;
    }
}

void passToSinks(const Device& device, const CycleBuffers& buffers, UInt32 frames, bool mayWait)
{
    const UInt32 channels = buffers.settings.outputChannels;
    const OutputSinks* const sinks = device.sinks.get();
    if (!sinks || device.isDiscarding || !channels) return;
    const float* const samples = buffers.mix.data();
    if (sinks->tap) sinks->tap(sinks->tapContext, samples, frames, channels);
    for (const std::shared_ptr<Capture>& capture : sinks->captures)
        if (capture) capture->write(samples, frames, {buffers.settings.rate, channels}, mayWait);
}

} // namespace

CycleScope::CycleScope(Device& device) : lock_(device.cycleLock) { enter(device); }

CycleScope::CycleScope(Device& device, std::try_to_lock_t) : lock_(device.cycleLock, std::try_to_lock)
{
    if (lock_) enter(device);
}

CycleScope::~CycleScope()
{
    if (entry_) deviceInCycle = nullptr;
}

void CycleScope::enter(Device& device)
{
    entry_.emplace(device.scope);
    deviceInCycle = &device;
}

CycleBuffers& buffersOfNextCycle(Device& device)
{
    CycleBuffers& buffers = *device.buffers.get();
    // An added channel starts at its own level, not at the last gain of an earlier channel with that number.
    for (UInt32 c = device.glidingChannels; c < buffers.settings.outputChannels; ++c) {
        const float target = device.targetGains[c];
        device.glides[c] = {target, target, 0};
    }
    device.glidingChannels = buffers.settings.outputChannels;
    return buffers;
}

const float* runCycle(Device& device, CycleBuffers& buffers, UInt32 frames, bool mayWait)
{
    const UInt64 hostNow = AudioGetCurrentHostTime();
    device.lastCycleNanos.store(static_cast<std::int64_t>(hostNow), std::memory_order_relaxed);

    callProcs(device, buffers, frames, timesOf(device, buffers.settings, frames, hostNow));
    applyGains(device, buffers, frames);
    device.sampleTime += frames;
    passToSinks(device, buffers, frames, mayWait);
    return buffers.mix.data();
}

} // namespace kvxplatform::hal
