// The code that the rate units share.
//
// The thread that sets a value or initialises the unit makes an engine, and with it the memory of the input
// history, as soon as a setting of the initialised unit needs one. A render call of the unit makes no engine.
// A value set inside a render call takes effect after another thread has made the engine.
#pragma once

#include "platform/audiounit/parameter.h"
#include "platform/audiounit/property.h"
#include "platform/audiounit/rate/rate_path.h"

namespace kvxplatform::audiounit {

/// The functions in which the rate units differ.
struct RateKind {
    /// Returns  the setting that a unit's parameters request.
    /// [any]
    Setting (*setting)(const Unit&);

    /// Returns  the type of engine that the unit needs at a render quality, an argument of make().
    /// [any]
    int (*engineType)(const Unit&, UInt32 quality);

    /// Make an engine. Throws std::bad_alloc.
    /// [any]
    std::unique_ptr<RateEngine> (*make)(const AudioStreamBasicDescription& format, int engineType);

    /// Returns  the number of frames of input history that the engines need.
    double (*historyFrames)(Float64 sampleRate);
};

struct RateUnit {
    explicit RateUnit(const RateKind& k) : kind(k) {}

    const RateKind& kind;
    std::atomic<UInt32> quality{kRenderQuality_Max};
    /// The type of the engine made last. Written with the `settings` lock held.
    std::atomic<int> engineType{-1};
    RatePath path;
    std::atomic<Float32> measuredLatency{0}; ///< latency in seconds, measured by the last slice
};

/// Make the state of a rate unit. Throws std::bad_alloc.
inline OSStatus openRateUnit(Unit& unit, const RateKind& kind)
{
    unit.state = new RateUnit(kind);
    return noErr;
}

/// Returns  the stored value of a parameter in the global scope.
/// [any]
inline Float32 globalValue(const Unit& unit, AudioUnitParameterID id)
{
    return parameterValue(unit, id, kAudioUnitScope_Global, 0);
}

/// Set a parameter of a rate unit: store the value and make the engine that the value needs. The caller holds
/// no lock. Throws std::bad_alloc.
/// [any]
OSStatus setRateParameter(Unit& unit, const Parameter& row, AudioUnitElement element, UInt32 index,
                          Float32 value);

} // namespace kvxplatform::audiounit
