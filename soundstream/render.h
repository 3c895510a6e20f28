// The render procedure that output units call, and the input procedure of its converter.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Fill `list` from the audible instance's mixer, through the converter. Render silence without an instance,
/// while another thread renders the same state, and after the state is freed. Takes no lock.
///
/// Shape    32-bit float, two channels, non-interleaved. Silence goes to exactly the first two buffers, for
/// any
///          buffer count: a list of one must have memory for a second, empty buffer record.
/// Owner    `client` is the StreamState; it may be freed already.
/// Returns  noErr in every case.
/// [audio]
OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list);

/// Point the first buffer of `list` to the mixer's samples. Without samples, silence that buffer and keep
/// `packets`.
///
/// Shape    16-bit stereo, interleaved; a packet is a frame.
/// Owner    `globals` is the audible instance's storage; the samples stay the mixer's.
/// Returns  noErr in every case.
/// [audio & rendering]
OSStatus giveMixerSamples(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription** descriptions, void* globals);

} // namespace soundstream
