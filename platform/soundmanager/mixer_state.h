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

/// Clients change a mixer one at a time, under `lock`; one render thread at a time fetches inside `scope`. No
/// thread holds `lock` while it waits for the render thread, because a completion routine may send a command.
struct Mixer {
    static constexpr UInt32 maxSources = 64;

    struct Slot {
        Published<Source> source;
        UInt32 name = 0; ///< name of the source: slot index + serial number * maxSources; guarded by `lock`
    };

    // The following members are set once, before the first source is added.
    bool isSet = false;
    SoundComponentData outputDescription{};
    AudioStreamBasicDescription format{}; ///< sample format of `outputDescription`, as linear PCM

    std::mutex lock;
    std::array<Slot, maxSources> slots;
    /// Serial number of the newest source. It keeps names from being reused soon. Guarded by `lock`.
    UInt32 serial = 0;
    std::atomic<UInt32> starts{0}; ///< counter that is odd while a start command is starting its sources
    std::atomic<bool> isClosed{false};
    RenderScope scope; ///< render scope of each fetch

    // The following members belong to the fetch in progress.
    // [audio & rendering]
    std::array<bool, maxSources> wasPlaying{}; ///< whether each slot's source played in the previous block
    std::vector<Float32> sum, sourceOutput;    ///< one block each: the mix, and the output of one source
    std::vector<Byte> block;
    SoundComponentData result{}; ///< description that a fetch returns and that its caller may change
};

/// Find the slot of a source. The caller holds the mixer's lock.
/// Returns  null for an unknown name.
/// [any]
Mixer::Slot* find(Mixer& mixer, SoundSource name);

/// Set the output format and the block length. Each mixer receives a single call of this function.
/// Errors   those of linearPCM(). Throws std::bad_alloc.
/// [client]
OSErr setOutput(Mixer& mixer, const SoundComponentData& description);

/// Make all later fetches fail, then wait for the fetch in progress. Inside a render call of any mixer or
/// unit the function does not wait.
/// [client]
void close(Mixer& mixer);

// The component calls of a mixer, which the platform's header describes. The commands stop, pause and remove
// wait for the fetch in progress, so that the caller may then free buffers; inside a render call of any mixer
// or unit they do not wait. Commands may throw std::bad_alloc.
// All functions: [client].

ComponentResult addSource(Mixer& mixer, SoundSource* out);
ComponentResult removeSource(Mixer& mixer, SoundSource name);
ComponentResult startSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult pauseSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions);
ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* value);
ComponentResult setInfo(Mixer& mixer, SoundSource name, OSType selector, void* value);

/// Render the next block. The mixer itself neither allocates nor waits; completion routines may do so.
/// Errors   badFormat before setOutput(); channelBusy if another thread is fetching; badComponentInstance
///          after close().
/// [audio]
ComponentResult getSourceData(Mixer& mixer, SoundComponentDataPtr* out);

} // namespace kvxplatform::soundmanager
