// A file of any bytes into the file player, through the whole graph, and out of a stepped device for 0.1 s.
// Its last byte, which no file misses, chooses the channels.
#include "abi/entry_point.h"
#include "fuzz/file_in_memory.h"
#include "fuzz/require.h"
#include "host/runtime/host.h"

#include <AudioToolbox/AudioToolbox.h>
#include <KVXPlatform/KVXPlatform.h>

#include <algorithm>
#include <cstdint>

extern "C" void REALPluginMain(REALResolver resolver);

namespace {

constexpr std::uint32_t deviceRate = 44100; // Hz
constexpr std::uint32_t playedFrames = deviceRate / 10;

// A few bytes may be hours, which take a while and tell nothing new; still longer ones are refused again.
constexpr SInt64 mostFrames = 1 << 18, refusedFrames = 1 << 29;

// Of the samples in memory, and between the units: four bits each.
constexpr int channelChoices[] = {2, 1, 2, 3, 4, 5, 6, 7, 8, 0, -1, 2, 1, 2, 1, 2};

host::Host& theHost()
{
    static host::Host* host = [] {
        auto* made = new host::Host; // for the life of the process, as the library is
        made->enter(REALPluginMain);
        return made;
    }();
    return *host;
}

KVXDeviceID theDevice()
{
    static const KVXDeviceID device = [] {
        KVXSimulatedDevice description = {};
        description.name = "Stepped";
        description.isStepped = 1;
        description.sampleRate = deviceRate;
        return KVXPlatformAddSimulatedDevice(&description);
    }();
    return device;
}

SInt64 lengthOf(const std::string& path)
{
    const CFURLRef url = CFURLCreateFromFileSystemRepresentation(
        nullptr, reinterpret_cast<const UInt8*>(path.data()), static_cast<CFIndex>(path.size()), false);
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
        require(error.className() == "OutOfMemoryException", "a file without a place in memory raises");
        return false;
    }
}

void play(host::Object& player)
{
    player.set("CurrentDeviceID", std::int64_t(theDevice()));
    player.call("Play");
    const bool isPlaying = player.get("Playing").boolean();
    KVXPlatformStep(theDevice(), playedFrames);
    require(player.get("Playing").boolean() == isPlaying, "what plays goes on, its end reached or not");
    if (player.get("TrackLength").number() > 0)
        require(player.get("CurrentTime").number() <= player.get("TrackLength").number() * (1 + 1e-9),
                "a position is in the file");
    player.call("Pause");
    require(!player.get("Playing").boolean(), "what is paused does not play");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    if (size == 0) return 0;
    const std::uint8_t choice = bytes[size - 1];
    const int channels = channelChoices[choice & 15], betweenUnits = channelChoices[choice >> 4];
    const FileInMemory file(bytes, size - 1);
    const SInt64 length = lengthOf(file.path());
    if (length > mostFrames && length < refusedFrames) return 0;
    host::Host& host = theHost();
    {
        host::Object player = host.create("AUPlayerKVX");
        if (load(player, file.path(), channels, betweenUnits)) {
            require(player.get("Lasterror").integer() == 0, "a file that is loaded has no error");
            require(player.get("DataNumberChannels").integer() == channels,
                    "samples are as they were wanted");
            const std::size_t bytesInMemory = player.call("Data").memoryBlock().size();
            require(channels > 0 ? bytesInMemory % (4u * unsigned(channels)) == 0 : bytesInMemory == 0,
                    "whole frames are in memory");
            play(player);
        } else {
            require(!player.get("Playing").boolean(), "what was not loaded does not play");
        }
    }
    require(host.leaks().isClean(), "every reference is given back");
    require(host.misuses().empty(), "the host was used as it wants to be");
    require(KVXPlatformGetLiveCounts(nullptr, 0) == 0, "every object is released");
    return 0;
}
