// An output unit's part of a device's cycle.
#pragma once

#include "platform/audiounit/output/device_output.h"

namespace kvxplatform::audiounit {

/// The unit's procedure. `handle` is the unit's, so that a call that comes after the unit has gone finds
/// nobody. Thread [audio].
OSStatus cycle(AudioDeviceID device, const AudioTimeStamp* now, const AudioBufferList* input,
               const AudioTimeStamp* inputTime, AudioBufferList* output, const AudioTimeStamp* outputTime,
               void* handle);

} // namespace kvxplatform::audiounit
