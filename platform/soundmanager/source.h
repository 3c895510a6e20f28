// One source of a mixer: the buffers it was given, brought to the mixer's rate and channels.
//
// Two sides: clients give buffers, one at a time (the mixer's lock); the audio thread uses the buffers up,
// and waits for nobody. Between them stand two counters: the entries [used, given) wait. They wrap.
#pragma once

#include "platform/pcm/rate_converter.h"

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

#include <array>
#include <atomic>
#include <memory>
#include <vector>

namespace kvxplatform::soundmanager {

/// What a mixer gives: interleaved, 32-bit float before it is written out.
struct MixerForm {
    Float64 sampleRate;
    UInt32 channels; // 1 or 2
};

class Source {
public:
    static constexpr UInt32 capacity = 64; // buffers that wait

    explicit Source(const MixerForm& form) : form(form) {}
    Source(const Source&) = delete;

    /// Queue a buffer behind those that wait.
    /// Errors  of its format (see linearPCM); siInvalidSampleRate: too far from the mixer's; queueFull;
    ///         paramErr: no samples. Throws std::bad_alloc.
    /// Thread  [client].
    OSErr give(SoundParamBlockPtr block);

    /// Whether it was ever given one. [client]
    bool hasBuffers() const { return given != 0; }

    /// A silent source with the same settings, to take this one's place. Throws std::bad_alloc. [client]
    std::unique_ptr<Source> withoutBuffers() const;

    /// Whatever is still waiting is not heard, and nobody is told. [client]; also inside of render.
    void end() { hasEnded = true; }

    /// Up to `frames` frames into `out`; fewer when the buffers are used up. Calls the completion of each
    /// buffer that ends. [audio]
    UInt32 render(Float32* out, UInt32 frames);

    std::atomic<bool> isPlaying{false};
    std::atomic<UInt32> volume{kFullVolume << 16 | kFullVolume}; // right above left, 8.8
    std::atomic<UInt32> rateMultiplier{0x10000};                 // 16.16; of buffers yet to come

private:
    /// Sound of one rate on its way, buffer after buffer.
    struct Run {
        pcm::RateConverter converter;
        Float64 rate = 0;           // Hz, of the input
        Float64 framesPerFrame = 1; // out for one in
        UInt32 lastEntry = 0;       // the last that uses it; [client]
        // [audio]
        Float64 owed = 0;      // frames out that the input so far is worth, less those made
        bool isUnder = false;  // it has a past
        bool isEnding = false; // silence was put behind its input: nothing may follow but its own tail
    };

    struct Entry {
        SoundParamBlockPtr block;
        AudioStreamBasicDescription format;
        const Byte* samples;
        UInt32 frames;
        Run* run;            // null: at the mixer's own rate
        Float32 left, right; // gains of the buffer
    };

    static void setBlock(Entry& entry, SoundParamBlockPtr block);
    Run* runFor(Float64 rate);
    void finish(Entry& entry);
    UInt32 take(const Entry& entry, UInt32 frames, Float32* out);
    UInt32 convert(const Entry& entry, Run& run, Float32* out, UInt32 room);
    UInt32 drain(Run& run, Float32* out, UInt32 room);

    static constexpr UInt32 pieceFrames = 256;

    const MixerForm form;
    std::array<Entry, capacity> entries;
    std::atomic<UInt32> given{0}, used{0};
    std::atomic<bool> hasEnded{false};
    std::vector<std::unique_ptr<Run>> runs; // [client]; the newest last
    // [audio]
    std::atomic<Run*> active{nullptr}; // read by clients
    UInt32 framesTaken = 0;            // of the front entry
    std::array<Float32, pieceFrames * 2> decoded, piece;
};

} // namespace kvxplatform::soundmanager
