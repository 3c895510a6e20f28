// The render thread's side: what the audio unit pulls.
#pragma once

#include "soundstream/stream_state.h"

namespace soundstream {

/// Fill `list` from the open instance's mixer, through the converter; silence without one. `client` is the
/// StreamState, which may be gone: silence, too.
/// Shape   32-bit float, two channels apart. Silence goes to exactly the first two buffers, whatever the
///         count: a list of one must have memory for a second, empty buffer record.
/// Thread  [audio], one at a time; a second unit that pulls meanwhile gets silence. Takes no lock.
/// Returns 0, whatever happens.
OSStatus renderFromMixer(void* client, AudioUnitRenderActionFlags* flags, const AudioTimeStamp* time,
                         UInt32 bus, UInt32 frames, AudioBufferList* list);

/// Give the converter the mixer's samples, in place; `globals` are the open instance's. Without samples the
/// first buffer is silenced and the count stays as it was asked.
/// Thread  [audio].
OSStatus giveMixerSamples(AudioConverterRef converter, UInt32* packets, AudioBufferList* list,
                          AudioStreamPacketDescription** descriptions, void* globals);

} // namespace soundstream
