// Misuse of devices, streams, audio objects and audio units by a host program: each call returns the
// platform's status.
#include "tests/endtoend/audio_objects.h"
#include "tests/endtoend/loaded_host.h"

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;
using host::Value;

const char* const badInstance = "-2147450879";
const char* const shortBadInstance = "-32767"; // badInstance in 16 bits: result of CloseComponent

class BadDeviceInput : public LoadedHostTest {
protected:
    /// Call a method of a CoreAudioKVX object, and return the status of the call.
    template <class... Arguments>
    std::string call(const char* method, const Arguments&... arguments)
    {
        (void)audio_.object.call(method, arguments...);
        return audio_.status();
    }

    /// Expect that all calls for audio units refuse a handle that belongs to no open unit.
    void expectNoUnit(std::int64_t unit)
    {
        SCOPED_TRACE(unit);
        const auto word = MemoryBlock::copyOf(std::vector<UInt32>{0});
        for (const char* method : {"AudioUnitInitialize", "AudioUnitUninitialize", "AudioOutputUnitStart",
                                   "AudioOutputUnitStop"}) {
            EXPECT_EQ(statusText(audio_.object.call(method, unit).integer()), badInstance) << method;
            EXPECT_EQ(audio_.status(), badInstance) << method;
        }
        EXPECT_EQ(call("AudioUnitReset", unit, 0, 0), badInstance);
        EXPECT_EQ(call("CloseComponent", unit), shortBadInstance);
        EXPECT_EQ(call("AudioUnitSetParameter", unit, 0, 0, 0, 1.0f, 0), badInstance);
        EXPECT_EQ(call("AudioUnitGetParameter", unit, 0, 0, 0), badInstance);
        EXPECT_EQ(audio_.object.call("AudioUnitGetParameter", unit, 0, 0, 0).single(), 0.0f);
        EXPECT_EQ(call("AudioUnitSetPropertyString", unit, 8, 0, 0, "text"), badInstance);
        EXPECT_EQ(call("AudioUnitSetPropertyMemory", unit, 8, 0, 0, word, 0, 4), badInstance);
        EXPECT_EQ(call("AudioUnitGetPropertyString", unit, 8, 0, 0), badInstance);
        EXPECT_EQ(call("AudioUnitGetPropertyMemory", unit, 8, 0, 0), badInstance);
        EXPECT_EQ(call("AudioUnitGetPropertyCFString", unit, 8, 0, 0), badInstance);
        Value size = 7, isWritable = true;
        audio_.object.call("AudioUnitGetPropertyInfo", unit, 8, 0, 0, host::byref(size),
                           host::byref(isWritable));
        EXPECT_EQ(audio_.status(), badInstance);
        EXPECT_EQ(size.integer(), 0);
        EXPECT_FALSE(isWritable.boolean());
    }

    AudioObjects audio_{loaded.host};
};

TEST_F(BadDeviceInput, InvalidOrClosedUnitsAreRefused)
{
    for (std::int64_t unit : {0, 1, -1, 4096, 0x7FFFFFF0}) expectNoUnit(unit);
    const std::int64_t open = audio_.object.call("OpenDefaultComponent", "auou", "def ").integer();
    ASSERT_NE(open, 0);
    EXPECT_EQ(audio_.status(), "0");
    EXPECT_EQ(call("AudioUnitInitialize", open), "0");
    EXPECT_EQ(call("CloseComponent", open), "0");
    expectNoUnit(open);
    const std::int64_t next = audio_.object.call("OpenDefaultComponent", "auou", "def ").integer();
    EXPECT_NE(next, open) << "a closed handle is not reused at once";
    expectNoUnit(open);
    EXPECT_EQ(call("CloseComponent", next), "0");
    for (const char* type : {"", "a", "none", "longer than four"}) {
        EXPECT_EQ(audio_.object.call("OpenDefaultComponent", type, type).integer(), 0) << type;
        EXPECT_EQ(audio_.status(), "-1") << type;
    }
}

TEST_F(BadDeviceInput, UnknownObjectsAreRefused)
{
    for (std::int64_t id : {0, 0x7FFFFFFF, -1}) {
        SCOPED_TRACE(id);
        const auto block = MemoryBlock::ofSize(8);
        EXPECT_EQ(call("AudioDeviceGetPropertyString", id, 0, false, "name"), "!dev");
        EXPECT_EQ(call("AudioDeviceGetPropertyMemory", id, 0, false, "name"), "!dev");
        EXPECT_EQ(call("AudioDeviceGetPropertyCFString", id, 0, false, "lnam"), "-1")
            << "only this method returns -1";
        EXPECT_EQ(call("AudioDeviceSetPropertyMemory", id, nullptr, 0, false, "nsrt", block, 0, 8), "!dev");
        EXPECT_EQ(call("AudioDeviceSetPropertyString", id, nullptr, 0, false, "nsrt", "12345678"), "!dev");
        EXPECT_EQ(call("AudioStreamGetPropertyString", id, 0, "sdir"), "!str");
        EXPECT_EQ(call("AudioStreamGetPropertyMemory", id, 0, "sdir"), "!str");
        EXPECT_EQ(call("AudioStreamGetPropertyCFString", id, 0, "lnam"), "!str");
        EXPECT_EQ(call("AudioStreamSetPropertyMemory", id, nullptr, 0, "pft ", block, 0, 8), "!str");
        EXPECT_EQ(call("AudioObjectGetPropertyDataSize", id, 'livn', 'glob', 0), "!obj");
        EXPECT_EQ(call("AudioObjectGetPropertyData", id, 'livn', 'glob', 0), "!obj");
        EXPECT_EQ(call("AudioObjectGetPropertyData", id, 'livn', 'glob', 0, nullptr, block), "!obj");
        EXPECT_EQ(call("AudioObjectSetPropertyData", id, 'nsrt', 'glob', 0, block), "!obj");
    }
}

TEST_F(BadDeviceInput, UnknownPropertiesAreRefused)
{
    const std::int64_t device = KVXPlatformBuiltInSimulatedDevice();
    for (const char* selector : {"zzzz", "#dev", "****", "jack", "rbuf", "vfsz"}) {
        SCOPED_TRACE(selector);
        EXPECT_EQ(call("AudioDeviceGetPropertyString", device, 0, false, selector), "who?");
        EXPECT_EQ(call("AudioDeviceGetPropertyMemory", device, 0, true, selector), "who?");
        EXPECT_EQ(call("AudioDeviceSetPropertyString", device, nullptr, 0, false, selector, "1234"), "who?");
        EXPECT_EQ(call("AudioHardwareGetPropertyString", selector), "who?");
        EXPECT_EQ(call("AudioHardwareGetPropertyMemory", selector), "who?");
        EXPECT_EQ(call("AudioHardwareGetPropertyCFString", selector), "who?");
        EXPECT_EQ(call("AudioHardwareSetPropertyString", selector, ""), "who?");
    }
    for (const char* selector : {"", "a", "abc"})
        EXPECT_EQ(call("AudioHardwareGetPropertyMemory", selector), "who?") << selector;
    for (std::int64_t channel : {-1, 3, 0x7FFFFFFF})
        EXPECT_EQ(call("AudioDeviceGetPropertyMemory", device, channel, false, "volm"), "who?") << channel;
}

TEST_F(BadDeviceInput, ValuesOfTheWrongSizeAreRefused)
{
    const SteppedDevice stepped;
    const std::int64_t device = stepped.id();
    const auto rate = MemoryBlock::copyOf(std::vector<double>{48000});
    // Any offset into the memory block is safe, because the platform refuses the length or the property
    // before reading.
    const struct {
        const char* selector;
        MemoryBlock block;
        std::int64_t offset, length;
        const char* status;
    } facts[] = {
        {"nsrt", rate, 0, 7, "!siz"},          {"nsrt", rate, 0, 9, "!siz"},
        {"nsrt", rate, 0, 0, "!siz"},          {"nsrt", rate, 0, -1, "!siz"},
        {"nsrt", rate, 0, 0x7FFFFFFF, "!siz"}, {"nsrt", rate, 8, 4, "!siz"},
        {"nsrt", rate, -1, 7, "!siz"},         {"nsrt", rate, 0x7FFFFFFF, 0x7FFFFFFF, "!siz"},
        {"nsrt", nullptr, 0, 8, "nope"},       {"nsrt", nullptr, 16, 4, "!siz"},
        {"livn", rate, 0, 4, "unop"},          {"livn", rate, -0x7FFFFFFF, -1, "unop"},
        {"livn", nullptr, 4096, 4, "unop"},    {"zzzz", rate, 0x7FFFFFFF, -1, "who?"},
    };
    for (const auto& fact : facts)
        EXPECT_EQ(call("AudioDeviceSetPropertyMemory", device, nullptr, 0, false, fact.selector, fact.block,
                       fact.offset, fact.length),
                  fact.status)
            << fact.selector << " " << fact.offset << " " << fact.length;
    EXPECT_EQ(audio_.get<Float64>(device, overall('nsrt')), 44100.0);

    EXPECT_EQ(call("AudioDeviceSetPropertyString", device, nullptr, 0, false, "nsrt", ""), "!siz");
    EXPECT_EQ(call("AudioDeviceSetPropertyString", device, nullptr, 0, false, "nsrt", nullptr), "!siz");
    EXPECT_EQ(call("AudioDeviceSetPropertyString", device, nullptr, 0, false, nullptr, nullptr), "who?");
    EXPECT_EQ(call("AudioObjectSetPropertyData", device, 'nsrt', 'glob', 0, nullptr), "!siz");
    EXPECT_EQ(call("AudioObjectSetPropertyData", device, 'nsrt', 'glob', 0, MemoryBlock::ofSize(0)), "!siz");
    EXPECT_EQ(call("AudioObjectGetPropertyData", device, 'nsrt', 'glob', 0, nullptr, MemoryBlock::ofSize(7)),
              "!siz");
    EXPECT_EQ(call("AudioObjectGetPropertyData", device, 'nsrt', 'glob', 0, nullptr, MemoryBlock::ofSize(0)),
              "!siz");

    const auto large = MemoryBlock::ofSize(20);
    const auto filled =
        audio_.object.call("AudioObjectGetPropertyData", device, 'nsrt', 'glob', 0, nullptr, large)
            .memoryBlock();
    EXPECT_EQ(audio_.status(), "0");
    EXPECT_EQ(filled.get(), large.get()) << "the block of the caller, with its size";
    EXPECT_EQ(filled.size(), 20u);
    EXPECT_EQ(*filled.as<double>(), 44100.0);
}

TEST_F(BadDeviceInput, StringMethodsReadPropertiesOfOtherTypes)
{
    const SteppedDevice device;
    const std::int64_t id = device.id();
    EXPECT_EQ(audio_.object.call("AudioDeviceGetPropertyCFString", id, 0, false, "lnam").text(), "Stepped");
    EXPECT_EQ(audio_.object.call("AudioDeviceGetPropertyString", id, 0, false, "name").string().bytes(),
              std::string_view("Stepped", 8));
    if (sizeof(void*) == 4) { // a CFString reference has 4 bytes, but the value of 'nsrt' has 8
        EXPECT_TRUE(audio_.object.call("AudioDeviceGetPropertyCFString", id, 0, false, "nsrt").isNil());
        EXPECT_EQ(audio_.status(), "0");
    }
    EXPECT_TRUE(audio_.object.call("AudioDeviceGetPropertyMemory", id, 0, true, "stm#").isNil());
    EXPECT_EQ(audio_.status(), "-1") << "the stream list is empty";
}

// ---- the host clock ----

TEST_F(BadDeviceInput, HostClockConvertsEveryTimeExactly)
{
    const auto shared = [&](const char* method, auto... arguments) {
        return loaded.host.callShared("CoreAudioKVX", method, arguments...);
    };
    EXPECT_EQ(shared("CoreAudioGetHostClockFrequencyKVX").number(), 1e9);
    EXPECT_EQ(shared("GetHostClockMinimumTimeDeltaKVX").integer(), 1);
    for (std::uint64_t time : {0ull, 1ull, 0xFFFFFFFFull, 1ull << 53 | 1, 0x7FFFFFFFFFFFFFFFull,
                               0x8000000000000000ull, 0xFFFFFFFFFFFFFFFFull}) {
        EXPECT_EQ(shared("CoreAudioConvertHostTimeToNanosKVX", time).unsigned64(), time);
        EXPECT_EQ(shared("CoreAudioConvertNanosToHostTimeKVX", time).unsigned64(), time);
    }
    std::uint64_t last = 0;
    for (int i = 0; i < 1000; ++i) {
        const std::uint64_t now = shared("CoreAudioGetCurrentHostTimeKVX").unsigned64();
        ASSERT_GE(now, last);
        last = now;
    }
    EXPECT_GT(last, 0u);
}

} // namespace
