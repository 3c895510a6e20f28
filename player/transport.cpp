#include "player/transport.h"

#include "player/play_queue.h"
#include "plugin/shared_word.h"

#include <Carbon/Carbon.h>

namespace player {

namespace {

bool readDefaultOutputDevice(AudioDeviceID& device)
{
    UInt32 size = sizeof device;
    return AudioHardwareGetProperty(kAudioHardwarePropertyDefaultOutputDevice, &size, &device) == noErr;
}

bool readStreamFormat(AudioDeviceID device, AudioStreamBasicDescription& format)
{
    UInt32 size = sizeof format;
    return AudioDeviceGetProperty(device, 0, false, kAudioDevicePropertyStreamFormat, &size, &format) ==
           noErr;
}

/// Return the stream format of the default output device, with all fields zero on any failure.
AudioStreamBasicDescription hardwareFormat()
{
    AudioDeviceID device = 0;
    AudioStreamBasicDescription format = {};
    if (readDefaultOutputDevice(device) && readStreamFormat(device, format)) return format;
    return {};
}

} // namespace

bool PlaySomeAudio(AudioPlayerData& player)
{
    if (loadAcquired(player.isRunning)) return true;
    storeRelaxed(player.outputPositionRelative, 0.0);
    storeRelaxed(player.outputPosition, 0.0);
    player.baseSampleIndex = 0;

    // The default device is not stored, because the system may have another default device at the next start.
    AudioDeviceID device = player.outputDeviceID;
    if (!device && !readDefaultOutputDevice(device)) return false;
    AudioStreamBasicDescription format = {};
    if (!readStreamFormat(device, format)) return false;
    player.deviceSampleRate = static_cast<float>(format.mSampleRate);

    if (AudioDeviceAddIOProc(device, player.ioProc, &player) != noErr) return false;
    storeReleased<std::uint8_t>(player.isRunning, true);
    return AudioDeviceStart(device, player.ioProc) == noErr;
}

void stopPlaying(AudioPlayerData& player)
{
    storeReleased<std::uint8_t>(player.stopRequested, true);
    while (loadAcquired(player.isRunning)) {
        unsigned long ticksNow;
        Delay(1, &ticksNow);
    }
    storeRelaxed<std::uint8_t>(player.stopRequested, false);
    FreeAllPlayItems(player);
}

HostBoolean Start(REALobjectStruct* object) { return PlaySomeAudio(dataOf(object)); }

void Stop(REALobjectStruct* object) { stopPlaying(dataOf(object)); }

float GetHardwareSampleRate(REALobjectStruct*) { return static_cast<float>(hardwareFormat().mSampleRate); }

HostInteger GetHardwareNumberOfChannels(REALobjectStruct*)
{
    return static_cast<HostInteger>(hardwareFormat().mChannelsPerFrame);
}

} // namespace player
