// From host memory blocks to queued buffers.
//
// Shape   offsetBytes and countBytes are bytes of each block; the caller keeps the range inside the block.
//         Bytes after the last whole sample are ignored. Two blocks are the left and the right channel,
//         whatever NumberOfChannels is.
// Owner   samples are copied; the blocks stay the caller's.
// Returns false for a negative offset, a count below one sample, a full queue or missing memory, and for the
//         reasons that each function adds.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "player/player.h"

namespace player {

/// Convert integer samples of `bitSize` bits and queue them.
/// Returns also false for an unknown bitSize, 23, a rate below 1, or a channel count other than 1 and 2.
/// Errors  a nil block, or one without memory, raises "NilObjectException".
bool AddSomeAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                  HostInteger countBytes, HostInteger bitSize, bool clearBuffers);

/// As AddSomeAudio, from two blocks, interleaved.
bool AddSomeAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1, REALmemoryBlockStruct* block2,
                        HostInteger offsetBytes, HostInteger countBytes, HostInteger bitSize,
                        bool clearBuffers);

/// Queue 32-bit floats, bit for bit, at any rate and channel count.
/// Returns also false for a nil block or one without memory; raises nothing.
bool AddSomeFloatAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                       HostInteger countBytes, bool clearBuffers);

/// As AddSomeFloatAudio, from two blocks, interleaved.
bool AddSomeFloatAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1,
                             REALmemoryBlockStruct* block2, HostInteger offsetBytes, HostInteger countBytes,
                             bool clearBuffers);

} // namespace player
