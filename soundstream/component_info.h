// The component's GetInfo and SetInfo calls. The component has one format: 16-bit stereo at 44100 Hz.
//
// All functions: [client].
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

constexpr UnsignedFixed sampleRate44100 = 0xAC440000; // 44100 as a 16.16 fixed-point number
constexpr UInt32 channelCount = 2;
constexpr UInt32 sampleBits = 16;

/// Write the component's value for `selector` to `info`. Unknown selectors are forwarded to the mixer.
///
/// Shape   `info` points to the value, at any alignment, or to a SoundInfoList.
/// Owner   the caller disposes the handle in the list.
/// Errors  memFullErr: no memory for a list. paramErr: `info` is null.
ComponentResult GetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info);

/// Accept the component's fixed value for `selector` and refuse other values. Unknown selectors are forwarded
/// to the mixer.
///
/// Shape   `info` is the value itself; for the sample rate `info` points to the value.
ComponentResult SetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info);

} // namespace soundstream
