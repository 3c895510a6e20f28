// The records of an open audio unit.
//
// Locks, in this order:
//
// - `lifeCycle` is held while the unit is initialised, uninitialised, started, stopped or moved to another
//   device. Its holder may wait for a slice to end, so a render thread never takes it.
//
// - `settings` is held while a property is read or written, for a short time.
//
// A slice reads atomics, published records, and fields that do not change while the unit is initialised.
#pragma once

#include "platform/audiounit/unit_kind.h"
#include "platform/pcm/buffers.h"
#include "platform/pcm/stream_format.h"
#include "platform/support/published.h"

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

namespace kvxplatform::audiounit {

/// What an input pulls its frames from.
struct Source {
    AURenderCallbackStruct callback; ///< used when the connection names no unit
    AudioUnitConnection connection;
};

/// One bus.
struct Element {
    AudioStreamBasicDescription format{}; ///< under the settings lock; does not change while initialised
    std::atomic<UInt32> channels{0};      ///< of the format, for readers without a lock
    Published<const Source> source;       ///< inputs only
    pcm::Buffers buffers;                 ///< allocated by initialize [audio & rendering]
    pcm::ListStorage partialList;         ///< inputs only: the list for a part of a slice [audio & rendering]
};

struct Scope {
    std::unique_ptr<Element[]> elements; ///< as many as the limit, so that none ever moves
    std::atomic<UInt32> count{0};
    std::unique_ptr<std::atomic<Float32>[]> values; ///< [element * parameters of the scope + parameter]
};

struct Unit {
    explicit Unit(const UnitKind& k) : kind(k) {}
    Unit(const Unit&) = delete;
    ~Unit()
    {
        if (state && kind.destroy) kind.destroy(state);
    }

    const UnitKind& kind;
    AudioUnit self = nullptr;
    void* state = nullptr; ///< the kind's record

    std::mutex lifeCycle;
    std::mutex settings;

    Scope scopes[3]; ///< global, input, output

    std::atomic<UInt32> sliceLimit{1156}; ///< frames
    std::atomic<bool> isInitialized{false};
    std::atomic<bool> isResetPending{false};
    std::atomic<bool> isBypassed{false}; ///< for kinds that have the property
    std::atomic<OSStatus> lastRenderError{noErr};
    std::atomic<bool> isStopping{false}; ///< stopped inside the present slice: sources are not called again
    RenderScope scope;                   ///< of the slice in progress
    Float64 hostTicksPerSecond = 0;      ///< does not change once open

    Scope& inputs() { return scopes[kAudioUnitScope_Input]; }
    Scope& outputs() { return scopes[kAudioUnitScope_Output]; }
    Element& input(UInt32 bus) { return inputs().elements[bus]; }
    Element& output(UInt32 bus) { return outputs().elements[bus]; }
};

constexpr UInt32 scopeCount = 3;

/// Whether the unit has that element.
/// [any]
inline bool hasElement(const Unit& unit, AudioUnitScope scope, AudioUnitElement element)
{
    return scope < scopeCount && element < unit.scopes[scope].count.load(std::memory_order_relaxed);
}

template <class State>
State& stateOf(Unit& unit)
{
    return *static_cast<State*>(unit.state);
}
template <class State>
const State& stateOf(const Unit& unit)
{
    return *static_cast<const State*>(unit.state);
}

} // namespace kvxplatform::audiounit
