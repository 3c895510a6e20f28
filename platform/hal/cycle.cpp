#include "platform/hal/cycle.h"

#include <algorithm>

namespace kvxplatform::hal {

thread_local Device* turningDevice = nullptr;

namespace {

/// Marks the thread and the device as being in a cycle.
class CycleMark {
public:
    explicit CycleMark(Device& device) : device_(device)
    {
        turningDevice = &device;
        device.cycles.begin();
    }
    ~CycleMark()
    {
        device_.cycles.end();
        turningDevice = nullptr;
    }
    CycleMark(const CycleMark&) = delete;
    CycleMark& operator=(const CycleMark&) = delete;

private:
    Device& device_;
};

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

/// One buffer for the stream, or none. One that is switched off has its size, but no memory.
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
    const AudioTimeStamp heard = timeStamp(device.sampleTime + frames, hostNow + sliceNanos);
    return {now, settings.inputChannels ? now : none, settings.outputChannels ? heard : none};
}

/// Whether the procedure may be called now; it is then known as the one being called. Whoever stops a
/// procedure clears its mark first and looks at `called` afterwards, so that one of the two sees the other.
bool beginCall(Device& device, const IOProc& proc)
{
    if (!proc.isStarted.load(std::memory_order_relaxed)) return false;
    device.called = &proc;
    if (proc.isStarted && !proc.isRemoved) return true;
    device.called = nullptr;
    return false;
}

/// Among many procedures the next ones' records have left the near caches since the last cycle: ask for them
/// while this one renders. Nothing is read, so whatever the client points to will do.
void askForNext(const ProcList::Row& row, std::size_t place)
{
    if (place + 2 < row.size()) __builtin_prefetch(row[place + 2]);
    if (place + 1 < row.size()) __builtin_prefetch(row[place + 1]->client);
}

/// Every started procedure into `mix`.
void callProcs(Device& device, Shape& shape, UInt32 frames, const Times& times)
{
    const Settings& settings = shape.settings;
    const std::size_t samples = std::size_t{frames} * settings.outputChannels;
    bool isFirst = true;
    const ProcList::Row& row = device.procs.row();
    for (std::size_t place = 0; place < row.size(); ++place) {
        const IOProc* const proc = row[place];
        askForNext(row, place);
        if (!beginCall(device, *proc)) continue;
        std::vector<float>& target = isFirst ? shape.mix : shape.scratch;
        std::fill_n(target.begin(), samples, 0.0f);
        const bool isSilent = proc->isOutputOff.load(std::memory_order_relaxed);
        const bool isDeaf = proc->isInputOff.load(std::memory_order_relaxed);
        AudioBufferList output = listOf(target, settings.outputChannels, frames, isSilent);
        const AudioBufferList input = listOf(shape.inputSilence, settings.inputChannels, frames, isDeaf);
        proc->proc(device.id, &times.now, &input, &times.input, &output, &times.output, proc->client);
        device.called = nullptr;
        if (isSilent) continue;
        if (!isFirst)
            for (std::size_t i = 0; i < samples; ++i) shape.mix[i] += shape.scratch[i];
        isFirst = false;
    }
    if (isFirst) std::fill_n(shape.mix.begin(), samples, 0.0f);
}

/// Every channel glides to its target and ends exactly there; a channel at 1 is left as it is.
void applyGains(Device& device, Shape& shape, UInt32 frames)
{
    const UInt32 channels = shape.settings.outputChannels;
    const bool jumps = device.hasJustStarted.exchange(false);
    for (UInt32 c = 0; c < channels; ++c) {
        Glide& glide = device.glides[c];
        const float target = device.targetGains[c].load(std::memory_order_relaxed);
        if (jumps)
            glide = {target, target, 0};
        else if (glide.to != target)
            glide = {glide.now(), target, glideFrames};
        float* sample = shape.mix.data() + c;
        UInt32 i = 0;
        for (; i < frames && glide.framesLeft; ++i, sample += channels) {
            --glide.framesLeft;
            *sample *= glide.now();
        }
        if (glide.to == 1) continue;
        for (; i < frames; ++i, sample += channels) *sample *= glide.to;
    }
}

/// What is heard, to those who listen beside the device.
void handOut(const Device& device, const Shape& shape, UInt32 frames, bool mayWait)
{
    const UInt32 channels = shape.settings.outputChannels;
    if (device.isDiscarding || !channels) return;
    if (const Tap* tap = device.tap) tap->function(tap->context, shape.mix.data(), frames, channels);
    for (const auto& each : device.captures)
        if (Capture* capture = each)
            capture->write(shape.mix.data(), frames, {shape.settings.rate, channels}, mayWait);
}

} // namespace

Shape::Shape(const Settings& ofSettings)
    : settings(ofSettings), mix(std::size_t{settings.sliceFrames} * settings.outputChannels),
      scratch(mix.size()), inputSilence(std::size_t{settings.sliceFrames} * settings.inputChannels)
{
}

Device::~Device()
{
    delete nextShape.load();
    freeSpentShapes(*this);
}

namespace {

/// Channels that were not there begin at their level: what one of the same number had before is long past.
void beginChannels(Device& device, const Shape& former, const Shape& next)
{
    for (UInt32 c = former.settings.outputChannels; c < next.settings.outputChannels; ++c) {
        const float target = device.targetGains[c];
        device.glides[c] = {target, target, 0};
    }
}

} // namespace

const Settings& takeUpSettings(Device& device)
{
    if (Shape* next = device.nextShape.exchange(nullptr)) {
        beginChannels(device, *device.shape, *next);
        Shape* spent = device.shape.release();
        device.shape.reset(next);
        if (spent) {
            spent->nextSpent = device.spentShapes.load();
            while (!device.spentShapes.compare_exchange_weak(spent->nextSpent, spent)) {
            }
        }
    }
    return device.shape->settings;
}

void freeSpentShapes(Device& device)
{
    for (Shape* spent = device.spentShapes.exchange(nullptr); spent;) {
        const std::unique_ptr<Shape> owner(spent);
        spent = spent->nextSpent;
    }
}

const float* turnCycle(Device& device, UInt32 frames, bool mayWait)
{
    const CycleMark mark(device);
    Shape& shape = *device.shape;
    const UInt64 hostNow = AudioGetCurrentHostTime();
    device.lastCycleNanos.store(static_cast<std::int64_t>(hostNow), std::memory_order_relaxed);

    callProcs(device, shape, frames, timesOf(device, shape.settings, frames, hostNow));
    applyGains(device, shape, frames);
    device.sampleTime += frames;
    handOut(device, shape, frames, mayWait);
    return shape.mix.data();
}

} // namespace kvxplatform::hal
