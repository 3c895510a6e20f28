// What an input pulls its frames from: a callback, or another unit's output.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Set an input's callback; a null procedure removes it. The slice in progress may still call the former one.
/// Throws std::bad_alloc. Called with the settings lock.
/// [any]
void setCallback(Unit& unit, UInt32 bus, const AURenderCallbackStruct& callback);

/// Connect an input to another unit's output and give the input that format; a null unit disconnects. Called
/// without a lock.
/// Errors  InvalidElement: the other unit has no such output; FormatNotSupported: the input cannot have the
///         format (an initialised one keeps its own); badComponentInstance: no such unit.
/// [any]
OSStatus connect(Unit& unit, const AudioUnitConnection& connection);

/// Check that every connected input has the format of the output that feeds it. Called without the settings
/// lock.
/// Errors  FormatNotSupported; NoConnection when the other unit has been closed.
/// [main]
OSStatus checkConnections(Unit& unit);

/// Pull `frames` frames, at most the unit's slice limit, into the input's memory.
/// Shape    the input's format. Frames that the source does not write are silent, and all after a stop.
///          The source is called for no more frames at once than the feeding unit's slice limit.
/// Owner    the list and its memory are the unit's, until the next pull of this input.
/// Errors   NoConnection without a source; else the source's status. The list is silent then.
/// [audio & rendering]
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, AudioBufferList*& out);

/// The same for an input with memory for `limit` frames.
/// [audio & rendering]
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, UInt32 limit, AudioBufferList*& out);

/// The same into frames [first, first + frames) of a list of the input's format, which has memory.
/// [audio & rendering]
OSStatus pullInto(const AudioBufferList& list, UInt32 first, Unit& unit, UInt32 bus,
                  AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time, UInt32 frames);

/// Render a bypassed unit: pull input 0 unchanged into the slice.
/// Errors  FormatNotSupported where input and output differ in format.
/// [audio & rendering]
OSStatus passThrough(Unit& unit, Slice& slice);

/// A time stamp `frames` frames of `sampleRate` later.
/// [any]
AudioTimeStamp later(const AudioTimeStamp& time, UInt32 frames, Float64 sampleRate,
                     Float64 hostTicksPerSecond);

} // namespace kvxplatform::audiounit
