// Start, stop, and what the hardware runs at.
#pragma once

#include "abi/word.h"
#include "player/player.h"

namespace player {

/// Install the I/O procedure with the output device and start it; a running player is left as it is.
/// Thread  [main].
/// Returns whether it runs. A device that refuses to start leaves isRunning set all the same: the procedure
///         is installed, and only the procedure itself can take it out again.
bool PlaySomeAudio(AudioPlayerData& player);

/// Ask the I/O procedure to remove itself, wait for it, and free every buffer. Positions stay as they are.
/// Thread  [main]. Waits without a limit: with noUnderflow set, until the player has stopped by itself.
void stopPlaying(AudioPlayerData& player);

// The methods of the same names. [main]
HostBoolean Start(REALobjectStruct* object);
void Stop(REALobjectStruct* object);

/// The default output device's rate in Hz, whatever device the player uses; 0 on any failure. [main]
float GetHardwareSampleRate(REALobjectStruct* object);

/// The channels of a frame there, likewise. [main]
HostInteger GetHardwareNumberOfChannels(REALobjectStruct* object);

} // namespace player
