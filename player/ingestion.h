// The four adding functions: they convert samples from host memory blocks into queued buffers.
//
// Shape   offsetBytes and countBytes apply to each block. The range is not checked, so the caller must keep
//         it inside the block. Bytes after the last whole sample are ignored. Two blocks are always the left
//         and the right channel, even if NumberOfChannels is 1.
// Owner   the functions copy the samples; the caller keeps the blocks.
// Returns false for a negative offset, a count below one sample, a full queue or missing memory for the
//         buffer, and for further reasons stated at each function.
// All functions: [main].
#pragma once

#include "abi/host_values.h"
#include "player/player.h"

namespace player {

/// Convert integer samples of `bitSize` bits and queue them.
/// Returns false also for a bitSize that is unknown or 23, a SampleRate below 1, and a NumberOfChannels other
///         than 1 and 2.
/// Errors  a nil block or a block without memory raises "NilObjectException".
bool AddSomeAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                  HostInteger countBytes, HostInteger bitSize, bool clearBuffers);

/// Like AddSomeAudio, but interleave the samples of two blocks, the left and the right channel.
bool AddSomeAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1, REALmemoryBlockStruct* block2,
                        HostInteger offsetBytes, HostInteger countBytes, HostInteger bitSize,
                        bool clearBuffers);

/// Queue 32-bit floats without changing a bit, at any SampleRate and NumberOfChannels.
/// Returns false also for a nil block or a block without memory. Raises no exception.
bool AddSomeFloatAudio(AudioPlayerData& player, REALmemoryBlockStruct* block, HostInteger offsetBytes,
                       HostInteger countBytes, bool clearBuffers);

/// Like AddSomeFloatAudio, but interleave the samples of two blocks, the left and the right channel.
bool AddSomeFloatAudioStereo(AudioPlayerData& player, REALmemoryBlockStruct* block1,
                             REALmemoryBlockStruct* block2, HostInteger offsetBytes, HostInteger countBytes,
                             bool clearBuffers);

} // namespace player
