// The player inside the shipped library, which the test loads by its file name. The spy replaces the platform
// for the library, too, because the library calls every platform function through an ordinary dynamic symbol.
#include "abi/class_definition.h"
#include "abi/entry_point.h"
#include "tests/support/class_members.h"
#include "tests/support/device_spy.h"
#include "tests/support/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>

namespace {

TEST(PlayerInLoadedLibrary, CallsThePlatformThroughDynamicSymbols)
{
    device_spy::reset();
    void* library = dlopen(KVX_BINARY_DIR "/KVXAudio.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto enter = reinterpret_cast<REALPluginMainFunction>(dlsym(library, pluginMainName));
    ASSERT_NE(enter, nullptr);
    fake::Host host(2013.04);
    host.dataOffset = 16;
    enter(fake::Host::resolve);
    const auto& classes = host.registrations();
    const auto registered = std::find_if(classes.begin(), classes.end(), [](const fake::Registration& each) {
        return each.definition->name == std::string_view("CoreAudioPlayerKVX");
    });
    ASSERT_NE(registered, classes.end());
    const REALclassDefinition& playerClass = *registered->definition;
    const support::ClassMembers members(playerClass);
    EXPECT_EQ(spy::calls(), std::vector<std::string>()) << "loading calls no platform function";

    void* memory = std::malloc(16 + playerClass.dataSize);
    std::memset(memory, 0xFF, 16 + playerClass.dataSize);
    auto* object = static_cast<REALobjectStruct*>(memory);
    members.construct(object);
    EXPECT_EQ(members.call<float>("HardwareSampleRate", object), 44100.0f);
    EXPECT_EQ(members.call<HostBoolean>("Start", object), 1);
    spy::answer("Delay").during = [] {
        const AudioTimeStamp time = {};
        AudioBufferList noInput = {}, output = {};
        const device_spy::Installed it = device_spy::installed()[0];
        it.procedure(it.device, &time, &noInput, &time, &output, &time, it.client);
    };
    members.call<void>("Stop", object);
    members.destruct(object);
    std::free(memory);

    EXPECT_EQ(spy::calls(), (std::vector<std::string>{
                                "AudioHardwareGetProperty('dOut', 4 bytes)",
                                "AudioDeviceGetProperty(2, channel 0, output, 'sfmt', 40 bytes)",
                                "AudioHardwareGetProperty('dOut', 4 bytes)",
                                "AudioDeviceGetProperty(2, channel 0, output, 'sfmt', 40 bytes)",
                                "AudioDeviceAddIOProc(2, memory, memory)",
                                "AudioDeviceStart(2, memory)",
                                "Delay(1)",
                                "AudioDeviceStop(2, memory)",
                                "AudioDeviceRemoveIOProc(2, memory)",
                            }));
}

} // namespace
