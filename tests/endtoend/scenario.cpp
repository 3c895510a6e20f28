#include "tests/endtoend/scenario.h"

#include "tests/endtoend/loaded.h"

#include <cstdint>
#include <cstdio>
#include <functional>

namespace endtoend {
namespace {

using host::MemoryBlock;
using host::Object;
using host::Value;

std::string print(const std::vector<float>& samples, std::size_t count)
{
    std::string text;
    for (std::size_t i = 0; i < samples.size() && i < count; ++i) {
        char number[32];
        std::snprintf(number, sizeof number, "%s%g", i ? " " : "", double(samples[i]));
        text += number;
    }
    return text;
}

std::string tell(const std::function<Value()>& step)
{
    try {
        const Value value = step();
        return value.isNil() ? "" : value.print();
    } catch (const host::HostException& error) {
        return error.what();
    } catch (const host::ProgramError&) {
        return "refused";
    }
}

} // namespace

std::vector<Outcome> walkScenario(host::Host& host)
{
    std::vector<Outcome> outcomes;
    {
        SteppedDevice device(44100, 2, 8);
        Object player;
        const auto step = [&](const char* name, const std::function<Value()>& body) {
            outcomes.push_back({name, tell(body)});
        };

        step("create", [&] {
            player = host.create(playerClass);
            return bool(player);
        });
        // Defaults, then every property both ways.
        for (const char* property :
             {"SampleRate", "NumberOfChannels", "OutputDeviceID", "IsRunning", "OutputPosition",
              "OutputPositionRelative", "NoUnderflow", "HadUnderflow"})
            step(property, [&] { return player.get(property); });
        step("set SampleRate", [&] { return player.set("SampleRate", 22050.0), player.get("SampleRate"); });
        step("set SampleRate back",
             [&] { return player.set("SampleRate", 44100.0), player.get("SampleRate"); });
        step("set NumberOfChannels",
             [&] { return player.set("NumberOfChannels", 2), player.get("NumberOfChannels"); });
        step("set NumberOfChannels back",
             [&] { return player.set("NumberOfChannels", 1), player.get("NumberOfChannels"); });
        step("set HadUnderflow",
             [&] { return player.set("HadUnderflow", true), player.get("HadUnderflow"); });
        step("set HadUnderflow back",
             [&] { return player.set("HadUnderflow", false), player.get("HadUnderflow"); });
        step("set NoUnderflow", [&] { return player.set("NoUnderflow", true), player.get("NoUnderflow"); });
        step("set IsRunning", [&] { return player.set("IsRunning", true), Value(); });
        step("set OutputDeviceID", [&] {
            player.set("OutputDeviceID", std::int64_t(device.id()));
            return player.get("OutputDeviceID").integer() == std::int64_t(device.id());
        });

        // Every way to add, each with samples that tell themselves apart.
        const auto words = MemoryBlock::copyOf(std::vector<std::uint16_t>{0x8000, 0x4000});
        const auto otherWords = MemoryBlock::copyOf(std::vector<std::uint16_t>{0x2000, 0x1000});
        const auto floats = MemoryBlock::copyOf(std::vector<float>{-0.5f, -0.25f});
        const auto otherFloats = MemoryBlock::copyOf(std::vector<float>{0.75f, 0.875f});
        step("AddAudio", [&] { return player.call("AddAudio", words); });
        step("AddAudio, a count", [&] { return player.call("AddAudio", words, 2, 2); });
        step("AddAudio, 15 bits", [&] { return player.call("AddAudio", otherWords, 0, 4, 15); });
        step("AddFloatAudio", [&] { return player.call("AddFloatAudio", floats); });
        step("AddFloatAudio, a count", [&] { return player.call("AddFloatAudio", otherFloats, 4, 4); });
        step("AddAudioStereo", [&] { return player.call("AddAudioStereo", words, otherWords); });
        step("AddFloatAudioStereo", [&] { return player.call("AddFloatAudioStereo", floats, otherFloats); });
        step("FreeSpace", [&] { return player.call("FreeSpace"); });
        step("HasFreeSpace", [&] { return player.call("HasFreeSpace"); });

        // Misuse.
        step("AddAudio, nil", [&] { return player.call("AddAudio", nullptr); });
        step("PlayAudioStereo, second nil",
             [&] { return player.call("PlayAudioStereo", words, nullptr, 0, 4); });
        step("AddFloatAudio, nil", [&] { return player.call("AddFloatAudio", nullptr); });

        // The device is stepped by hand: nothing moves between two steps.
        step("Start", [&] { return player.call("Start"); });
        step("IsRunning, started", [&] { return player.get("IsRunning"); });
        step("step 24", [&] { return device.step(24); });
        step("left", [&] { return print(device.heard(0), 16); });
        step("right alike", [&] { return device.heard(0) == device.heard(1); });
        step("OutputPosition, played", [&] { return player.get("OutputPosition"); });
        step("HadUnderflow, played", [&] { return player.get("HadUnderflow"); });

        // Each of the playing methods adds to the running player.
        device.forget();
        step("PlayAudio", [&] { return player.call("PlayAudio", words, 0, 4); });
        step("PlayFloatAudio", [&] { return player.call("PlayFloatAudio", floats, 0, 8); });
        step("PlayAudioStereo", [&] { return player.call("PlayAudioStereo", otherWords, words, 0, 4); });
        step("PlayFloatAudioStereo",
             [&] { return player.call("PlayFloatAudioStereo", otherFloats, floats, 0, 8); });
        step("FreeSpace, playing", [&] { return player.call("FreeSpace"); });
        step("AddFloatAudio, clearing", [&] { return player.call("AddFloatAudio", floats, 0, 8, true); });
        step("FreeSpace, cleared", [&] { return player.call("FreeSpace"); });

        step("Stop", [&] { return player.set("NoUnderflow", false), player.call("Stop"); });
        step("IsRunning, stopped", [&] { return player.get("IsRunning"); });
        step("FreeSpace, stopped", [&] { return player.call("FreeSpace"); });
        step("Close", [&] { return player.call("Close"); });
        step("destroy", [&] { return player = nullptr, Value(); });
    }
    outcomes.push_back({"left over", leftOver(host)});
    return outcomes;
}

const std::vector<Outcome>& completeOutcomes()
{
    // clang-format off
    static const std::vector<Outcome> outcomes = {
        {"create",                      "true"},
        {"SampleRate",                  "44100"},
        {"NumberOfChannels",            "1"},
        {"OutputDeviceID",              "0"},
        {"IsRunning",                   "false"},
        {"OutputPosition",              "0"},
        {"OutputPositionRelative",      "0"},
        {"NoUnderflow",                 "false"},
        {"HadUnderflow",                "false"},
        {"set SampleRate",              "22050"},
        {"set SampleRate back",         "44100"},
        {"set NumberOfChannels",        "2"},
        {"set NumberOfChannels back",   "1"},
        {"set HadUnderflow",            "true"},
        {"set HadUnderflow back",       "false"},
        {"set NoUnderflow",             "true"},
        {"set IsRunning",               "refused"},
        {"set OutputDeviceID",          "true"},
        {"AddAudio",                    "true"},
        {"AddAudio, a count",           "true"},
        {"AddAudio, 15 bits",           "true"},
        {"AddFloatAudio",               "true"},
        {"AddFloatAudio, a count",      "true"},
        {"AddAudioStereo",              "true"},
        {"AddFloatAudioStereo",         "true"},
        {"FreeSpace",                   "193"},
        {"HasFreeSpace",                "true"},
        {"AddAudio, nil",               "NilObjectException: Memoryblock is nil"},
        {"PlayAudioStereo, second nil", "NilObjectException: Memoryblock is nil"},
        {"AddFloatAudio, nil",          "false"},
        {"Start",                       "true"},
        {"IsRunning, started",          "true"},
        {"step 24",                     "24"},
        {"left",                        "0.5 0.25 0.25 0.25 0.125 -0.5 -0.25 0.875 0.5 0.125 0.25 0.0625 -0.5 0.75 -0.25 0.875"},
        {"right alike",                 "true"},
        {"OutputPosition, played",      "16"},
        {"HadUnderflow, played",        "true"},
        {"PlayAudio",                   "true"},
        {"PlayFloatAudio",              "true"},
        {"PlayAudioStereo",             "true"},
        {"PlayFloatAudioStereo",        "true"},
        {"FreeSpace, playing",          "196"},
        {"AddFloatAudio, clearing",     "true"},
        {"FreeSpace, cleared",          "199"},
        {"Stop",                        ""},
        {"IsRunning, stopped",          "false"},
        {"FreeSpace, stopped",          "200"},
        {"Close",                       ""},
        {"destroy",                     ""},
        {"left over",                   ""},
    };
    // clang-format on
    return outcomes;
}

} // namespace endtoend
