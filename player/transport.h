// Start, stop, and the hardware's stream format.
// All functions: [main].
#pragma once

#include "abi/word.h"
#include "player/player.h"

namespace player {

/// Install the I/O procedure on the output device and start the device. A running player stays unchanged.
/// Returns true if the player is running, false if a platform call failed. If only the start of the device
///         fails, isRunning stays set, because the procedure is installed and only the procedure itself
///         removes it. The next call then returns true although the device plays nothing.
bool PlaySomeAudio(AudioPlayerData& player);

/// Request a stop, wait until the I/O procedure has removed itself, and free every buffer. The positions
/// stay. The wait has no time limit: it does not end while noUnderflow is set, or after a start that the
/// device refused.
void stopPlaying(AudioPlayerData& player);

// The class methods "Start" and "Stop".
HostBoolean Start(REALobjectStruct* object);
void Stop(REALobjectStruct* object);

/// Return the sample rate (Hz) and the number of channels of the system's default output device, even if the
/// player uses another device. Return 0 on any failure.
float GetHardwareSampleRate(REALobjectStruct* object);
HostInteger GetHardwareNumberOfChannels(REALobjectStruct* object);

} // namespace player
