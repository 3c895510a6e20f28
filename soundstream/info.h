// What the component tells of itself, and what it lets itself be told: fixed 16-bit stereo at 44100 Hz.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

constexpr UnsignedFixed sampleRate44100 = 0xAC440000; // 16.16
constexpr UInt32 channelCount = 2;
constexpr UInt32 sampleBits = 16;

/// Our answer, or the mixer's for what we do not know.
/// Shape   `info`: room for the value, or a SoundInfoList whose handle the caller disposes.
/// Errors  memFullErr without memory for a list; paramErr for no room.
ComponentResult GetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info);

/// Accept the fixed values, and nothing else; what we do not know goes to the mixer.
/// Shape   `info` is the value itself, but for the rate, to which it points.
ComponentResult SetInfo(QTSoundStreamGlobals* globals, SoundSource source, OSType selector, void* info);

} // namespace soundstream
