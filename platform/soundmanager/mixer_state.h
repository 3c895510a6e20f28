// A mixer's sources, what clients order of them, and their sum.
//
// Two sides: clients, one at a time (`lock`), and whoever fetches the sum, one at a time, who waits for
// nobody. A source that is taken away is retired, and freed when the slice that may still use it is over.
#pragma once

#include "platform/soundmanager/slices.h"
#include "platform/soundmanager/source.h"

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform::soundmanager {

/// `lock` is never held while waiting for a slice: a completion may come back in through here.
struct Mixer {
    static constexpr UInt32 mostSources = 64;

    struct Place {
        std::unique_ptr<Source> owned;       // under lock
        std::atomic<Source*> heard{nullptr}; // the same, for the audio thread
        UInt32 name = 0;                     // under lock
    };
    struct Retired {
        std::unique_ptr<Source> source;
        UInt32 slice; // the last that may use it
    };

    // Before any source, and for good.
    bool isSet = false;
    SoundComponentData wanted{};
    AudioStreamBasicDescription format{};

    std::mutex lock;
    std::array<Place, mostSources> places;
    UInt32 serial = 0; // of the source added last; under lock. Part of its name: it is not used again soon
    std::vector<Retired> retired;  // under lock
    std::atomic<UInt32> starts{0}; // odd: some sources of a start play already, others not yet
    std::atomic<bool> isClosed{false};
    Slices slices;

    // [audio]
    std::array<bool, mostSources> played{}; // in the slice before
    std::vector<Float32> sum, one;
    std::vector<Byte> block;
    SoundComponentData given{};
};

/// The place of a source; null for a name that is none. Under lock.
Mixer::Place* find(Mixer& mixer, SoundSource name);

/// Say what a mixer is to give; once. Errors: those of linearPCM. Throws std::bad_alloc.
OSErr setOutput(Mixer& mixer, const SoundComponentData& description);

/// No slice makes anything from here on. Waits for the one under way. [client]
void close(Mixer& mixer);

// ---- the selectors, as the platform's header describes them ----
// Thread [client]; they throw std::bad_alloc.

ComponentResult addSource(Mixer& mixer, SoundSource* out);
ComponentResult removeSource(Mixer& mixer, SoundSource name);
ComponentResult startSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult stopSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult pauseSources(Mixer& mixer, short count, SoundSource* names);
ComponentResult playBuffer(Mixer& mixer, SoundSource name, SoundParamBlockPtr block, long actions);
ComponentResult getInfo(Mixer& mixer, SoundSource name, OSType selector, void* place);
ComponentResult setInfo(Mixer& mixer, SoundSource name, OSType selector, void* info);

/// Thread [audio]: allocates nothing and waits for nobody, but for what completions do.
ComponentResult getSourceData(Mixer& mixer, SoundComponentDataPtr* out);

} // namespace kvxplatform::soundmanager
