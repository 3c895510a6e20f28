// Where an input's sound comes from: a callback, or another unit's output.
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// Give an input a callback, or none (a null procedure). The slice that runs may still call the former one.
/// Thread [any], with settings.
void setCallback(Unit& unit, UInt32 bus, const AURenderCallbackStruct& callback);

/// Connect an input to another unit's output, whose format it takes on; a null unit disconnects.
///
/// Errors   InvalidElement: the other unit has no such output; FormatNotSupported: the input cannot take the
///          format (one that is initialised takes no other than it has); badComponentInstance: no such unit.
///
/// Thread   [any], without a lock.
OSStatus connect(Unit& unit, const AudioUnitConnection& connection);

/// Whether every connected input still agrees with the output that feeds it. With settings.
/// Errors  FormatNotSupported; NoConnection when the other unit has gone.
OSStatus checkConnections(Unit& unit);

/// Pull `frames` frames into the input's own memory, in its format, in pieces no larger than the feeding
/// unit's limit. `frames` is at most this unit's limit. What a source leaves out is silence, and so is what
/// follows a stop.
///
/// Returns  NoConnection without a source, else the source's status; the list is silent then.
///
/// Thread   [audio & in a slice].
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, AudioBufferList*& out);

/// The same for an input whose limit is its own: its memory has been made for that many frames.
OSStatus pull(Unit& unit, UInt32 bus, AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time,
              UInt32 frames, UInt32 limit, AudioBufferList*& out);

/// The same into frames [first, first + frames) of a list of the input's format that has memory, as a unit
/// does that renders in place. Errors leave silence there.
OSStatus pullInto(const AudioBufferList& list, UInt32 first, Unit& unit, UInt32 bus,
                  AudioUnitRenderActionFlags& flags, const AudioTimeStamp& time, UInt32 frames);

/// A time stamp `frames` frames of `sampleRate` later.
AudioTimeStamp later(const AudioTimeStamp& time, UInt32 frames, Float64 sampleRate,
                     Float64 hostTicksPerSecond);

} // namespace kvxplatform::audiounit
