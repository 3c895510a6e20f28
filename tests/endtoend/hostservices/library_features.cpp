#include "tests/endtoend/hostservices/library_features.h"

#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"

#include <algorithm>
#include <cstdint>
#include <functional>

namespace endtoend {
namespace {

using host::MemoryBlock;
using host::Object;
using host::String;
using host::Value;

/// The calls with which a test tries one feature of the library (steps), and the arguments that it passes.
class Steps {
public:
    Steps() = default;
    ~Steps()
    {
        for (const Lent& each : lent_)
            for (int i = 0; i < spare; ++i) host::release(each.value);
    }
    Steps(const Steps&) = delete;
    Steps& operator=(const Steps&) = delete;

    /// Compare the reference count of an argument before and after each step. Spare references keep the
    /// argument alive if the library releases the argument too often.
    template <class Handle>
    Handle lend(const Handle& value)
    {
        for (int i = 0; i < spare; ++i) host::retain(value.get());
        lent_.push_back({value.get(), 0});
        return value;
    }
    String lend(const char* bytes, std::uint32_t encoding) { return lend(String::ofBytes(bytes, encoding)); }

    /// Make one call, and note the result if it is not `expected`. The result is the printed value, "refused"
    /// for a host::ProgramError, or class and message of an exception.
    void expect(const std::string& expected, const std::function<Value()>& step)
    {
        for (Lent& each : lent_) each.references = host::referenceCount(each.value);
        const std::string result = resultOf(step);
        if (result != expected) note(result);
        for (const Lent& each : lent_) {
            const std::size_t references = host::referenceCount(each.value);
            if (references < each.references) note("an argument loses a reference");
            if (references > each.references) note("an argument keeps a reference");
            for (std::size_t i = references; i < each.references; ++i) host::retain(each.value);
            for (std::size_t i = each.references; i < references; ++i) host::release(each.value);
        }
    }

    void note(const std::string& result)
    {
        if (std::find(unexpected_.begin(), unexpected_.end(), result) == unexpected_.end())
            unexpected_.push_back(result);
    }

    std::string result() const
    {
        std::string text;
        for (const std::string& each : unexpected_) text += (text.empty() ? "" : "; ") + each;
        return text.empty() ? "works" : text;
    }

private:
    struct Lent {
        const void* value;
        std::size_t references;
    };

    static std::string resultOf(const std::function<Value()>& step)
    {
        try {
            return step().print();
        } catch (const host::HostException& error) {
            return error.what();
        } catch (const host::ProgramError&) {
            return "refused";
        }
    }

    static constexpr int spare = 8;
    std::vector<Lent> lent_;
    std::vector<std::string> unexpected_;
};

constexpr std::uint32_t sliceFrames = 8;

struct Session {
    host::Host& host;
    SteppedDevice device{44100, 2, sliceFrames};
};

// ---- the buffered player ----

MemoryBlock words() { return MemoryBlock::copyOf(std::vector<std::uint16_t>{0x8000, 0x4000}); }
MemoryBlock otherWords() { return MemoryBlock::copyOf(std::vector<std::uint16_t>{0x2000, 0x1000}); }
MemoryBlock floats() { return MemoryBlock::copyOf(std::vector<float>{-0.5f, -0.25f}); }
MemoryBlock otherFloats() { return MemoryBlock::copyOf(std::vector<float>{0.75f, 0.875f}); }

/// Create a buffered player on the stepped device of the test. The player does not stop when its queue is
/// empty.
Object createPlayer(Session& session)
{
    Object player = session.host.create(playerClass);
    player.set("OutputDeviceID", std::int64_t(session.device.id()));
    player.set("NoUnderflow", true);
    return player;
}

std::string queued(const Object& player)
{
    return std::to_string(200 - player.call("FreeSpace").integer()) + " queued";
}

/// Start the player. Expect the samples on both channels, then silence, and a position that counts only
/// slices with samples.
void expectPlayed(Session& session, Steps& steps, const Object& player, const std::vector<float>& expected)
{
    session.device.clearOutput();
    steps.expect("true", [&] { return player.call("Start"); });
    steps.expect("as queued", [&] {
        session.device.step(3 * sliceFrames);
        const std::vector<float> left = session.device.output(0);
        const auto isSilent = [](float sample) { return sample == 0.0f; };
        const std::int64_t position = player.get("OutputPosition").integer();
        if (position == 0 && std::all_of(left.begin(), left.end(), isSilent)) return "silence";
        std::vector<float> queuedFrames = expected;
        queuedFrames.resize(3 * sliceFrames);
        const auto slices = (expected.size() + sliceFrames - 1) / sliceFrames;
        const bool isExpected = left == queuedFrames && position == std::int64_t(slices * sliceFrames);
        return isExpected ? "as queued" : "other samples";
    });
    steps.expect("true", [&] { return session.device.output(0) == session.device.output(1); });
}

void expectStopped(Steps& steps, const Object& player)
{
    steps.expect("nil", [&] { return player.set("NoUnderflow", false), player.call("Stop"); });
    steps.expect("false", [&] { return player.get("IsRunning"); });
    steps.expect("0 queued", [&] { return queued(player); });
    steps.expect("nil", [&] { return player.call("Close"); });
}

void usePlayerProperties(Session& session, Steps& steps)
{
    const Object player = session.host.create(playerClass);
    const struct {
        const char* name;
        const char* first;
    } properties[] = {
        {"SampleRate", "44100"},  {"NumberOfChannels", "1"}, {"OutputDeviceID", "0"},
        {"IsRunning", "false"},   {"OutputPosition", "0"},   {"OutputPositionRelative", "0"},
        {"NoUnderflow", "false"}, {"HadUnderflow", "false"},
    };
    for (const auto& each : properties) steps.expect(each.first, [&] { return player.get(each.name); });

    const auto expectSet = [&](const char* name, const Value& value, const char* expected) {
        steps.expect(expected, [&] { return player.set(name, value), player.get(name); });
    };
    expectSet("SampleRate", 22050.0, "22050");
    expectSet("SampleRate", 44100.0, "44100");
    expectSet("NumberOfChannels", 2, "2");
    expectSet("NumberOfChannels", 1, "1");
    expectSet("HadUnderflow", true, "true");
    expectSet("HadUnderflow", false, "false");
    expectSet("NoUnderflow", true, "true");
    expectSet("IsRunning", true, "refused");
    expectSet("OutputDeviceID", std::int64_t(session.device.id()),
              std::to_string(session.device.id()).c_str());
}

void startAndStop(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    steps.expect("true", [&] { return player.call("HasFreeSpace"); });
    steps.expect("true", [&] { return player.call("Start"); });
    steps.expect("true", [&] { return player.get("IsRunning"); });
    steps.expect("24", [&] { return session.device.step(3 * sliceFrames); });
    steps.expect("true", [&] { return player.get("HadUnderflow"); });
    expectStopped(steps, player);
}

void playWholePcm16(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    steps.expect("true", [&] { return player.call("AddAudio", words()); });
    steps.expect("true", [&] { return player.call("AddAudioStereo", words(), otherWords()); });
    steps.expect("2 queued", [&] { return queued(player); });
    expectPlayed(session, steps, player, {0.5f, 0.25f, 0.5f, 0.125f, 0.25f, 0.0625f});
    expectStopped(steps, player);
}

void playPartsOfPcm16(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    steps.expect("true", [&] { return player.call("AddAudio", words(), 2, 2); });
    steps.expect("true", [&] { return player.call("AddAudio", otherWords(), 0, 4, 15); });
    steps.expect("2 queued", [&] { return queued(player); });
    expectPlayed(session, steps, player, {0.25f, 0.25f, 0.125f});
    steps.expect("true", [&] { return player.call("PlayAudio", words(), 0, 4); });
    steps.expect("true", [&] { return player.call("PlayAudioStereo", otherWords(), words(), 0, 4); });
    steps.expect("2 queued", [&] { return queued(player); });
    expectStopped(steps, player);
}

void playWholeFloat(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    steps.expect("true", [&] { return player.call("AddFloatAudio", floats()); });
    steps.expect("true", [&] { return player.call("AddFloatAudioStereo", floats(), otherFloats()); });
    steps.expect("2 queued", [&] { return queued(player); });
    expectPlayed(session, steps, player, {-0.5f, -0.25f, -0.5f, 0.75f, -0.25f, 0.875f});
    expectStopped(steps, player);
}

void playPartsOfFloat(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    steps.expect("true", [&] { return player.call("AddFloatAudio", otherFloats(), 4, 4); });
    steps.expect("1 queued", [&] { return queued(player); });
    expectPlayed(session, steps, player, {0.875f});
    steps.expect("true", [&] { return player.call("PlayFloatAudio", floats(), 0, 8); });
    steps.expect("true", [&] { return player.call("PlayFloatAudioStereo", otherFloats(), floats(), 0, 8); });
    steps.expect("2 queued", [&] { return queued(player); });
    const bool clears = true;
    steps.expect("true", [&] { return player.call("AddFloatAudio", floats(), 0, 8, clears); });
    steps.expect("1 queued", [&] { return queued(player); });
    expectStopped(steps, player);
}

void addNilBlocks(Session& session, Steps& steps)
{
    const Object player = createPlayer(session);
    const char* const nilBlock = "NilObjectException: Memoryblock is nil";
    steps.expect(nilBlock, [&] { return player.call("AddAudio", nullptr); });
    steps.expect(nilBlock, [&] { return player.call("PlayAudioStereo", words(), nullptr, 0, 4); });
    steps.expect("false", [&] { return player.call("AddFloatAudio", nullptr); });
}

// ---- CoreAudioKVX ----

std::string encodingOf(const Value& text)
{
    switch (text.string().encoding()) {
    case encodingASCII:
        return "ASCII";
    case encodingUTF8:
        return "UTF-8";
    case encodingUnknown:
        return "unknown encoding";
    default:
        return "another encoding";
    }
}

/// Return the value as text, or the status of the call if the value is nil.
template <class Print>
std::string valueOrStatus(const AudioObjects& core, const Value& value, const Print& print)
{
    return value.isNil() ? "nil, status " + core.status() : print(value);
}

std::string printWord(const Value& block) { return std::to_string(*block.memoryBlock().as<std::uint32_t>()); }
std::string printRate(const Value& block) { return Value(*block.memoryBlock().as<double>()).print(); }

void readTextConstants(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    const auto constant = [&] { return core.object.get("kAudioHardwarePropertyDefaultOutputDevice"); };
    steps.expect("dOut", constant);
    steps.expect("ASCII", [&] { return encodingOf(constant()); });
}

void readNumbers(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    steps.expect("255", [&] { return core.object.get("kAudioPropertyWildcardSection"); });
    steps.expect("1",
                 [&] { return session.host.callShared("CoreAudioKVX", "GetHostClockMinimumTimeDeltaKVX"); });
}

/// Look up the property 'dOut' (default output device) by a text. The library reads the first four
/// characters, and finds no property by a shorter text.
void findProperty(const AudioObjects& core, Steps& steps, const char* bytes, std::uint32_t encoding)
{
    const bool isComplete = std::string(bytes).size() >= 4;
    const String id = steps.lend(bytes, encoding);
    steps.expect(
        isComplete ? "4 bytes, writable true, status 0" : "0 bytes, writable false, status who?", [&] {
            Value size, isWritable;
            core.object.call("AudioHardwareGetPropertyInfo", id, byref(size), byref(isWritable));
            return size.print() + " bytes, writable " + isWritable.print() + ", status " + core.status();
        });
}

void findPropertiesByUtf8(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    for (const char* bytes : {"dIn", "dOut", "dOut\xC3\xA9"}) findProperty(core, steps, bytes, encodingUTF8);
}

void findPropertiesByMacRoman(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    for (const char* bytes : {"dIn", "dOut", "dOut\x8E"}) findProperty(core, steps, bytes, encodingMacRoman);
}

void findPropertiesByBytes(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    for (const char* bytes : {"dIn", "dOut", "dOutput"}) findProperty(core, steps, bytes, encodingUnknown);
}

void findPropertiesByBytesBeyondAscii(Session& session, Steps& steps)
{
    findProperty(AudioObjects(session.host), steps, "dOut\x8E", encodingUnknown);
}

void useDefaultDevice(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    const std::uint32_t device = session.device.id();
    const String id = steps.lend("dOut", encodingASCII);
    const String bytes =
        steps.lend(String::ofBytes({reinterpret_cast<const char*>(&device), sizeof device}, encodingUnknown));
    steps.expect("status 0", [&] {
        core.object.call("AudioHardwareSetPropertyString", id, bytes);
        return "status " + core.status();
    });
    steps.expect("the device", [&] {
        return valueOrStatus(
            core, core.object.call("AudioHardwareGetPropertyString", id), [&](const Value& text) {
                return text.string().bytes() == bytes.bytes() ? "the device" : "another device";
            });
    });
    steps.expect("the device", [&] {
        return valueOrStatus(
            core, core.object.call("AudioHardwareGetPropertyMemory", id), [&](const Value& block) {
                return block.memoryBlock().bytes() == bytes.bytes() ? "the device" : "another device";
            });
    });
}

void readDeviceProperties(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    const String name = steps.lend("lnam", encodingASCII), isRunning = steps.lend("goin", encodingASCII);
    const std::int64_t device = session.device.id();
    const auto getName = [&] {
        return core.object.call("AudioDeviceGetPropertyCFString", device, 0, false, name);
    };
    steps.expect("Stepped", [&] {
        return valueOrStatus(core, getName(), [](const Value& text) { return text.text(); });
    });
    steps.expect("UTF-8", [&] { return encodingOf(getName()); });
    steps.expect("0", [&] {
        return valueOrStatus(
            core, core.object.call("AudioDeviceGetPropertyMemory", device, 0, false, isRunning), printWord);
    });
}

void readIntoNewBlock(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    steps.expect("44100", [&] {
        return valueOrStatus(
            core, core.object.call("AudioObjectGetPropertyData", session.device.id(), 'nsrt', 'glob', 0),
            printRate);
    });
}

void useCallersBlock(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    const std::int64_t device = session.device.id();
    const MemoryBlock block = steps.lend(MemoryBlock::ofSize(8));
    steps.expect("44100", [&] {
        return valueOrStatus(
            core, core.object.call("AudioObjectGetPropertyData", device, 'nsrt', 'glob', 0, nullptr, block),
            printRate);
    });
    steps.expect("status 0", [&] {
        core.object.call("AudioObjectSetPropertyData", device, 'nsrt', 'glob', 0, block);
        return "status " + core.status();
    });
}

void useUnit(Session& session, Steps& steps)
{
    const AudioObjects core(session.host);
    const String type = steps.lend("auou", encodingASCII), subtype = steps.lend("genr", encodingMacRoman);
    std::int64_t unit = 0;
    steps.expect("opened, status 0", [&] {
        unit = core.object.call("OpenDefaultComponent", type, subtype).integer();
        return (unit ? "opened, status " : "no unit, status ") + core.status();
    });
    if (unit == 0) return;
    steps.expect("0", [&] { return core.object.call("AudioUnitInitialize", unit); });
    const std::int64_t maximumFramesPerSlice = 14;
    steps.expect("1156", [&] {
        return valueOrStatus(
            core, core.object.call("AudioUnitGetPropertyMemory", unit, maximumFramesPerSlice, 0, 0),
            printWord);
    });
    steps.expect("0", [&] { return core.object.call("AudioUnitUninitialize", unit); });
    steps.expect("status 0", [&] {
        core.object.call("CloseComponent", unit);
        return "status " + core.status();
    });
}

// ---- CoreAudioListenerKVX ----

void listen(Session& session, Steps& steps)
{
    const std::int64_t device = session.device.id();
    int changes = 0;
    const auto setRate = [&](double rate, double seconds) {
        KVXPlatformConfigureDevice(session.device.id(), rate, 0, 0);
        KVXPlatformDrainMainQueue(seconds);
        return "changes: " + std::to_string(changes);
    };
    {
        const Object listener = session.host.create("CoreAudioListenerKVX", device, 'nsrt', 'glob', 0);
        steps.expect("0", [&] { return listener.get("LastError"); });
        steps.expect("true", [&] { return listener.get("ObjectID").integer() == device; });
        steps.expect("true", [&] { return listener.get("PropertySelector").integer() == 'nsrt'; });
        listener.on("Changed", [&](Object& sender, const std::vector<Value>&) {
            changes += sender.get() == listener.get();
            return Value();
        });
        steps.expect("changes: 1", [&] { return setRate(48000, 5.0); });
        steps.expect("changes: 2", [&] { return setRate(44100, 5.0); });
    }
    steps.expect("changes: 2", [&] { return setRate(32000, 0); });
}

void expectNothingAlive(const host::Host& host, Steps& steps)
{
    for (const host::LeakRow& row : host.leaks().rows)
        steps.note(row.className.empty() ? host::kindName(row.kind) : row.className);
    for (const KVXLiveCount& each : livePlatformObjects()) steps.note(each.kind);
}

const struct {
    const char* name;
    void (*use)(Session&, Steps&);
} features[] = {
    // clang-format off
    {"player properties",             usePlayerProperties},
    {"start and stop",                startAndStop},
    {"whole PCM16 blocks",            playWholePcm16},
    {"parts of PCM16 blocks",         playPartsOfPcm16},
    {"whole float blocks",            playWholeFloat},
    {"parts of float blocks",         playPartsOfFloat},
    {"nil blocks",                    addNilBlocks},
    {"text constants",                readTextConstants},
    {"numbers of a class",            readNumbers},
    {"property IDs in UTF-8",         findPropertiesByUtf8},
    {"property IDs in Mac Roman",     findPropertiesByMacRoman},
    {"property IDs as bytes",         findPropertiesByBytes},
    {"property IDs beyond ASCII",     findPropertiesByBytesBeyondAscii},
    {"default device",                useDefaultDevice},
    {"device properties",             readDeviceProperties},
    {"values in a new block",         readIntoNewBlock},
    {"values in the caller's block",  useCallersBlock},
    {"units",                         useUnit},
    {"listeners",                     listen},
    // clang-format on
};

} // namespace

FeatureResults useAllFeatures(host::Host& host)
{
    FeatureResults results;
    {
        Session session{host};
        for (const auto& feature : features) {
            Steps steps;
            try {
                feature.use(session, steps);
                results[feature.name] = steps.result();
            } catch (const host::ProgramError&) {
                results[feature.name] = "refused";
            }
        }
    }
    Steps steps;
    expectNothingAlive(host, steps);
    results["release of everything"] = steps.result();
    return results;
}

} // namespace endtoend
