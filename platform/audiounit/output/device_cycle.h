// An output unit's work in an I/O cycle of a device.
// All functions: [audio].
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// The unit's I/O procedure. `handle` is the unit's AudioUnit. After the unit has been closed, a call does
/// nothing.
OSStatus runCycle(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
                  const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
                  void* handle);

/// Render the device's input for the client's input callback, inside the unit's slice.
/// Errors  CannotDoInCurrentContext: the output is not output 1, or the cycle has no input;
///         TooManyFramesToProcess; paramErr: the buffer list does not fit the format.
OSStatus renderInput(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
