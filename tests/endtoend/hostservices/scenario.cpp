#include "tests/endtoend/hostservices/scenario.h"

#include "tests/endtoend/loaded_host.h"

#include <cstdint>
#include <cstdio>
#include <functional>

namespace endtoend {
namespace {

using host::MemoryBlock;
using host::Object;
using host::String;
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

// Strings and blocks that are lent to the library, with references to spare: a library on a host that cannot
// count gives back too many or too few. That is told with the step, and put right.
class Lender {
public:
    template <class Handle>
    Handle operator()(const Handle& value)
    {
        for (int i = 0; i < spare; ++i) host::retain(value.get());
        lent_.push_back({value.get(), 0});
        return value;
    }
    String operator()(const char* bytes, std::uint32_t encoding)
    {
        return (*this)(String::ofBytes(bytes, encoding));
    }
    ~Lender()
    {
        for (const Lent& each : lent_)
            for (int i = 0; i < spare; ++i) host::release(each.value);
    }

    void beforeStep()
    {
        for (Lent& each : lent_) each.references = host::referenceCount(each.value);
    }
    /// "", or ", references -2" where they were dropped.
    std::string afterStep()
    {
        std::string text;
        for (const Lent& each : lent_) {
            const int drift = int(host::referenceCount(each.value)) - int(each.references);
            for (int i = 0; i < drift; ++i) host::release(each.value);
            for (int i = 0; i < -drift; ++i) host::retain(each.value);
            if (drift) text += (drift > 0 ? ", references +" : ", references ") + std::to_string(drift);
        }
        return text;
    }

private:
    struct Lent {
        const void* value;
        std::size_t references;
    };
    static constexpr int spare = 8;
    std::vector<Lent> lent_;
};

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

using Step = std::function<void(const char* name, const std::function<Value()>& body)>;

void play(host::Host& host, SteppedDevice& device, const Step& step)
{
    Object player;
    step("create", [&] {
        player = host.create(playerClass);
        return bool(player);
    });
    // Defaults, then every property both ways.
    for (const char* property : {"SampleRate", "NumberOfChannels", "OutputDeviceID", "IsRunning",
                                 "OutputPosition", "OutputPositionRelative", "NoUnderflow", "HadUnderflow"})
        step(property, [&] { return player.get(property); });
    step("set SampleRate", [&] { return player.set("SampleRate", 22050.0), player.get("SampleRate"); });
    step("set SampleRate back", [&] { return player.set("SampleRate", 44100.0), player.get("SampleRate"); });
    step("set NumberOfChannels",
         [&] { return player.set("NumberOfChannels", 2), player.get("NumberOfChannels"); });
    step("set NumberOfChannels back",
         [&] { return player.set("NumberOfChannels", 1), player.get("NumberOfChannels"); });
    step("set HadUnderflow", [&] { return player.set("HadUnderflow", true), player.get("HadUnderflow"); });
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
    step("PlayAudioStereo, second nil", [&] { return player.call("PlayAudioStereo", words, nullptr, 0, 4); });
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

/// Property IDs as programs spell them. What stands behind the fourth character does not count.
const struct {
    const char* name;
    const char* bytes;
    std::uint32_t encoding;
} propertyIDs[] = {
    // clang-format off
    {"UTF-8, three characters",                  "dIn",          encodingUTF8},
    {"UTF-8, four characters",                   "dOut",         encodingUTF8},
    {"UTF-8, more characters",                   "dOut\xC3\xA9", encodingUTF8},
    {"Mac Roman, three characters",              "dIn",          encodingMacRoman},
    {"Mac Roman, four characters",               "dOut",         encodingMacRoman},
    {"Mac Roman, more characters",               "dOut\x8E",     encodingMacRoman},
    {"unknown encoding, three characters",       "dIn",          encodingUnknown},
    {"unknown encoding, four characters",        "dOut",         encodingUnknown},
    {"unknown encoding, more characters",        "dOutput",      encodingUnknown},
    {"unknown encoding, more than ASCII",        "dOut\x8E",     encodingUnknown},
    // clang-format on
};

std::string statusOf(const Object& core) { return core.get("Lasterror").print(); }

String bytesOf(std::uint32_t word)
{
    return String::ofBytes({reinterpret_cast<const char*>(&word), sizeof word}, encodingUnknown);
}

void askForProperties(host::Host& host, SteppedDevice& device, Lender& lend, const Step& step)
{
    Object core;
    step("create CoreAudioKVX", [&] {
        core = host.create("CoreAudioKVX");
        return bool(core);
    });
    step("a constant", [&] { return core.get("kAudioHardwarePropertyDefaultOutputDevice"); });
    step("its encoding",
         [&] { return core.get("kAudioHardwarePropertyDefaultOutputDevice").string().encoding(); });
    step("a constant of a number", [&] { return core.get("kAudioPropertyWildcardSection"); });
    step("a shared method",
         [&] { return host.callShared("CoreAudioKVX", "GetHostClockMinimumTimeDeltaKVX"); });

    const String dOut = lend("dOut", encodingASCII), data = lend(bytesOf(device.id()));
    step("set dOut by a string", [&] {
        core.call("AudioHardwareSetPropertyString", dOut, data);
        return statusOf(core);
    });
    step("dOut by a string", [&] {
        const Value text = core.call("AudioHardwareGetPropertyString", dOut);
        return text.string().bytes() == data.bytes() ? "the device" : "status " + statusOf(core);
    });
    step("dOut by a block", [&] {
        const Value block = core.call("AudioHardwareGetPropertyMemory", dOut);
        if (block.isNil()) return "status " + statusOf(core);
        return std::string(*block.memoryBlock().as<std::uint32_t>() == device.id() ? "the device"
                                                                                   : "another");
    });
    for (const auto& id : propertyIDs) {
        const String text = lend(id.bytes, id.encoding);
        step(id.name, [&] {
            Value size, isWritable;
            core.call("AudioHardwareGetPropertyInfo", text, byref(size), byref(isWritable));
            return size.print() + " bytes, writable " + isWritable.print() + ", status " + statusOf(core);
        });
    }
    const String name = lend("lnam", encodingASCII), isRunning = lend("goin", encodingASCII);
    const std::int64_t id = device.id();
    step("the device's name", [&] {
        const Value text = core.call("AudioDeviceGetPropertyCFString", id, 0, false, name);
        return text.isNil() ? "status " + statusOf(core) : text.print();
    });
    step("its encoding too",
         [&] { return core.call("AudioDeviceGetPropertyCFString", id, 0, false, name).string().encoding(); });
    step("whether it runs", [&] {
        const Value block = core.call("AudioDeviceGetPropertyMemory", id, 0, false, isRunning);
        return block.isNil() ? "status " + statusOf(core)
                             : std::to_string(*block.memoryBlock().as<std::uint32_t>());
    });
    step("its rate", [&] {
        const Value block = core.call("AudioObjectGetPropertyData", id, 'nsrt', 'glob', 0);
        return block.isNil() ? Value() : Value(*block.memoryBlock().as<double>());
    });
    const MemoryBlock room = lend(MemoryBlock::ofSize(8));
    step("its rate, into a block", [&] {
        const Value block = core.call("AudioObjectGetPropertyData", id, 'nsrt', 'glob', 0, nullptr, room);
        return block.isNil() ? Value("status " + statusOf(core)) : Value(*room.as<double>());
    });
    step("set its rate", [&] {
        core.call("AudioObjectSetPropertyData", id, 'nsrt', 'glob', 0, room);
        return statusOf(core);
    });
    step("destroy CoreAudioKVX", [&] { return core = nullptr, Value(); });
}

void openUnits(host::Host& host, Lender& lend, const Step& step)
{
    Object core;
    std::int64_t unit = 0;
    const String type = lend("auou", encodingASCII), subtype = lend("genr", encodingMacRoman);
    step("create another CoreAudioKVX", [&] {
        core = host.create("CoreAudioKVX");
        return bool(core);
    });
    step("open a unit", [&] {
        unit = core.call("OpenDefaultComponent", type, subtype).integer();
        return (unit ? "opened, status " : "none, status ") + statusOf(core);
    });
    step("initialise it", [&] { return core.call("AudioUnitInitialize", unit); });
    step("its slice", [&] {
        const Value block = core.call("AudioUnitGetPropertyMemory", unit, 14, 0, 0);
        return block.isNil() ? "status " + statusOf(core)
                             : std::to_string(*block.memoryBlock().as<std::uint32_t>());
    });
    step("uninitialise it", [&] { return core.call("AudioUnitUninitialize", unit); });
    step("close it", [&] {
        core.call("CloseComponent", unit);
        return statusOf(core);
    });
    step("destroy the other CoreAudioKVX", [&] { return core = nullptr, Value(); });
}

void listen(host::Host& host, SteppedDevice& device, const Step& step)
{
    Object listener;
    int changes = 0;
    const auto changeRate = [&](double rate) {
        KVXPlatformConfigureDevice(device.id(), rate, 0, 0);
        KVXPlatformDrainMainQueue(5.0);
        return changes;
    };
    step("create a listener", [&] {
        listener = host.create("CoreAudioListenerKVX", std::int64_t(device.id()), 'nsrt', 'glob', 0);
        return bool(listener);
    });
    step("its last error", [&] { return listener.get("LastError"); });
    step("its object", [&] { return listener.get("ObjectID").integer() == std::int64_t(device.id()); });
    step("its selector", [&] { return listener.get("PropertySelector").integer() == 'nsrt'; });
    step("attach a handler", [&] {
        listener.on("Changed", [&](Object& sender, const std::vector<Value>&) {
            changes += sender.get() == listener.get();
            return Value();
        });
        return Value();
    });
    step("a change", [&] { return listener ? changeRate(48000) : changes; });
    step("another", [&] { return listener ? changeRate(44100) : changes; });
    step("destroy the listener", [&] { return listener = nullptr, Value(); });
    step("a change that nobody hears", [&] {
        KVXPlatformConfigureDevice(device.id(), 32000, 0, 0);
        KVXPlatformDrainMainQueue(0);
        return changes;
    });
}

} // namespace

std::vector<Outcome> walkScenario(host::Host& host)
{
    std::vector<Outcome> outcomes;
    {
        SteppedDevice device(44100, 2, 8);
        Lender lend;
        const Step step = [&](const char* name, const std::function<Value()>& body) {
            lend.beforeStep();
            const std::string result = tell(body);
            outcomes.push_back({name, result + lend.afterStep()});
        };
        play(host, device, step);
        askForProperties(host, device, lend, step);
        openUnits(host, lend, step);
        listen(host, device, step);
    }
    outcomes.push_back({"left over", leftOver(host)});
    return outcomes;
}

} // namespace endtoend
