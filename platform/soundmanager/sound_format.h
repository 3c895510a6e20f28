// The sample formats of sound components, described as linear PCM.
#pragma once

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::soundmanager {

/// Translate the description of a sound into linear PCM.
/// Shape    1 or 2 channels of 8 or 16 bits, interleaved.
/// Errors   badFormat; siInvalidSampleSize; notEnoughHardwareErr for other channel counts;
///          siInvalidSampleRate for a rate of 0. After an error `out` is unchanged.
/// [any]
OSErr linearPCM(const SoundComponentData& description, AudioStreamBasicDescription& out);

/// Convert a sample rate from unsigned 16.16 fixed-point to Hz.
constexpr Float64 hertz(UnsignedFixed rate) { return rate / 65536.0; }

} // namespace kvxplatform::soundmanager
