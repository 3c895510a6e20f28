// The way of a rate unit's sound: the input as it is, or a voice that plays it, or a fade from one to the
// other.
//
// A voice that is to be heard starts ahead of what is heard, at the input's own rate and pitch, and is fed a
// little more than its share in every slice until sound gets there. There the fade begins, between two things
// that sound the same; only then the voice takes on its setting. On the way back it returns to the input's
// rate and pitch first. Before the first frame there is nothing to fade from: a voice begins at its setting.
#pragma once

#include "platform/audiounit/rate/voice_box.h"

#include <vector>

namespace kvxplatform::audiounit {

/// How the sound is to be.
struct Wish {
    bool isVoiced = false; // else the input as it is
    Setting setting;
};

class RatePath {
public:
    /// Make ready for the input as it is. Thread [any & no slice runs]. Throws std::bad_alloc.
    void prepare(const AudioStreamBasicDescription& format);
    void release();

    /// Make ready for voices, with a tape of that many frames; nothing when it is. Thread [any], with
    /// settings, before a voice is handed over. Throws std::bad_alloc.
    void prepareForVoices(double tapeFrames);

    /// Begin anew with the next slice. Here and below: thread [audio & in a slice], nothing allocates.
    void reset() { isFresh = true; }

    OSStatus render(Unit& unit, Slice& slice, const Wish& wish, VoiceBox& box);

    /// Input frames that were pulled and are still to be heard.
    double framesAhead() const;

    /// Input frames for a frame out.
    double rate() const { return now ? target.rate : 1; }

private:
    void begin(Float64 time, const Wish& wish, VoiceBox& box);
    void takeVoice(VoiceBox& box);
    void plan(const Wish& wish);
    void startNext(Voice& voice, std::int64_t frame, const Setting& setting);
    void choose(const Wish& wish);
    UInt32 play(Reader& reader, Float32* const* out, UInt32 frames, VoiceBox& box);
    UInt32 playUntilFade(Reader& reader, Float32* const* out, UInt32 frames);
    UInt32 fade(Reader& reader, Float32* const* out, UInt32 frames, VoiceBox& box);
    void play(Voice* voice, Reader& reader, Float32* const* out, UInt32 frames);
    void playAsIs(Reader& reader, Float32* const* out, UInt32 frames);
    double position() const { return now ? now->position() : static_cast<double>(asIs); }

    InputTape tape;
    std::unique_ptr<Voice> voice, incoming; // the one in use, and one that shall replace it while it is heard
    Voice* now = nullptr;                   // null: the input as it is
    std::int64_t asIs = 0;                  // the next frame of the input as it is
    Setting target;                         // of the voice that is heard
    bool isFresh = true;

    enum class Change { none, ahead, fading };
    Change change = Change::none;
    Voice* next = nullptr;     // what a change leads to
    Setting nextTarget;        // of that voice, until the change is done
    std::int64_t changeAt = 0; // the input frame where it begins
    UInt32 faded = 0;

    std::vector<Float32> fading; // a block, channel after channel; with the tape's room
    std::vector<Float32*> fadingPlanes, planes, rest;
};

} // namespace kvxplatform::audiounit
