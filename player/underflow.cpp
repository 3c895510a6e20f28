#include "player/underflow.h"

#include "plugin/shared_word.h"

namespace player {

bool renderUnderflow(AudioPlayerData& player, OutputBuffers& output, AudioDeviceID device)
{
    output.silence();
    if (loadRelaxed(player.noUnderflow)) {
        storeRelaxed<std::uint8_t>(player.hadUnderflow, true);
        return true;
    }
    AudioDeviceStop(device, player.ioProc);
    AudioDeviceRemoveIOProc(device, player.ioProc);
    storeReleased<std::uint8_t>(player.isRunning, false);
    return false;
}

} // namespace player
