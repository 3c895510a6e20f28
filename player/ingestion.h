// Memory blocks in, buffers queued.
//
// Shape   offsetBytes and countBytes are bytes of each block; whether they stay inside it is the caller's
//         affair. What is left over behind the last whole sample is ignored. Two blocks are the first and
//         second channel of stereo, whatever NumberOfChannels says.
// Owner   samples are copied; the blocks stay the caller's.
// Thread  [main]. Conversion is done before the queue is locked.
// Returns false for a negative offset, a count below one sample, a full queue or no memory, and as each one
//         says.
#pragma once

#include "abi/host_values.h"
#include "player/player.h"

namespace player {

/// Convert integer samples of one block, as `bitSize` says, and queue them.
/// Returns false also for an unknown bitSize, 23, a rate below 1, or a channel count other than 1 and 2.
/// Errors  a nil block, or one without memory, raises "NilObjectException".
bool AddSomeAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                  HostInteger countBytes, HostInteger bitSize, bool clearBuffers);

/// The same for two blocks, interleaved.
bool AddSomeAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1, REALmemoryBlockStruct* block2,
                        HostInteger offsetBytes, HostInteger countBytes, HostInteger bitSize,
                        bool clearBuffers);

/// Queue 32-bit floats, bit for bit. Rate and channels are not looked at.
/// Returns false, and raises nothing, also for a nil block or one without memory.
bool AddSomeFloatAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                       HostInteger countBytes, bool clearBuffers);

/// The same for two blocks, interleaved.
bool AddSomeFloatAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1,
                             REALmemoryBlockStruct* block2, HostInteger offsetBytes, HostInteger countBytes,
                             bool clearBuffers);

} // namespace player
