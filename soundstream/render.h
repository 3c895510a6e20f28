// The render procedure that output units call, and the input procedure of its converter.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Fill `list` from the audible instance's mixer, through the converter; with silence if there is no
/// instance, while another thread renders the same state, and after the state is freed.
///
/// Shape    32-bit float, two channels, non-interleaved. Silence is written to exactly the first two buffers,
/// whatever
///          the list's count: a list of one must have memory for a second, empty buffer record.
/// Owner    `client` is the StreamState. It may be freed already.
/// Returns  noErr in every case.
/// [audio] Takes no lock.
OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list);

/// Point the first buffer of `list` at the mixer's samples. Without samples silence that buffer and leave
/// `packets`.
///
/// Shape    16-bit stereo, interleaved. A packet is a frame.
/// Owner    `globals` are the audible instance's; the samples stay the mixer's.
/// Returns  noErr in every case.
/// [audio & rendering]
OSStatus giveMixerSamples(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription** descriptions, void* globals);

} // namespace soundstream
