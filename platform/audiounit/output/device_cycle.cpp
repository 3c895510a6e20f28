#include "platform/audiounit/output/device_cycle.h"

#include "platform/audiounit/output/device_output.h"
#include "platform/audiounit/output/map_channels.h"
#include "platform/audiounit/parameter.h"
#include "platform/audiounit/render.h"
#include "platform/audiounit/source.h"
#include "platform/audiounit/unit_handle.h"
#include "platform/pcm/linear_pcm.h"

#include <algorithm>

namespace kvxplatform::audiounit {
namespace {

UInt32 framesOf(const AudioBufferList* list)
{
    if (!list || list->mNumberBuffers == 0 || list->mBuffers[0].mNumberChannels == 0) return 0;
    return list->mBuffers[0].mDataByteSize / static_cast<UInt32>(sizeof(Float32)) /
           list->mBuffers[0].mNumberChannels;
}

/// Write client frames to frames [first, first + frames) of every stream of the device.
void writeToStreams(const Float32* samples, UInt32 channels, UInt32 frames, UInt32 first,
                    const pcm::ChannelMap* map, const pcm::Gain& gain, AudioBufferList& output)
{
    UInt32 firstChannel = 0;
    for (UInt32 i = 0; i < output.mNumberBuffers; ++i) {
        const AudioBuffer& stream = output.mBuffers[i];
        auto* out = static_cast<Float32*>(stream.mData);
        if (out)
            mapChannels(samples, channels, frames, map, gain, first, firstChannel, stream.mNumberChannels,
                        out + std::size_t{first} * stream.mNumberChannels);
        firstChannel += stream.mNumberChannels;
    }
}

void playClient(Unit& unit, DeviceOutput& state, AudioUnitRenderActionFlags& flags,
                const AudioTimeStamp& time, UInt32 frames, AudioBufferList& output)
{
    state.gain.rampTo(parameterValue(unit, kHALOutputParam_Volume, kAudioUnitScope_Global, 0));
    const pcm::ChannelMap* map = state.map.get();
    for (UInt32 done = 0; done < frames && !unit.isStopping;) {
        const AudioTimeStamp at = later(time, done, state.format.sampleRate, unit.hostTicksPerSecond);
        UInt32 count = frames - done;
        const Float32* samples = state.client.next({unit, flags, at}, count);
        writeToStreams(samples, state.client.channels(), count, done, map, state.gain, output);
        done += count;
    }
    state.gain.advance(frames);
}

void callInputCallback(const DeviceOutput& state, AudioUnitRenderActionFlags& flags,
                       const AudioTimeStamp& time, UInt32 frames)
{
    if (const AURenderCallbackStruct* callback = state.inputCallback.get())
        callback->inputProc(callback->inputProcRefCon, &flags, &time, 1, frames, nullptr);
}

} // namespace

OSStatus runCycle(AudioDeviceID device, const AudioTimeStamp*, const AudioBufferList* input,
                  const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
                  void* handle)
{
    const UnitUse unit = use(static_cast<AudioUnit>(handle));
    if (unit.status) return noErr;
    const RenderScope::Entry entry(unit->scope);
    if (!entry || !beginSlice(*unit)) return noErr;
    auto& state = stateOf<DeviceOutput>(*unit);
    if (!state.isStarted || state.activeDevice != device) return noErr; // the device's output stays silent

    const UInt32 inputFrames = framesOf(input);
    const UInt32 frames = framesOf(output);
    AudioUnitRenderActionFlags flags = 0;
    if (unit->isResetPending.exchange(false)) state.client.reset();
    if (state.isInputOn && inputFrames) {
        state.cycleInput = input;
        state.cycleFrames = inputFrames;
        callInputCallback(state, flags, *inputTime, inputFrames);
    }
    if (state.isOutputOn && frames && state.isStarted)
        playClient(*unit, state, flags, *outputTime, frames, *output);
    state.cycleInput = nullptr;
    return noErr;
}

OSStatus renderInput(Unit& unit, Slice& slice)
{
    auto& state = stateOf<DeviceOutput>(unit);
    if (slice.bus != 1 || !state.cycleInput) return kAudioUnitErr_CannotDoInCurrentContext;
    Element& element = unit.output(1);
    const UInt32 channels = element.format.mChannelsPerFrame;
    if (slice.frames > unit.sliceLimit || slice.frames > state.cycleFrames)
        return kAudioUnitErr_TooManyFramesToProcess;
    if (!fits(slice.out, element.format, slice.frames)) return paramErr;

    std::fill_n(state.inputSamples.begin(), std::size_t{slice.frames} * channels, 0.0f);
    UInt32 first = 0;
    for (UInt32 i = 0; i < state.cycleInput->mNumberBuffers; ++i) {
        const AudioBuffer& stream = state.cycleInput->mBuffers[i];
        const auto* in = static_cast<const Float32*>(stream.mData);
        for (UInt32 c = 0; in && c < stream.mNumberChannels && first + c < channels; ++c)
            for (UInt32 frame = 0; frame < slice.frames; ++frame)
                state.inputSamples[std::size_t{frame} * channels + first + c] =
                    in[std::size_t{frame} * stream.mNumberChannels + c];
        first += stream.mNumberChannels;
    }
    fillInMemory(slice.out, element.buffers, slice.frames);
    pcm::encode(element.format, state.inputSamples.data(), slice.frames, slice.out, 0);
    return noErr;
}

} // namespace kvxplatform::audiounit
