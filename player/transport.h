// Start, stop, and the hardware's stream format.
// All functions: [main].
#pragma once

#include "abi/word.h"
#include "player/player.h"

namespace player {

/// Install the I/O procedure with the output device and start the device. A running player stays unchanged.
/// Returns whether the player runs. If only the start of the device fails, isRunning stays set: the procedure
///         is installed, and only the procedure can remove itself.
bool PlaySomeAudio(AudioPlayerData& player);

/// Request a stop, wait until the I/O procedure has removed itself, and free every buffer. Positions stay.
/// Waits without a time limit; with noUnderflow set, until the player has run out of data and stopped.
void stopPlaying(AudioPlayerData& player);

// The methods of the same names.
HostBoolean Start(REALobjectStruct* object);
void Stop(REALobjectStruct* object);

/// Return the rate (Hz) and the channels per frame of the system's default output device, whatever device the
/// player uses; 0 on any failure.
float GetHardwareSampleRate(REALobjectStruct* object);
HostInteger GetHardwareNumberOfChannels(REALobjectStruct* object);

} // namespace player
