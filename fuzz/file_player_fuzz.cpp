// Loads a file of arbitrary bytes into the file player, and renders 0.1 s on a stepped device. The last byte
// of the input selects the numbers of channels; it is no part of the file.
#include "fuzz/file_in_memory.h"
#include "fuzz/library.h"
#include "fuzz/require.h"

#include <AudioToolbox/AudioToolbox.h>

#include <algorithm>
#include <cstdint>

namespace {

constexpr std::uint32_t deviceRate = 44100; // Hz
constexpr std::uint32_t playedFrames = deviceRate / 10;

// Files between these lengths are skipped: they take long and find nothing new. The player refuses longer
// files.
constexpr SInt64 mostFrames = 1 << 18, refusedFrames = 1 << 29;

// Channels of the samples in memory, and between the units; four bits of the last byte select each.
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
            "a playing player keeps playing, also after the end of the file");
    if (player.get("TrackLength").number() > 0)
        require(player.get("CurrentTime").number() <= player.get("TrackLength").number() * (1 + 1e-9),
                "the position lies in the file");
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
            require(player.get("Lasterror").integer() == 0, "a loaded file has no error");
            require(player.get("DataNumberChannels").integer() == channels,
                    "the samples have the requested number of channels");
            const std::size_t bytesInMemory = player.call("Data").memoryBlock().size();
            require(channels > 0 ? bytesInMemory % (4u * unsigned(channels)) == 0 : bytesInMemory == 0,
                    "the memory holds whole frames");
            play(player);
        } else {
            require(!player.get("Playing").boolean(), "a player without a file does not play");
        }
    }
    require(host.leaks().isClean(), "every reference is released");
    require(host.misuses().empty(), "the host found no misuse");
    require(KVXPlatformGetLiveCounts(nullptr, 0) == 0, "every object is released");
    return 0;
}
