#include "soundstream/render.h"

#include "plugin/shared_word.h"

#include <algorithm>
#include <cstring>

#include <pthread.h>
#include <sched.h>

namespace soundstream {

namespace {

constexpr UInt32 bytesPerFrame = 4; // two channels of 16 bits, as the mixer gives them
constexpr UInt32 buffersOfSilence = 2;

std::uintptr_t thisThread() { return (std::uintptr_t)pthread_self(); }

/// Inside the render procedure; false when another thread is. Sequentially consistent against waitForRender:
/// either that one sees us, or we see the pointer it took away.
class Rendering {
public:
    explicit Rendering(StreamState& state) : state_(state)
    {
        std::uintptr_t nobody = 0;
        isIn_ = __atomic_compare_exchange_n(&state_.renderThread, &nobody, thisThread(), false,
                                            __ATOMIC_SEQ_CST, __ATOMIC_RELAXED);
    }
    ~Rendering()
    {
        if (isIn_) __atomic_store_n(&state_.renderThread, std::uintptr_t{0}, __ATOMIC_RELEASE);
    }
    Rendering(const Rendering&) = delete;
    Rendering& operator=(const Rendering&) = delete;
    explicit operator bool() const { return isIn_; }

private:
    StreamState& state_;
    bool isIn_;
};

template <class Record>
Record* held(Record* record)
{
    if (record) hold(*record);
    return record;
}

void silence(AudioBuffer& buffer)
{
    if (buffer.mData) std::memset(buffer.mData, 0, buffer.mDataByteSize);
}

/// The open instance, held; null without one.
QTSoundStreamGlobals* openInstance(StreamState& state)
{
    RefconRecord* const record = held(__atomic_load_n(&state.refconRecord, __ATOMIC_SEQ_CST));
    if (!record) return nullptr;
    QTSoundStreamGlobals* const globals = held(__atomic_load_n(&record->globals, __ATOMIC_SEQ_CST));
    drop(record);
    return globals;
}

/// What the mixer gives next; null when it gives nothing, or when its client has closed the instance
/// meanwhile.
SoundComponentDataPtr nextSourceData(QTSoundStreamGlobals& globals)
{
    SoundComponentDataPtr data = globals.sourceData;
    if (data && data->sampleCount != 0) return data;
    SoundComponentGetSourceData(loadAcquired(globals.mixer), &data);
    if (!loadAcquired(globals.mixer)) data = nullptr;
    return globals.sourceData = data;
}

} // namespace

OSStatus giveMixerSamples(AudioConverterRef, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription**, void* client)
{
    SoundComponentDataPtr const data = nextSourceData(*static_cast<QTSoundStreamGlobals*>(client));
    AudioBuffer& buffer = list->mBuffers[0];
    if (!data || *packets == 0 || data->sampleCount <= 0) {
        silence(buffer);
        return noErr;
    }
    const UInt32 count = std::min(*packets, static_cast<UInt32>(data->sampleCount));
    buffer = {2, count * bytesPerFrame, data->buffer};
    data->buffer += count * bytesPerFrame;
    data->sampleCount -= static_cast<long>(count);
    *packets = count;
    return noErr;
}

OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags*, const AudioTimeStamp*, UInt32,
                         UInt32 frames, AudioBufferList* list)
{
    StreamState& state = *static_cast<StreamState*>(client);
    const Rendering rendering(state);
    QTSoundStreamGlobals* const globals = rendering ? openInstance(state) : nullptr;
    if (globals) {
        AudioConverterFillComplexBuffer(loadAcquired(state.converter), giveMixerSamples, globals, &frames,
                                        list, nullptr);
        drop(globals);
    } else {
        for (UInt32 i = 0; i < std::min(buffersOfSilence, list->mNumberBuffers); ++i)
            silence(list->mBuffers[i]);
    }
    return noErr;
}

void waitForRender(const StreamState& state)
{
    const auto inside = [&state] { return __atomic_load_n(&state.renderThread, __ATOMIC_SEQ_CST); };
    if (inside() == thisThread()) return;
    while (inside() != 0) sched_yield();
}

} // namespace soundstream
