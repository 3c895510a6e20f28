// The sample formats of sound components, as linear PCM.
#pragma once

#include <Carbon/Carbon.h>
#include <CoreAudio/CoreAudio.h>

namespace kvxplatform::soundmanager {

/// What a description means: one or two channels of 8 or 16 bits, interleaved. `noErr`, or what is wrong with
/// it: badFormat, siInvalidSampleSize, notEnoughHardwareErr for channels, siInvalidSampleRate for a rate of
/// 0. Thread [any].
OSErr linearPCM(const SoundComponentData& description, AudioStreamBasicDescription& out);

/// Hz of an unsigned 16.16 rate.
constexpr Float64 hertz(UnsignedFixed rate) { return rate / 65536.0; }

} // namespace kvxplatform::soundmanager
