// The sample formats of sound components, described as linear PCM.
#pragma once

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::soundmanager {

/// Translate the description of a sound into linear PCM.
/// Shape    1 or 2 channels of 8 or 16 bits, interleaved.
/// Errors   badFormat; siInvalidSampleSize; notEnoughHardwareErr for other channel counts;
///          siInvalidSampleRate for a rate of 0. `out` is unchanged then.
/// [any]
OSErr linearPCM(const SoundComponentData& description, AudioStreamBasicDescription& out);

/// The value in Hz of an unsigned 16.16 rate.
constexpr Float64 hertz(UnsignedFixed rate) { return rate / 65536.0; }

} // namespace kvxplatform::soundmanager
