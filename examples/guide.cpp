// The program of docs/guide.md: from a first sound to a small player, in five steps.
// Usage: guide FILE [LIBRARY]
#include "host/runtime/host.h"

#include <KVXPlatform/KVXPlatform.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace {

/// Let time pass and run the plug-in's events, as App.DoEvents does.
void doEvents(double seconds) { KVXPlatformDrainMainQueue(seconds); }

void playTone(host::Host& host)
{
    std::vector<float> tone(22050);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = 0.3f * std::sin(static_cast<float>(i) * 440 * 6.2831853f / 44100);

    const host::Object beeper = host.create("CoreAudioPlayerKVX");
    beeper.set("SampleRate", 44100);
    beeper.set("NumberOfChannels", 1);
    if (!beeper.call("PlayFloatAudio", host::MemoryBlock::copyOf(tone)).boolean()) return;
    while (beeper.get("IsRunning").boolean()) doEvents(0.05);
}

bool load(const host::Object& player, const std::string& path)
{
    const bool isLoaded = player.call("LoadFile", host::FolderItem::at(path)).boolean();
    if (!isLoaded)
        std::printf("The file cannot be played: error %d\n",
                    static_cast<int>(player.get("Lasterror").integer()));
    return isLoaded;
}

void playToTheEnd(const host::Object& player)
{
    player.call("Play");
    while (player.get("CurrentTime").number() < player.get("TrackLength").number() - 0.01) doEvents(0.05);
    doEvents(0.2); // the device plays the last slices
    player.call("Pause");
}

void playOrPause(const host::Object& player) { player.set("Playing", !player.get("Playing").boolean()); }

void moveBy(const host::Object& player, double seconds)
{
    const double time = player.get("CurrentTime").number() + seconds;
    player.set("CurrentTime", time < 0 ? 0.0 : time); // a negative time would move to the end
}

void showTime(const host::Object& player)
{
    std::printf("%.1f of %.1f s\n", player.get("CurrentTime").number(), player.get("TrackLength").number());
}

void practise(const host::Object& player, double from, double to)
{
    player.set("OutputVolume", 0.8);
    player.set("TimeRate", 0.75);  // three quarters of the speed
    player.set("PitchRate", -100); // a semitone lower
    std::vector<double> bands(31);
    bands[17] = -6; // less at 1 kHz
    player.call("updateEQ", host::Array::of(bands));

    player.set("LoopIn", from);
    player.set("LoopOut", to);
    player.set("Looping", true);
    player.set("CurrentTime", from);
    player.call("Play");
}

void useDevice(const host::Object& player, const std::string& name)
{
    const host::Object devices = player.get("OuputDevices").object();
    for (std::int64_t i = 0; i < devices.get("Count").integer(); ++i) {
        const host::Value device = devices.call("Key", i);
        if (devices.call("Value", device).text() == name) player.set("CurrentDeviceID", device);
    }
    if (player.get("Lasterror").integer() != 0) std::printf("The device cannot be used\n");
}

host::Object followDefaultDevice(host::Host& host, const host::Object& player)
{
    const host::Object watch = host.create("CoreAudioListenerKVX", 1, 0x644F7574, 0x676C6F62, 0);
    watch.on("Changed", [player](host::Object&, const std::vector<host::Value>&) {
        player.set("CurrentDeviceID", player.get("DefaultDeviceID"));
        return host::Value();
    });
    return watch;
}

} // namespace

int main(int count, char** arguments)
{
    if (count < 2) {
        std::fprintf(stderr, "usage: guide FILE [LIBRARY]\n");
        return 2;
    }
    host::Host host;
    try {
        host.load(count > 2 ? arguments[2] : "build/i386/KVXAudio.so");
        playTone(host);

        const host::Object player = host.create("AUPlayerKVX");
        if (!load(player, arguments[1])) return 1;
        playToTheEnd(player);
        showTime(player);

        moveBy(player, -1000);
        showTime(player);
        playOrPause(player);
        playOrPause(player);

        useDevice(player, "Simulated Device");
        const host::Object watch = followDefaultDevice(host, player);
        practise(player, 0.1, 0.2);
        doEvents(0.5);
        std::printf("%s\n", player.get("Looping").boolean() ? "loops" : "does not loop");
    } catch (
        const host::HostException& error) { // an exception of the plug-in, such as a path without a folder
        std::printf("%s: %s\n", error.className().c_str(), error.message().c_str());
        return 1;
    } catch (const std::exception& error) { // such as a library that cannot be loaded
        std::fprintf(stderr, "guide: %s\n", error.what());
        return 1;
    }
    std::fputs(host.leaks().text().c_str(), stderr); // prints nothing without leaks
}
