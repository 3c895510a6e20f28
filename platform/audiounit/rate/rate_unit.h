// What the rate units have in common.
//
// A voice is made when a unit that is initialised first wants one: by the thread that sets what makes it
// wanted, or by the one that initialises it; and the tape's room with it. One that stays neutral, or
// bypassed, has neither. Inside its own slice a unit makes none: what is set there is heard once a voice has
// been made for a setting from elsewhere.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/rate/rate_path.h"

namespace kvxplatform::audiounit {

/// What sets a kind of rate unit apart.
struct RateKind {
    Setting (*setting)(const Unit&); // Thread [any], [audio] too

    /// Which of its voices the unit wants, at a quality; and how it is made. Throws std::bad_alloc.
    int (*voiceFor)(const Unit&, UInt32 quality);
    std::unique_ptr<Voice> (*make)(const AudioStreamBasicDescription& format, int which);

    double (*tapeFrames)(Float64 sampleRate);
};

struct RateUnit {
    explicit RateUnit(const RateKind& k) : kind(k) {}

    const RateKind& kind;
    std::atomic<UInt32> quality{kRenderQuality_Max};
    VoiceBox box;
    std::atomic<int> made{-1};            // which voice was made last; written with settings
    const Voice* latest = nullptr;        // that one, with settings; it lives until another is made
    RatePath path;                        // [audio & in a slice], and while no slice runs; see there
    std::atomic<Float32> secondsAhead{0}; // by the last slice
};

inline OSStatus openRateUnit(Unit& unit, const RateKind& kind)
{
    unit.state = new RateUnit(kind);
    return noErr;
}

/// Make the voice that the unit wants, if it has not been made. Thread [any]; without locks.
void makeVoiceIfWanted(Unit& unit);

/// A setter for their parameters: stores the value.
OSStatus setRateParameter(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 index,
                          Float32 value);

} // namespace kvxplatform::audiounit
