// What the rate units have in common.
//
// An engine, and the history memory with it, is made when a setting of an initialised unit first needs it: by
// the thread that sets the value or initialises the unit. A render call of the unit makes none: a value set
// there takes effect once another thread has made the engine.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/rate/rate_path.h"

namespace kvxplatform::audiounit {

/// What differs between rate units.
struct RateKind {
    /// [any]
    Setting (*setting)(const Unit&);

    /// The type of engine that the unit needs at a render quality: an argument of make().
    /// [any]
    int (*engineType)(const Unit&, UInt32 quality);

    /// Throws std::bad_alloc.
    /// [any]
    std::unique_ptr<RateEngine> (*make)(const AudioStreamBasicDescription& format, int engineType);

    /// Frames of input history that the engines need.
    double (*historyFrames)(Float64 sampleRate);
};

struct RateUnit {
    explicit RateUnit(const RateKind& k) : kind(k) {}

    const RateKind& kind;
    std::atomic<UInt32> quality{kRenderQuality_Max};
    std::atomic<int> engineType{-1}; ///< of the engine made last; written with settings
    RatePath path;
    std::atomic<Float32> measuredLatency{0}; ///< seconds, by the last slice
};

/// Give the unit its state. Throws std::bad_alloc.
inline OSStatus openRateUnit(Unit& unit, const RateKind& kind)
{
    unit.state = new RateUnit(kind);
    return noErr;
}

/// The stored value of a global parameter.
/// [any]
inline Float32 globalValue(const Unit& unit, AudioUnitParameterID id)
{
    return parameterValue(unit, id, kAudioUnitScope_Global, 0);
}

/// Set a parameter of a rate unit: store the value and make the engine that it needs. Throws std::bad_alloc.
/// [any], without locks
OSStatus setRateParameter(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 index,
                          Float32 value);

} // namespace kvxplatform::audiounit
