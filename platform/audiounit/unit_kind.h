// What a kind of unit is: a row of the table of units. A row spells out every column, with null for the
// common behaviour.
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <cstddef>

namespace kvxplatform::audiounit {

struct Unit;
struct Property;
struct Parameter;

/// A table with its length; nullptr for an empty one.
template <class T>
struct Rows {
    constexpr Rows(std::nullptr_t) {}
    template <std::size_t n>
    constexpr Rows(const T (&rows)[n]) : first(rows), count(n)
    {
    }
    constexpr const T* begin() const { return first; }
    constexpr const T* end() const { return first + count; }
    const T* first = nullptr;
    std::size_t count = 0;
};

/// How many elements (buses) a scope has, and between which limits a client may change their count.
struct ElementCount {
    UInt32 initial, least, most;
};

/// One slice on its way through a unit.
struct Slice {
    AudioUnitRenderActionFlags& flags;
    const AudioTimeStamp& time;
    UInt32 bus; ///< of the output
    UInt32 frames;
    AudioBufferList& out;
};

/// Where a unit's inputs are pulled to.
enum class InputMemory {
    ofBus,      ///< each input has memory for a slice
    ofUnitKind, ///< the kind pulls into the slice or into its own memory
};

/// The columns of a row. Their types differ, so a row in another order does not compile.
namespace column {

template <class Name, class Signature>
struct Function {
    constexpr explicit Function(Signature* f) : function(f) {}
    constexpr explicit operator bool() const { return function != nullptr; }
    template <class... Arguments>
    auto operator()(Arguments&&... arguments) const
    {
        return function(static_cast<Arguments&&>(arguments)...);
    }
    Signature* function;
};

struct Inputs {
    ElementCount count;
};
struct Outputs {
    ElementCount count;
};

/// Whether an element may have a format. Null: canonicalFormat of any rate and channel count.
/// [any]
using TakesFormat = Function<class TakesFormatName, bool(const Unit&, AudioUnitScope, AudioUnitElement,
                                                         const AudioStreamBasicDescription&)>;

/// Make the unit's state. May throw.
/// [main]
using Open = Function<class OpenName, OSStatus(Unit&)>;

/// Stop the callers of the unit and wait for them. Called without a lock.
/// [any]
using Close = Function<class CloseName, void(Unit&)>;

/// Free the state: no thread uses the unit any more.
/// [any]
using Destroy = Function<class DestroyName, void(void* state)>;

/// Allocate for the formats, which stay as they are until uninitialize. Called with both locks. May throw.
/// [main]
using Initialize = Function<class InitializeName, OSStatus(Unit&)>;

/// Undo initialize. Called with both locks, while no slice is rendered.
/// [any]
using Uninitialize = Function<class UninitializeName, void(Unit&)>;

/// Clear filters and delay lines.
/// [audio & rendering]
using Reset = Function<class ResetName, void(Unit&)>;

/// Render a slice. Null: only a device's I/O cycle renders the unit.
/// [audio & rendering]
using Render = Function<class RenderName, OSStatus(Unit&, Slice&)>;

/// Render a slice for a callback that the unit calls inside its own slice. Null: refused.
/// [audio & rendering]
using RenderInside = Function<class RenderInsideName, OSStatus(Unit&, Slice&)>;

/// Start or stop an output unit. Null: not an output unit. Called with the lifeCycle lock, or inside the
/// unit's own slice.
/// [any]
using Start = Function<class StartName, OSStatus(Unit&)>;
using Stop = Function<class StopName, OSStatus(Unit&)>;

} // namespace column

struct UnitKind {
    OSType type, subType;
    const char* name;
    column::Inputs inputs;
    column::Outputs outputs;
    Rows<Property> properties; ///< searched before the common ones
    Rows<Parameter> parameters;
    InputMemory inputMemory;
    column::TakesFormat takesFormat;
    column::Open open;
    column::Close close;
    column::Destroy destroy;
    column::Initialize initialize;
    column::Uninitialize uninitialize;
    column::Reset reset;
    column::Render render;
    column::RenderInside renderInside;
    column::Start start;
    column::Stop stop;
};

} // namespace kvxplatform::audiounit
