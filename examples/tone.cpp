// A program that makes a host, loads the plug-in, and plays a tone of two seconds with a buffered player.
#include "host/runtime/host.h"

#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>
#include <vector>

int main(int count, char** arguments)
{
    std::vector<float> tone(2 * 44100);
    for (std::size_t i = 0; i < tone.size(); ++i)
        tone[i] = 0.3f * std::sin(static_cast<float>(i) * 440 * 6.2831853f / 44100);

    host::Host host; // a host of version 2016.0, the default
    try {
        host.load(count > 1 ? arguments[1] : "build/i386/KVXAudio.so");
        host::Object player = host.create("CoreAudioPlayerKVX");
        player.set("SampleRate", 44100);
        player.set("NumberOfChannels", 1);
        if (!player.call("PlayFloatAudio", host::MemoryBlock::copyOf(tone)).boolean()) return 1;
        while (player.get("IsRunning").boolean()) std::this_thread::sleep_for(std::chrono::milliseconds(50));
        std::printf("played %.0f frames\n", player.get("OutputPosition").number());
    } catch (const std::exception& error) { // such as a failed load or an unknown class or member
        std::fprintf(stderr, "tone: %s\n", error.what());
        return 1;
    }
    std::fputs(host.leaks().text().c_str(), stderr); // prints nothing without leaks
}
