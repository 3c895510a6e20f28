// The source of an input: a callback, or another unit's output.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Set an input's callback; a null procedure removes the callback. The slice in progress may still call the
/// previous callback. The caller holds the `settings` lock. Throws std::bad_alloc.
/// [any]
void setCallback(Unit& unit, UInt32 bus, const AURenderCallbackStruct& callback);

/// Connect an input to another unit's output and give the input the format of that output; a null unit
/// disconnects the input. The caller holds no lock.
/// Errors  InvalidElement: the other unit has no such output; FormatNotSupported: the input refuses the
///         format, or the unit is initialised and would have to change its format; badComponentInstance: no
///         such unit.
/// [any]
OSStatus connect(Unit& unit, const AudioUnitConnection& connection);

/// Check that every connected input has the format of the output that feeds it. The caller does not hold the
/// `settings` lock.
/// Errors  FormatNotSupported: the formats differ; NoConnection: the other unit has been closed.
/// [main]
OSStatus checkConnections(Unit& unit);

/// Pull `frames` frames, at most the unit's slice limit, into the input's memory.
/// Shape    the input's format. Frames that the source does not write are silent, and so are all frames after
///          a stop. One call of the source requests no more frames than the slice limit of the unit that
///          feeds the input.
/// Owner    the unit owns the buffer list and its memory; both stay valid until the next pull of this input.
/// Errors   NoConnection: the input has no source; otherwise the status of the source. After an error the
///          frames are silent.
/// [audio & rendering]
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, AudioBufferList*& out);

/// Pull as the other overload does, but for an input with memory for `limit` frames instead of the slice
/// limit.
/// [audio & rendering]
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, UInt32 limit, AudioBufferList*& out);

/// Pull into frames [first, first + frames) of a buffer list with memory, in the input's format.
/// [audio & rendering]
OSStatus pullInto(const AudioBufferList& list, UInt32 first, Unit& unit, UInt32 bus,
                  AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time, UInt32 frames);

/// Render a bypassed unit: pull input 0 unchanged into the output of the slice.
/// Errors  FormatNotSupported: input and output differ in format.
/// [audio & rendering]
OSStatus passThrough(Unit& unit, Slice& slice);

/// Returns  the time stamp `frames` frames after `time` at `sampleRate`.
/// [any]
AudioTimeStamp later(const AudioTimeStamp& time, UInt32 frames, Float64 sampleRate,
                     Float64 hostTicksPerSecond);

} // namespace kvxplatform::audiounit
