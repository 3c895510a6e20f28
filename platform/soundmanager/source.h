// One source of a mixer: the buffers it was given, brought to the mixer's rate and channels.
//
// Two sides: clients give buffers and orders, one at a time (the mixer's lock); the audio thread uses the
// buffers up, and waits for nobody. Between them stand counters: entries [used, given) wait, those below
// `thrownAway` are skipped.
#pragma once

#include "platform/audiounit/rate_converter.h"

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

    /// Forget what waits; no completion is called for it. The audio thread may still use the buffers until it
    /// has left the slice it is in. [client]
    void throwAway() { thrownAway = given.load(); }

    /// Up to `frames` frames into `out`; fewer when the buffers are used up. Calls the completion of each
    /// buffer that ends. [audio]
    UInt32 render(Float32* out, UInt32 frames);

    std::atomic<bool> isPlaying{false};
    std::atomic<UInt32> volume{kFullVolume << 16 | kFullVolume}; // right above left, 8.8
    std::atomic<UnsignedFixed> rateMultiplier{0x10000};          // of buffers yet to come

private:
    /// Sound of one rate on its way, buffer after buffer.
    struct Run {
        audiounit::RateConverter converter;
        Float64 rate = 0;           // Hz, of the input
        Float64 framesPerFrame = 1; // out for one in
        UInt32 lastEntry = 0;       // the last that uses it; [client]
        // [audio]
        Float64 owed = 0;     // frames out that the input so far is worth, less those made
        bool isUnder = false; // it has a past
    };

    struct Entry {
        SoundParamBlockPtr block;
        AudioStreamBasicDescription format;
        const Byte* samples;
        UInt32 frames;
        Run* run;            // null: at the mixer's own rate
        Float32 left, right; // gains of the buffer
    };

    Run* runFor(Float64 rate);
    Entry* front();
    void finish(Entry& entry);
    UInt32 take(const Entry& entry, UInt32 frames, Float32* out);
    UInt32 convert(Entry& entry, Float32* out, UInt32 room);
    UInt32 drain(Float32* out, UInt32 room);

    static constexpr UInt32 pieceFrames = 256;

    const MixerForm form;
    std::array<Entry, capacity> entries;
    std::atomic<UInt32> given{0}, used{0}, thrownAway{0};
    std::vector<std::unique_ptr<Run>> runs; // [client]; the newest last
    // [audio]
    UInt32 framesTaken = 0; // of the front entry
    UInt32 entryBegun = 0;  // which that is
    Run* active = nullptr;
    std::array<Float32, pieceFrames * 2> decoded, piece;
};

} // namespace kvxplatform::soundmanager
