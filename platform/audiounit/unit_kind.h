// A unit kind: a row of the table of units. A row spells out every column, with null for the common
// behaviour.
#pragma once

#include <AudioUnit/AudioUnit.h>

#include <cstddef>

namespace kvxplatform::audiounit {

struct Unit;
struct Property;
struct Parameter;

/// A table and its length; nullptr makes an empty table.
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

/// How many elements (buses) a scope has at first, and the limits between which a client may change that
/// number.
struct ElementCount {
    UInt32 initial, least, most;
};

/// The arguments of one render call, passed from function to function.
struct Slice {
    AudioUnitRenderActionFlags& flags;
    const AudioTimeStamp& time;
    UInt32 bus; ///< bus number of the output
    UInt32 frames;
    AudioBufferList& out;
};

/// The memory that receives the pulled frames of a unit's inputs.
enum class InputMemory {
    ofBus,      ///< each input has its own memory for a slice
    ofUnitKind, ///< the unit kind pulls into the slice's output or into private memory
};

/// The columns of a row. All column types differ, so a row with columns in the wrong order does not compile.
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

/// Whether an element accepts a format. Null: it accepts canonicalFormat() of any rate and channel count.
/// [any]
using TakesFormat = Function<class TakesFormatName, bool(const Unit&, AudioUnitScope, AudioUnitElement,
                                                         const AudioStreamBasicDescription&)>;

/// Make the unit's state. May throw.
/// [main]
using Open = Function<class OpenName, OSStatus(Unit&)>;

/// Detach the unit from the device that renders it and wait for the render call in progress. The caller holds
/// no lock.
/// [any]
using Close = Function<class CloseName, void(Unit&)>;

/// Free the unit's state. No thread uses the unit any more.
/// [any]
using Destroy = Function<class DestroyName, void(void* state)>;

/// Allocate memory for the formats, which do not change until uninitialize. The caller holds both locks. May
/// throw.
/// [main]
using Initialize = Function<class InitializeName, OSStatus(Unit&)>;

/// Undo initialize. The caller holds both locks, and no slice is being rendered.
/// [any]
using Uninitialize = Function<class UninitializeName, void(Unit&)>;

/// Reset the unit by replacing its filters, so that `reset` need not filter silence on a render thread. The
/// caller holds the `settings` lock, and the unit is initialised. May throw. Null, or a reset inside a render
/// call: the next slice calls `reset`.
/// [any]
using Renew = Function<class RenewName, OSStatus(Unit&)>;

/// Clear filters and delay lines.
/// [audio & rendering]
using Reset = Function<class ResetName, void(Unit&)>;

/// Render a slice. Null: only a device's I/O cycle renders the unit.
/// [audio & rendering]
using Render = Function<class RenderName, OSStatus(Unit&, Slice&)>;

/// Render a slice for a callback that the unit calls inside its own slice. Null: such a render call is
/// refused.
/// [audio & rendering]
using RenderInside = Function<class RenderInsideName, OSStatus(Unit&, Slice&)>;

/// Start or stop an output unit. Null: the unit is not an output unit. The caller holds the `lifeCycle` lock
/// or is inside the unit's own slice.
/// [any]
using Start = Function<class StartName, OSStatus(Unit&)>;
using Stop = Function<class StopName, OSStatus(Unit&)>;

} // namespace column

struct UnitKind {
    OSType type, subType;
    const char* name;
    column::Inputs inputs;
    column::Outputs outputs;
    Rows<Property> properties; ///< properties of the unit kind, searched before the common ones
    Rows<Parameter> parameters;
    InputMemory inputMemory;
    column::TakesFormat takesFormat;
    column::Open open;
    column::Close close;
    column::Destroy destroy;
    column::Initialize initialize;
    column::Uninitialize uninitialize;
    column::Renew renew;
    column::Reset reset;
    column::Render render;
    column::RenderInside renderInside;
    column::Start start;
    column::Stop stop;
};

} // namespace kvxplatform::audiounit
