// An alarm that rings when memory is asked for on the audio thread.
//
// The program that links it stands in front of the platform's AudioDeviceAddIOProc and its companions: every
// I/O procedure is called through a guard that marks its thread as the audio thread for the length of the
// call. And it stands in front of the C allocator, or hooks the sanitizers' one. Freeing is not watched: the
// player frees each block where it ends.
#pragma once

namespace allocation {

/// From now on, allocations on the audio thread are counted - and fail, where no sanitizer owns the
/// allocator.
void arm();
void disarm();

/// Allocations on the audio thread while armed.
int rings();

/// Calls of I/O procedures while armed: that the alarm has listened at all.
int watchedCalls();

} // namespace allocation
