#include "bench/file_player.h"

#include "bench/sound_files.h"
#include "bench/test_signal.h"

#include <filesystem>
#include <malloc.h>
#include <stdexcept>
#include <string>

namespace bench {
namespace {

/// The path of the plug-in library in the folder of this program.
std::string libraryPath()
{
    return std::filesystem::read_symlink("/proc/self/exe").parent_path() / "KVXAudio.so";
}

double hostBytes = 0;

} // namespace

double heapBytes()
{
    const auto info = mallinfo2();
    return static_cast<double>(info.uordblks) + static_cast<double>(info.hblkhd);
}

host::Host& loadedHost()
{
    // The host is never freed, because static objects in other files use it until the process ends.
    static host::Host& host = *[] {
        const double before = heapBytes();
        auto* const loaded = new host::Host;
        loaded->load(libraryPath());
        hostBytes = heapBytes() - before;
        return loaded;
    }();
    return host;
}

double loadedHostBytes()
{
    loadedHost();
    return hostBytes;
}

KVXDeviceID addSteppedDevice(double sampleRate, std::uint32_t frames)
{
    KVXSimulatedDevice description = {};
    description.name = "Stepped";
    description.sampleRate = sampleRate;
    description.outputChannels = 2;
    description.sliceFrames = frames;
    description.isStepped = 1;
    const KVXDeviceID device = KVXPlatformAddSimulatedDevice(&description);
    if (!device) throw std::runtime_error(KVXPlatformErrorText());
    return device;
}

FilePlayer::FilePlayer() : FilePlayer(signalRate, sliceFrames) {}

FilePlayer::FilePlayer(double deviceRate, std::uint32_t frames)
    : frames_(frames), device_(addSteppedDevice(deviceRate, frames)),
      object_(loadedHost().create("AUPlayerKVX"))
{
    const std::string path = longFile(fileFormats[0]);
    if (!object_.call("LoadFile", host::FolderItem::at(path), 2, 2).boolean())
        throw std::runtime_error(path + " cannot be loaded");
    object_.set("CurrentDeviceID", std::int64_t{device_});
    object_.set("Looping", true);
}

FilePlayer::~FilePlayer()
{
    object_.call("Pause");
    object_ = {};
    KVXPlatformRemoveSimulatedDevice(device_);
}

void FilePlayer::play() const
{
    object_.call("Play");
    settle();
    if (!object_.get("Playing").boolean()) throw std::runtime_error("the file player does not play");
}

void FilePlayer::settle() const
{
    for (int i = 0; i < 100; ++i) step();
}

} // namespace bench
