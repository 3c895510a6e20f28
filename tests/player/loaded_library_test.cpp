// The player inside the shipped library, which the test loads by its file name. The spy replaces the platform
// for the library, too, because the library calls every platform function through an ordinary dynamic symbol.
#include "abi/class_definition.h"
#include "abi/entry_point.h"
#include "tests/support/device_spy.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <string_view>

namespace {

REALclassDefinition* playerClass = nullptr;

double hostVersion() { return 2013.04; }
void registerPluginVersion(int) {}
void registerClass(REALclassDefinition* definition)
{
    definition->dataOffset = 16;
    if (definition->name == std::string_view("CoreAudioPlayerKVX")) playerClass = definition;
}

void* resolve(const char* name)
{
    const std::string_view asked = name;
    if (asked == "REALGetRBVersion") return reinterpret_cast<void*>(hostVersion);
    if (asked == "RegisterPluginVersion") return reinterpret_cast<void*>(registerPluginVersion);
    if (asked == "PluginRegisterClass") return reinterpret_cast<void*>(registerClass);
    return nullptr;
}

AnyFunction methodNamed(std::string_view declaration)
{
    const auto* rows = static_cast<const REALmethod*>(playerClass->methods);
    for (Word i = 0; i < playerClass->methodCount; ++i)
        if (rows[i].declaration == declaration) return rows[i].function;
    return nullptr;
}

TEST(PlayerInLoadedLibrary, CallsThePlatformThroughDynamicSymbols)
{
    using Procedure = void (*)(REALobjectStruct*);
    device_spy::reset();
    void* library = dlopen(KVX_BINARY_DIR "/KVXAudio.so", RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    const auto enter = reinterpret_cast<REALPluginMainFunction>(dlsym(library, pluginMainName));
    ASSERT_NE(enter, nullptr);
    enter(resolve);
    ASSERT_NE(playerClass, nullptr);
    EXPECT_EQ(spy::calls(), std::vector<std::string>()) << "loading calls no platform function";

    void* memory = std::malloc(16 + playerClass->dataSize);
    std::memset(memory, 0xFF, 16 + playerClass->dataSize);
    auto* object = static_cast<REALobjectStruct*>(memory);
    reinterpret_cast<Procedure>(playerClass->constructor)(object);
    EXPECT_EQ(
        reinterpret_cast<float (*)(REALobjectStruct*)>(methodNamed("HardwareSampleRate as single"))(object),
        44100.0f);
    EXPECT_EQ(reinterpret_cast<HostBoolean (*)(REALobjectStruct*)>(methodNamed("Start as boolean"))(object),
              1);
    spy::answer("Delay").during = [] {
        const AudioTimeStamp time = {};
        AudioBufferList noInput = {}, output = {};
        const device_spy::Installed it = device_spy::installed()[0];
        it.procedure(it.device, &time, &noInput, &time, &output, &time, it.client);
    };
    reinterpret_cast<Procedure>(methodNamed("Stop"))(object);
    reinterpret_cast<Procedure>(playerClass->destructor)(object);
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
