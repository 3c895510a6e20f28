// Memory blocks in, buffers queued.
//
// Shape   offsetBytes and countBytes are bytes of each block; whether they stay inside it is the caller's
// affair, since
//         a program may mean memory of its own. What is left over behind the last whole sample is ignored.
//         Two blocks are the first and second channel of stereo, whatever NumberOfChannels says.
// Owner   samples are copied; the blocks stay the caller's.
// Returns false for a negative offset, a count below one sample, a full queue or no memory, and as each one
// says. Thread  [main]. Conversion is done before the queue is locked.
#pragma once

#include "abi/host_values.h"
#include "player/player.h"

namespace player {

/// Convert integer samples of one block, as `bitSize` says, and queue them.
/// Returns false also for an unknown bitSize, 23, a sample rate below 1 or a channel count other than 1
/// and 2. Errors  a nil block, or one without memory, raises "NilObjectException".
bool AddSomeAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                  HostInteger countBytes, HostInteger bitSize, bool clearBuffers);

/// The same for two blocks, interleaved.
bool AddSomeAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1, REALmemoryBlockStruct* block2,
                        HostInteger offsetBytes, HostInteger countBytes, HostInteger bitSize,
                        bool clearBuffers);

/// Queue 32-bit floats, bit for bit. A nil block is a plain false here, and rate and channels are not looked
/// at.
bool AddSomeFloatAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                       HostInteger countBytes, bool clearBuffers);

/// The same for two blocks, interleaved.
bool AddSomeFloatAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1,
                             REALmemoryBlockStruct* block2, HostInteger offsetBytes, HostInteger countBytes,
                             bool clearBuffers);

} // namespace player
