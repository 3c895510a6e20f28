// The render procedure that an output unit calls, and the input procedure of that procedure's converter.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Fill `list` from the audible instance's mixer, through the converter. Render silence if no instance is
/// audible, if another thread renders the same state, or if the state is freed. Locks no mutex.
///
/// Shape    32-bit float, two channels, non-interleaved. Silence is written to exactly the first two buffers,
///          whatever the buffer count, so a list with one buffer must have memory for a second, empty
///          AudioBuffer.
/// Owner    `client` is the StreamState, which may be freed already.
/// Returns  noErr in every case.
/// [audio]
OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list);

/// Point the first buffer of `list` to the mixer's samples and set `packets`. If the mixer has no samples,
/// silence that buffer and leave `packets` unchanged.
///
/// Shape    16-bit stereo, interleaved; one packet is one frame.
/// Owner    `globals` is the audible instance's QTSoundStreamGlobals; the mixer owns the samples.
/// Returns  noErr in every case.
/// [audio & rendering]
OSStatus giveMixerSamples(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription** descriptions, void* globals);

} // namespace soundstream
