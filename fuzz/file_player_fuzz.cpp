// Loads a file of arbitrary bytes into a file player, and renders 0.1 s on a stepped device. The last byte of
// the input is not part of the file; it selects the numbers of channels.
#include "fuzz/file_in_memory.h"
#include "fuzz/library.h"
#include "fuzz/require.h"

#include <AudioToolbox/AudioToolbox.h>

#include <cstdint>

namespace {

constexpr std::uint32_t deviceRate = 44100; // Hz
constexpr std::uint32_t playedFrames = deviceRate / 10;

// A file longer than mostFrames is skipped, because it takes long and finds nothing new. A file of at least
// refusedFrames is used, because the player refuses it.
constexpr SInt64 mostFrames = 1 << 18, refusedFrames = 1 << 29;

// Numbers of channels. Four bits of the last byte select the channels of the samples in memory; the other
// bits select the channels between the units.
constexpr int channelChoices[] = {2, 1, 2, 3, 4, 5, 6, 7, 8, 0, -1, 2, 1, 2, 1, 2};

SInt64 lengthOf(const FileInMemory& memory)
{
    const CFURLRef url = memory.createUrl();
    ExtAudioFileRef file = nullptr;
    SInt64 frames = 0;
    UInt32 size = sizeof frames;
    if (ExtAudioFileOpenURL(url, &file) == noErr) {
        (void)ExtAudioFileGetProperty(file, kExtAudioFileProperty_FileLengthFrames, &size, &frames);
        (void)ExtAudioFileDispose(file);
    }
    CFRelease(url);
    return frames;
}

bool load(host::Object& player, const std::string& path, int channels, int betweenUnits)
{
    try {
        return player.call("LoadFile", host::FolderItem::at(path), channels, betweenUnits).boolean();
    } catch (const host::HostException& error) {
        require(error.className() == "OutOfMemoryException", "only a lack of memory raises an exception");
        return false;
    }
}

void play(host::Object& player)
{
    const KVXDeviceID device = steppedDevice(deviceRate, 512);
    player.set("CurrentDeviceID", std::int64_t{device});
    player.call("Play");
    const bool isPlaying = player.get("Playing").boolean();
    KVXPlatformStep(device, playedFrames);
    require(player.get("Playing").boolean() == isPlaying,
            "a player continues to play after the end of the file");
    if (player.get("TrackLength").number() > 0)
        require(player.get("CurrentTime").number() <= player.get("TrackLength").number() * (1 + 1e-9),
                "the position of a player lies in the file");
    player.call("Pause");
    require(!player.get("Playing").boolean(), "a paused player does not play");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) return 0;
    const std::uint8_t choice = bytes[size - 1];
    const int channels = channelChoices[choice & 15], betweenUnits = channelChoices[choice >> 4];
    const FileInMemory file(bytes, size - 1);
    const SInt64 length = lengthOf(file);
    if (length > mostFrames && length < refusedFrames) return 0;
    host::Host& host = hostWithLibrary();
    {
        host::Object player = host.create("AUPlayerKVX");
        if (load(player, file.path(), channels, betweenUnits)) {
            require(player.get("Lasterror").integer() == 0, "Lasterror is 0 after a successful load");
            require(player.get("DataNumberChannels").integer() == channels,
                    "the samples have the requested number of channels");
            const std::size_t bytesInMemory = player.call("Data").memoryBlock().size();
            require(channels > 0 ? bytesInMemory % (4u * unsigned(channels)) == 0 : bytesInMemory == 0,
                    "the memory block of the samples holds whole frames");
            play(player);
        } else {
            require(!player.get("Playing").boolean(), "a player without a file does not play");
        }
    }
    require(host.leaks().isClean(), "every host value is released");
    require(host.misuses().empty(), "the plug-in makes no misuse of the host");
    require(KVXPlatformGetLiveCounts(nullptr, 0) == 0, "every platform object is released");
    return 0;
}
