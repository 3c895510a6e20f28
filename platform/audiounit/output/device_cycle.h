// An output unit's part of a device's I/O cycle.
// All functions: [audio].
#pragma once

#include "platform/audiounit/unit.h"

namespace kvxplatform::audiounit {

/// The unit's I/O procedure. `handle` is the unit's AudioUnit: a call after the unit was closed does nothing.
OSStatus runCycle(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
                  const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
                  void* handle);

/// Render the device's input for the client's input callback, inside the unit's slice.
/// Errors  CannotDoInCurrentContext: not output 1, or no input; TooManyFramesToProcess; paramErr: the list
/// does
///         not fit the format.
OSStatus renderInput(Unit& unit, Slice& slice);

} // namespace kvxplatform::audiounit
