// A mixer: its sources, the commands of its clients, and the fetch of its output.
#pragma once

#include "platform/soundmanager/source.h"
#include "platform/support/published.h"

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <mutex>
#include <vector>

namespace kvxplatform::soundmanager {

/// Clients change it one at a time, under `lock`; one render thread at a time fetches inside `scope`. `lock`
/// is never held during a wait for the render thread: a completion routine may send a command.
struct Mixer {
    static constexpr UInt32 maxSources = 64;

    struct Slot {
        Published<Source> source;
        UInt32 name = 0; ///< slot index + serial number * maxSources; under lock
    };

    // Set once, before the first source.
    bool isSet = false;
    SoundComponentData outputDescription{};
    AudioStreamBasicDescription format{}; ///< the same, as linear PCM

    std::mutex lock;
    std::array<Slot, maxSources> slots;
    UInt32 serial = 0;             ///< of the newest source, so that names are not reused soon; under lock
    std::atomic<UInt32> starts{0}; ///< odd while a start command has started some of its sources only
    std::atomic<bool> isClosed{false};
    RenderScope scope; ///< of the fetch in progress

    // [audio & rendering]
    std::array<bool, maxSources> wasPlaying{}; ///< in the previous block
    std::vector<Float32> sum, sourceOutput;    ///< a block each, interleaved
    std::vector<Byte> block;
    SoundComponentData result{}; ///< what the fetch returns: the caller may change it
};

/// The slot of a source; null for an unknown name.
/// The caller holds the lock.
/// [any]
Mixer::Slot* find(Mixer& mixer, SoundSource name);

/// Set the output format and block length, once.
/// Errors   those of linearPCM. Throws std::bad_alloc.
/// [client]
OSErr setOutput(Mixer& mixer, const SoundComponentData& description);

/// End the output, and wait for the fetch in progress; inside any render call, do not wait.
/// [client]
void close(Mixer& mixer);

// The selectors that the platform's header describes. Commands wait for the fetch in progress before they
// return, so that the caller may free buffers; inside any render call they do not wait. They throw
// std::bad_alloc.
// All commands: [client].

ComponentResult addSource(Mixer& mixer, SoundSource* out);
ComponentResult removeSource(Mixer& mixer, SoundSource name);
ComponentResult startSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult pauseSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions);
ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* value);
ComponentResult setInfo(Mixer& mixer, SoundSource name, OSType selector, void* value);

/// Render the next block. Allocates nothing and waits for nothing, but for what completion routines do.
/// Errors   badFormat before setOutput; channelBusy if another thread is fetching; badComponentInstance after
///          close.
/// [audio]
ComponentResult getSourceData(Mixer& mixer, SoundComponentDataPtr* out);

} // namespace kvxplatform::soundmanager
