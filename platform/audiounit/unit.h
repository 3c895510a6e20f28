// The records of audio units. A unit is what its kind's row says it is; the functions over it are plain.
//
// Two locks, and what needs none:
//
// - `lifeCycle` is held while a unit is initialised, uninitialised, started, stopped or moved to another
//   device. Its holder may wait for a slice to end, so an audio thread never waits for it.
//
// - `settings` is held for a moment by whoever reads or writes what a property shows. Taken after the other.
//
// - What a slice reads is an atomic, or published, or unchanged while the unit is initialised.
#pragma once

#include "platform/pcm/buffers.h"
#include "platform/pcm/stream_format.h"
#include "platform/support/published.h"

#include <AudioUnit/AudioUnit.h>
#include <Carbon/Carbon.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace kvxplatform::audiounit {

struct Unit;
struct Property;
struct Parameter;

/// A table of facts.
template <class T>
struct Rows {
    constexpr Rows() = default;
    template <std::size_t n>
    constexpr Rows(const T (&rows)[n]) : first(rows), count(n)
    {
    }
    constexpr const T* begin() const { return first; }
    constexpr const T* end() const { return first + count; }
    const T* first = nullptr;
    std::size_t count = 0;
};

/// How many elements (buses) a scope has. It can be changed where the limits differ.
struct ElementCount {
    UInt32 initial, least, most;
};

/// A slice on its way through a unit.
struct Slice {
    AudioUnitRenderActionFlags& flags;
    const AudioTimeStamp& time;
    UInt32 bus; // of the output
    UInt32 frames;
    AudioBufferList& out;
};

/// What a kind of unit is. What a row does not name is the common behaviour.
struct UnitKind {
    OSType type = 0, subType = 0;
    const char* name = nullptr;
    ElementCount inputs = {1, 1, 1}, outputs = {1, 1, 1};
    Rows<Property> properties; // before the common ones
    Rows<Parameter> parameters;

    /// Whether a format may be set there. Null: canonicalFormat of any rate and channels.
    bool (*takesFormat)(const Unit&, AudioUnitScope, AudioUnitElement,
                        const AudioStreamBasicDescription&) = nullptr;

    OSStatus (*open)(Unit&) = nullptr;           // makes its state
    void (*close)(Unit&) = nullptr;              // stops what calls back, waits for it. With no lock
    void (*destroy)(void* state) = nullptr;      // nobody uses the unit any more
    OSStatus (*initialize)(Unit&) = nullptr;     // formats are settled: allocate. With both locks
    void (*uninitialize)(Unit&) = nullptr;       // undo it; no slice runs. With both locks
    void (*reset)(Unit&) = nullptr;              // forget the past. Thread [audio & in a slice]
    OSStatus (*render)(Unit&, Slice&) = nullptr; // null: nobody but the device pulls

    /// A slice that a callback of the unit asks for inside the unit's own. Null: refused.
    OSStatus (*renderInside)(Unit&, Slice&) = nullptr;

    /// Output units only. With `lifeCycle`; inside a slice of the unit without.
    OSStatus (*start)(Unit&) = nullptr;
    OSStatus (*stop)(Unit&) = nullptr;

    /// Inputs are pulled into the slice or into memory of the kind's own: they are given none.
    bool rendersInPlace = false;
};

/// Where an input's sound comes from.
struct Source {
    AURenderCallbackStruct callback; // or
    AudioUnitConnection connection;  // when its unit is not null
};

/// One bus.
struct Element {
    AudioStreamBasicDescription format{}; // under settings; fixed while initialised
    std::atomic<UInt32> channels{0};      // the format's, for who asks without a lock
    Published<const Source> source;       // inputs only
    pcm::Buffers buffers;                 // made by initialize; [audio & in a slice]
    pcm::ListStorage piece;               // likewise, inputs only: a list for part of a slice
};

struct Scope {
    std::unique_ptr<Element[]> elements; // as many as there can ever be, so that none moves
    std::atomic<UInt32> count{0};
    std::unique_ptr<std::atomic<Float32>[]> values; // of the parameters: elements x parameters of the scope
};

/// Who is told of each slice.
struct Notify {
    AURenderCallback function;
    void* context;
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
    void* state = nullptr; // the kind's own record

    std::mutex lifeCycle;
    std::mutex settings;

    Scope scopes[3]; // global, input, output
    Published<const std::vector<Notify>> notifies;

    std::atomic<UInt32> sliceLimit{1156};
    std::atomic<bool> isInitialized{false};
    std::atomic<bool> isResetWanted{false};
    std::atomic<bool> isBypassed{false}; // for kinds that have the property and look here in their render
    std::atomic<OSStatus> lastRenderError{noErr};
    std::atomic<bool> isEnding{false}; // stopped inside the slice that runs: its sources are asked no more
    RenderScope scope;                 // of the slice that runs
    Float64 hostTicksPerSecond = 0;    // fixed once open

    Scope& inputs() { return scopes[kAudioUnitScope_Input]; }
    Scope& outputs() { return scopes[kAudioUnitScope_Output]; }
    Element& input(UInt32 bus) { return inputs().elements[bus]; }
    Element& output(UInt32 bus) { return outputs().elements[bus]; }
};

constexpr UInt32 scopeCount = 3;

/// Whether the unit has such an element. Thread [any].
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
