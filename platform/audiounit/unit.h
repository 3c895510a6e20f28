// The data of an open audio unit.
//
// Locks, in the order in which they are taken:
//
// - `lifeCycle` is held while the unit is initialised, uninitialised, started, stopped or moved to another
//   device. The holder may wait for a slice to end, so a render thread never takes this lock.
//
// - `settings` is held for a short time while a property is read or written.
//
// A slice reads atomics, published objects, and fields that do not change while the unit is initialised.
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

/// The source of an input: a callback or another unit's output.
struct Source {
    AURenderCallbackStruct callback; ///< callback that is used when the connection names no unit
    AudioUnitConnection connection;
};

/// An input or output bus, or the global element.
struct Element {
    /// The stream format, guarded by the `settings` lock. Does not change while the unit is initialised.
    AudioStreamBasicDescription format{};
    /// The channel count of `format`, for readers without a lock.
    std::atomic<UInt32> channels{0};
    Published<const Source> source; ///< source of the bus; used by inputs only
    /// The memory for a slice, allocated by initialize().
    /// [audio & rendering]
    pcm::Buffers buffers;
    /// The buffer list for a part of a slice; used by inputs only.
    /// [audio & rendering]
    pcm::ListStorage partialList;
};

struct Scope {
    /// The elements: as many as the scope can have, so that a change of the count moves none.
    std::unique_ptr<Element[]> elements;
    std::atomic<UInt32> count{0};
    /// The parameter values: values[element * parameters of the scope + parameter].
    std::unique_ptr<std::atomic<Float32>[]> values;
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
    void* state = nullptr; ///< data of this kind of unit, allocated by the kind's `open`

    std::mutex lifeCycle;
    std::mutex settings;

    Scope scopes[3]; ///< the global, the input and the output scope

    std::atomic<UInt32> sliceLimit{1156}; ///< largest number of frames in a slice
    std::atomic<bool> isInitialized{false};
    std::atomic<bool> isResetPending{false};
    std::atomic<bool> isBypassed{false}; ///< bypass switch of the unit kinds that have the bypass property
    std::atomic<OSStatus> lastRenderError{noErr};
    /// Whether the unit was stopped inside the present slice, so that its sources are not called again.
    std::atomic<bool> isStopping{false};
    RenderScope scope;              ///< render scope of the unit's render calls
    Float64 hostTicksPerSecond = 0; ///< ticks per second of the host clock, constant after open()

    Scope& inputs() { return scopes[kAudioUnitScope_Input]; }
    Scope& outputs() { return scopes[kAudioUnitScope_Output]; }
    Element& input(UInt32 bus) { return inputs().elements[bus]; }
    Element& output(UInt32 bus) { return outputs().elements[bus]; }
};

constexpr UInt32 scopeCount = 3;

/// Whether the unit has the element in the scope.
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
