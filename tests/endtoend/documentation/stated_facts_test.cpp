// Numbers and statuses that the pages of docs/reference state for Linux.
#include "tests/endtoend/documentation/markdown.h"
#include "tests/endtoend/loaded_host.h"
#include "tests/support/sound_samples.h"
#include "tests/support/temporary_folder.h"

#include <cmath>
#include <regex>
#include <set>

namespace {

using namespace endtoend;
using host::Object;
using host::Value;

constexpr int systemObject = 1, noUnit = -2147450879, noGraph = -50;

struct StatedFacts : LoadedHostTest {
    const support::TemporaryFolder folder;
    const Object player = loaded.host.create("AUPlayerKVX");
    const Object core = loaded.host.create("CoreAudioKVX");

    void load()
    {
        support::writeSound(support::makeNoise(44100, 2, 2000), folder / "x.wav");
        EXPECT_TRUE(player.call("LoadFile", host::FolderItem::at(folder / "x.wav")).boolean());
    }
    static std::int64_t errorOf(const Object& object) { return object.get("Lasterror").integer(); }
    double parameter(const char* handle, int id, int scope = 0) const
    {
        return core.call("AudioUnitGetParameter", player.get(handle), id, scope, 0).number();
    }
};

TEST_F(StatedFacts, HoldBeforeALoad)
{
    const struct {
        const char* property;
        int error;
    } facts[] = {
        {"CurrentDeviceID", noUnit},   {"Pan", noUnit},        {"OutputVolume", noUnit}, {"TimeRate", noUnit},
        {"PitchRate", noUnit},         {"MeterLevel", noUnit}, {"Overlap", noUnit},      {"Playing", noGraph},
        {"EnablePeakLocking", noUnit}, {"SampleRate", -1},     {"DefaultDeviceID", 0},   {"OuputDevices", 0},
    };
    EXPECT_EQ(errorOf(player), 0) << "a new object";
    for (const auto& fact : facts) {
        player.get(fact.property);
        EXPECT_EQ(errorOf(player), fact.error) << fact.property;
    }
    player.set("TimePitchUnit", 2);
    EXPECT_EQ(errorOf(player), noUnit);
    EXPECT_EQ(player.get("TimePitchUnit").integer(), 2);
    EXPECT_TRUE(player.call("ChannelMap").isNil());
    EXPECT_EQ(errorOf(player), noUnit);
    for (const char* method : {"Play", "Pause", "Reset"}) {
        player.call(method);
        EXPECT_EQ(errorOf(player), -1) << method;
    }
}

TEST_F(StatedFacts, HoldForRangesAndDefaults)
{
    load();
    const struct {
        const char* property;
        double initial, written, read;
    } facts[] = {
        {"OutputVolume", 1, 2, 1},   {"OutputVolume", 1, -1, 0},    {"Pan", 0, 5, 1},
        {"Pan", 0, -5, -1},          {"TimeRate", 1, 1.239, 1.23f}, {"TimeRate", 1, 100, 32},
        {"TimeRate", 1, 0, 0.03125}, {"PitchRate", 0, 9999, 2400},  {"PitchRate", 0, -9999, -2400},
        {"Overlap", 8, 1, 3},        {"Overlap", 8, 100, 32},       {"EnablePeakLocking", 1, 0, 0},
        {"TimePitchUnit", 0, 0, 1},  {"TimePitchUnit", 1, 7, 1},
    };
    const auto valueOf = [&](const char* property) {
        const Value value = player.get(property);
        return value.isBoolean() ? double(value.boolean()) : value.number();
    };
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.property);
        EXPECT_EQ(valueOf(fact.property), fact.initial);
        const bool isBoolean = player.get(fact.property).isBoolean();
        player.set(fact.property, isBoolean ? Value(fact.written != 0) : Value(fact.written));
        EXPECT_EQ(valueOf(fact.property), fact.read);
        if (!isBoolean && fact.property != std::string("TimePitchUnit"))
            player.set(fact.property, fact.initial);
    }
    player.set("TimeRate", 32);
    EXPECT_EQ(parameter("VariSpeedHandle", 0), 4.0);
    player.set("TimeRate", 0.1);
    EXPECT_EQ(parameter("VariSpeedHandle", 0), 0.25);
    player.set("PitchRate", 1200);
    EXPECT_EQ(parameter("VariSpeedHandle", 0), 2.0) << "the last written of rate and pitch";
    EXPECT_EQ(player.get("MeterLevel").number(), -120.0);
    player.get("InputVolume", 1);
    EXPECT_EQ(errorOf(player), -10877);
    EXPECT_TRUE(player.get("InputEnabled", 0).boolean());
    player.set("OutputVolume", std::nan(""));
    EXPECT_EQ(errorOf(player), -10851);
    player.set("TimePitchUnit", 1);
    EXPECT_EQ(errorOf(player), -1) << "nothing had to change";
    player.call("updateEQ", host::Array::of(std::vector<double>(40, 99)));
    EXPECT_EQ(parameter("EqualizerHandle", 17), 20.0);
    parameter("MixerHandle", 3001, 1);
    EXPECT_EQ(errorOf(core), 0);
}

TEST_F(StatedFacts, HoldForFormatsAndChannels)
{
    load();
    const std::string page = readDocument("docs/reference/AUPlayerKVX.md");
    for (const char* property : {"ClientFormatString", "OutputFormatString"})
        EXPECT_NE(page.find("`" + player.get(property).text() + "`"), page.npos) << property;
    EXPECT_EQ(player.call("ChannelMap").array().numbers(), (std::vector<double>{0, 1}));
    player.call("setChannelMap", host::Array::of(std::vector<HostInteger>{-2}));
    EXPECT_EQ(errorOf(player), -10851);
    player.call("setChannelMap", host::Array::of(std::vector<HostInteger>{1}));
    EXPECT_EQ(player.call("ChannelMap").array().numbers(), (std::vector<double>{1, -1}));

    const Object another = loaded.host.create("AUPlayerKVX");
    another.set("OutputUnit", 3);
    EXPECT_TRUE(another.call("LoadFile", host::FolderItem::at(folder / "x.wav")).boolean());
    another.set("CurrentDeviceID", another.get("DefaultDeviceID"));
    EXPECT_EQ(errorOf(another), -10865);
}

TEST_F(StatedFacts, HoldForTheBufferedPlayer)
{
    const Object buffered = loaded.host.create("CoreAudioPlayerKVX");
    const auto block = host::MemoryBlock::ofSize(64);
    const auto adds = [&](int bits) { return buffered.call("AddAudio", block, 0, 64, bits, true).boolean(); };
    const std::string page = readDocument("docs/reference/CoreAudioPlayerKVX.md");
    int count = 0;
    for (int bits = 0; bits < 70; ++bits) {
        const std::string row = "\n| " + std::to_string(bits) + (bits == 16 ? " (default) |" : " |");
        const bool isStated = page.find(row) != page.npos;
        count += isStated;
        EXPECT_EQ(adds(bits), isStated) << bits;
    }
    EXPECT_EQ(count, 7);
    EXPECT_EQ(buffered.call("FreeSpace").integer(), 199) << "each call removed the waiting buffer";

    EXPECT_FALSE(buffered.call("AddFloatAudio", nullptr).boolean());
    const struct {
        const char* property;
        double initial, refused;
    } facts[] = {{"SampleRate", 44100, 0.5}, {"NumberOfChannels", 1, 3}};
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.property);
        EXPECT_EQ(buffered.get(fact.property).number(), fact.initial);
        buffered.set(fact.property, fact.refused);
        EXPECT_FALSE(adds(16));
        EXPECT_TRUE(buffered.call("AddFloatAudio", block).boolean()) << "not checked for floats";
        buffered.set(fact.property, fact.initial);
    }
    buffered.set("OutputDeviceID", 999);
    EXPECT_FALSE(buffered.call("Start").boolean());
    EXPECT_FALSE(buffered.get("IsRunning").boolean());
}

TEST_F(StatedFacts, QuoteMessagesOfThePlugIn)
{
    std::string sources;
    for (const char* file : {"auplayer/loading.cpp", "auplayer/devices.cpp", "auplayer/channel_map.cpp",
                             "auplayer/unit_parameters.cpp", "player/ingestion.cpp",
                             "coreaudio/audio_object.cpp", "plugin/memory_block.cpp"})
        sources += readDocument(file);
    static const std::regex quoted("`(\\w+Exception)`\\s+\"([^\"]+)\"");
    std::set<std::string> messages;
    for (const host::ClassInfo* info : loaded.host.pluginClasses()) {
        const std::string page = readDocument("docs/reference/" + info->name + ".md");
        for (std::sregex_iterator each(page.begin(), page.end(), quoted), end; each != end; ++each) {
            std::string message = std::regex_replace((*each)[2].str(), std::regex("\\s+"), " ");
            message = std::regex_replace(message, std::regex("…"), "%lld");
            messages.insert(message);
            EXPECT_NE(sources.find("\"" + message + "\""), sources.npos) << info->name << ": " << message;
        }
    }
    EXPECT_EQ(messages.size(), 10u);
}

TEST_F(StatedFacts, HoldForUnknownObjects)
{
    core.call("AudioHardwareGetPropertyString", "none");
    EXPECT_EQ(errorOf(core), 2003332927) << "who?";
    core.call("AudioObjectGetPropertyDataSize", 999, 'name', 'glob', 0);
    EXPECT_EQ(errorOf(core), 560947818) << "!obj";
    core.call("AudioDeviceGetPropertyString", 999, 0, false, "name");
    EXPECT_EQ(errorOf(core), 560227702) << "!dev";
    core.call("AudioUnitGetParameter", 999, 0, 0, 0);
    EXPECT_EQ(errorOf(core), noUnit);
    EXPECT_EQ(loaded.host.callShared("CoreAudioKVX", "CoreAudioGetHostClockFrequencyKVX").number(), 1e9);
    EXPECT_EQ(loaded.host.callShared("CoreAudioKVX", "GetHostClockMinimumTimeDeltaKVX").integer(), 1);

    const Object unknownObject = loaded.host.create("CoreAudioListenerKVX", 999, 'dOut', 'glob', 0);
    EXPECT_EQ(unknownObject.get("LastError").integer(), 560947818);
    const Object unknownProperty =
        loaded.host.create("CoreAudioListenerKVX", systemObject, 'none', 'glob', 0);
    EXPECT_EQ(unknownProperty.get("LastError").integer(), 0);
}

/// Ask for the size and the writability of a property of an object of the simulated device, at channel 0
/// or 1. Returns the status.
std::int64_t infoOf(const Object& core, const std::string& constant, Value& size, Value& isWritable)
{
    const Value selector = core.get(constant);
    const auto device = std::int64_t(KVXPlatformBuiltInSimulatedDevice());
    if (constant.rfind("kAudioHardware", 0) == 0) {
        core.call("AudioHardwareGetPropertyInfo", selector, host::byref(size), host::byref(isWritable));
    } else if (constant.rfind("kAudioStream", 0) == 0) {
        const Value streams = core.call("AudioDeviceGetPropertyMemory", device, 0, false, "stm#");
        std::uint32_t stream = 0;
        std::memcpy(&stream, streams.memoryBlock().data(), sizeof stream);
        core.call("AudioStreamGetPropertyInfo", stream, 0, selector, host::byref(size),
                  host::byref(isWritable));
    } else {
        for (const int channel : {0, 1}) {
            core.call("AudioDeviceGetPropertyInfo", device, channel, false, selector, host::byref(size),
                      host::byref(isWritable));
            if (core.get("Lasterror").integer() == 0) break;
        }
    }
    return core.get("Lasterror").integer();
}

TEST_F(StatedFacts, HoldForEachSelectorConstant)
{
    int count = 0;
    for (const MemberEntry& entry : memberEntries(readDocument("docs/reference/CoreAudioKVX.md"))) {
        const std::string& declaration = entry.declarations.at(0);
        const std::string name = declaration.substr(0, declaration.find(' '));
        if (name[0] != 'k' || name.find("Wildcard") != name.npos) continue;
        ++count;
        SCOPED_TRACE(name);
        Value size = 0, isWritable = false;
        const bool isKnown = infoOf(core, name, size, isWritable) == 0;
        EXPECT_EQ(entry.prose.find("not on Linux") == std::string::npos, isKnown);
        if (!isKnown) continue;
        EXPECT_EQ(entry.prose.find("writable") != std::string::npos, isWritable.boolean());
        const std::string type = entry.prose.substr(entry.prose.rfind('`', entry.prose.find(':')) + 1);
        if (type.rfind("UInt32:", 0) == 0 || type.rfind("Float32", 0) == 0) EXPECT_EQ(size.integer(), 4);
        if (type.rfind("Float64:", 0) == 0) EXPECT_EQ(size.integer(), 8);
        if (type.rfind("two Float64", 0) == 0) EXPECT_EQ(size.integer(), 16);
        if (type.rfind("CFString", 0) == 0) EXPECT_EQ(size.integer(), std::int64_t(sizeof(void*)));
    }
    EXPECT_EQ(count, 78);
}

} // namespace
