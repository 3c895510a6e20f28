// Arguments and results keep all their bits between host and library, for every number type in a declaration.
#include "tests/endtoend/loaded_host.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

using namespace endtoend;
using host::MemoryBlock;
using host::Object;
using host::Value;

constexpr std::uint32_t systemObject = 1, global = 'glob';

template <class T, class Bits>
T fromBits(Bits bits)
{
    static_assert(sizeof(T) == sizeof(Bits));
    T value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template <class Bits, class T>
Bits bitsOf(T value)
{
    return fromBits<Bits>(value);
}

struct TypedResults : LoadedHostTest {
    Object core = loaded.host.create("CoreAudioKVX");

    std::int64_t lastError() const { return core.get("Lasterror").integer(); }
};

TEST_F(TypedResults, UInt32KeepsAllItsBits)
{
    for (std::uint32_t bits :
         {0x00000000u, 0x00000001u, 0x7FFFFFFFu, 0x80000000u, 0xFFFFFFFFu, 0x64657623u}) {
        SCOPED_TRACE(testing::Message() << std::hex << bits);
        const Object listener =
            loaded.host.create("CoreAudioListenerKVX", bits, ~bits, bits ^ 0xFFu, bits + 1);
        EXPECT_EQ(listener.get("ObjectID").integer(), std::int64_t(bits)) << "never negative";
        EXPECT_EQ(listener.get("PropertySelector").unsigned64(), std::uint32_t(~bits));
        EXPECT_EQ(listener.get("PropertyScope").unsigned64(), bits ^ 0xFFu);
        EXPECT_EQ(listener.get("PropertyElement").unsigned64(), std::uint32_t(bits + 1));
    }
    EXPECT_EQ(core.call("AudioObjectGetPropertyDataSize", systemObject, 'dOut', global, 0).print(), "4");
    EXPECT_EQ(core.call("AudioObjectGetPropertyDataSize", 0x7FFFFFFF, 'dOut', global, 0).print(), "0");
    EXPECT_EQ(lastError(), '!obj');
}

TEST_F(TypedResults, UInt64KeepsAllItsBits)
{
    // The host clock of the platform counts nanoseconds, so a conversion to nanoseconds returns its argument.
    for (std::uint64_t bits :
         {0x0000000000000000ull, 0x0000000000000001ull, 0x00000000FFFFFFFFull, 0x0000000100000000ull,
          0x0123456789ABCDEFull, 0x7FFFFFFFFFFFFFFFull, 0x8000000000000000ull, 0xFFFFFFFFFFFFFFFFull}) {
        SCOPED_TRACE(testing::Message() << std::hex << bits);
        for (const char* method :
             {"CoreAudioConvertHostTimeToNanosKVX", "CoreAudioConvertNanosToHostTimeKVX"}) {
            const Value answer = loaded.host.callShared("CoreAudioKVX", method, bits);
            EXPECT_EQ(answer.unsigned64(), bits) << method;
            EXPECT_EQ(answer.print(), std::to_string(bits)) << "printed as unsigned";
        }
    }
    const std::uint64_t before =
        loaded.host.callShared("CoreAudioKVX", "CoreAudioGetCurrentHostTimeKVX").unsigned64();
    const std::uint64_t after =
        loaded.host.callShared("CoreAudioKVX", "CoreAudioGetCurrentHostTimeKVX").unsigned64();
    EXPECT_GT(before, 0u);
    EXPECT_GE(after, before);
}

TEST_F(TypedResults, DoubleAndIntegerKeepTheirTypes)
{
    const Value frequency = loaded.host.callShared("CoreAudioKVX", "CoreAudioGetHostClockFrequencyKVX");
    EXPECT_TRUE(frequency.isFloating());
    EXPECT_EQ(bitsOf<std::uint64_t>(frequency.number()), 0x41CDCD6500000000ull) << "1e9";
    const Value delta = loaded.host.callShared("CoreAudioKVX", "GetHostClockMinimumTimeDeltaKVX");
    EXPECT_TRUE(delta.isInteger());
    EXPECT_EQ(delta.integer(), 1);
}

TEST_F(TypedResults, SingleKeepsAllItsBits)
{
    constexpr int volumeParameter = 14;
    const Value unit = core.call("OpenDefaultComponent", "auou", "ahal");
    ASSERT_NE(unit.integer(), 0);
    for (std::uint32_t bits :
         {0x00000000u, 0x00000001u, 0x007FFFFFu, 0x3DCCCCCDu, 0x3EAAAAABu, 0x3F7FFFFFu, 0x3F800000u}) {
        SCOPED_TRACE(testing::Message() << std::hex << bits);
        core.call("AudioUnitSetParameter", unit, volumeParameter, 0, 0, fromBits<float>(bits), 0);
        ASSERT_EQ(lastError(), 0);
        const Value back = core.call("AudioUnitGetParameter", unit, volumeParameter, 0, 0);
        EXPECT_EQ(bitsOf<std::uint32_t>(back.single()), bits);
    }
    EXPECT_EQ(bitsOf<std::uint32_t>(core.call("AudioUnitGetParameter", 0, volumeParameter, 0, 0).single()),
              0u);
    EXPECT_NE(lastError(), 0);
    core.call("CloseComponent", unit);
    EXPECT_EQ(lastError(), 0);
}

TEST_F(TypedResults, ByRefVariablesReturnWithTheirTypes)
{
    const struct {
        const char* selector;
        std::int64_t size;
        bool isWriteable;
    } facts[] = {{"nsrt", 8, true}, {"livn", 4, false}, {"sfmt", 40, true}, {"fsz#", 16, false}};
    const auto device = KVXPlatformBuiltInSimulatedDevice();
    for (const auto& fact : facts) {
        Value size = -5, isWriteable = !fact.isWriteable;
        core.call("AudioDeviceGetPropertyInfo", device, 0, false, fact.selector, byref(size),
                  byref(isWriteable));
        EXPECT_EQ(lastError(), 0);
        EXPECT_EQ(size.integer(), fact.size) << fact.selector;
        EXPECT_TRUE(isWriteable.isBoolean());
        EXPECT_EQ(isWriteable.boolean(), fact.isWriteable) << fact.selector;
    }
    Value size = -5, isWriteable = true;
    core.call("AudioHardwareGetPropertyInfo", "none", byref(size), byref(isWriteable));
    EXPECT_EQ(lastError(), 'who?');
    EXPECT_EQ(size.integer(), 0) << "a failed call leaves 0 and false";
    EXPECT_FALSE(isWriteable.boolean());
}

TEST_F(TypedResults, MemoryBlockArgumentsAreOptionalAndReturnedUnchanged)
{
    const auto device = KVXPlatformBuiltInSimulatedDevice();
    const auto owned = [&](const Value& qualifier) {
        return core.call("AudioObjectGetPropertyData", device, 'ownd', global, 0, qualifier)
            .memoryBlock()
            .size();
    };
    const std::uint32_t streams = 'astr', devices = 'adev';
    EXPECT_EQ(core.call("AudioObjectGetPropertyData", device, 'ownd', global, 0).memoryBlock().size(), 4u)
        << "no qualifier argument";
    EXPECT_EQ(owned(nullptr), 4u) << "nil qualifier";
    EXPECT_EQ(owned(MemoryBlock::copyOf(&streams, 4)), 4u) << "the only stream";
    EXPECT_EQ(owned(MemoryBlock::copyOf(&devices, 4)), 0u) << "the device owns no devices";

    const auto buffer = MemoryBlock::ofSize(12);
    std::memset(buffer.data(), 0xA5, buffer.size());
    {
        const Value answer =
            core.call("AudioObjectGetPropertyData", device, 'nsrt', global, 0, nullptr, buffer);
        EXPECT_EQ(lastError(), 0);
        EXPECT_EQ(answer.memoryBlock().get(), buffer.get()) << "the block of the caller";
        EXPECT_EQ(host::referenceCount(buffer.get()), 2u) << "one reference for the result";
    }
    EXPECT_EQ(host::referenceCount(buffer.get()), 1u);
    EXPECT_EQ(buffer.size(), 12u) << "not resized";
    EXPECT_EQ(*buffer.as<double>(), 44100.0);
    EXPECT_EQ(buffer.bytes().substr(8), "\xA5\xA5\xA5\xA5") << "bytes after the value are unchanged";

    const auto tooShort = MemoryBlock::ofSize(7);
    EXPECT_TRUE(
        core.call("AudioObjectGetPropertyData", device, 'nsrt', global, 0, nullptr, tooShort).isNil());
    EXPECT_EQ(lastError(), '!siz');
    EXPECT_EQ(host::referenceCount(tooShort.get()), 1u);
}

} // namespace
