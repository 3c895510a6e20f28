// The component's GetInfo and SetInfo calls: single values, lists, and accepted settings.
#include "tests/soundstream/stream_fixture.h"

#include <cstring>

namespace {

using namespace soundstream_test;

class SoundStreamInfo : public StreamTest {
protected:
    SoundStreamInfo()
    {
        open();
        instance_ = openInstanceWithMixer();
    }

    ComponentResult getInfo(OSType code, void* info, long source = 0)
    {
        spy::forgetCalls();
        return send(instance_, 259, {source, static_cast<long>(code), reinterpret_cast<long>(info)});
    }
    ComponentResult setInfo(OSType code, long info, long source = 0)
    {
        spy::forgetCalls();
        return send(instance_, 260, {source, static_cast<long>(code), info});
    }

    /// The recorded platform calls, without the call that the dispatcher makes.
    static Notes calls()
    {
        Notes all = spy::calls();
        all.erase(all.begin());
        return all;
    }

private:
    ComponentInstance instance_ = nullptr;
};

std::string bytesOf(const void* value, std::size_t size)
{
    return std::string(static_cast<const char*>(value), size);
}
std::string bytesOf(UInt16 value) { return bytesOf(&value, sizeof value); }
std::string bytesOf(UInt32 value) { return bytesOf(&value, sizeof value); }

TEST_F(SoundStreamInfo, GetInfoWritesTheFixedValues)
{
    // clang-format off
    const struct { OSType code; std::string value; const char* why; } facts[] = {
        {0x6368616E, bytesOf(UInt16{2}),          "chan"},
        {0x73726174, bytesOf(UInt32{0xAC440000}), "srat: 44100 in 16.16"},
        {0x7373697A, bytesOf(UInt16{16}),         "ssiz"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const std::size_t offset : {std::size_t{0}, std::size_t{1}, std::size_t{2}}) {
            SCOPED_TRACE(fact.why);
            char buffer[16];
            std::memset(buffer, 0x77, sizeof buffer);
            EXPECT_EQ(getInfo(fact.code, buffer + offset), noErr);
            EXPECT_EQ(bytesOf(buffer + offset, fact.value.size()), fact.value);
            EXPECT_EQ(buffer[offset + fact.value.size()], 0x77) << "and nothing after it";
            EXPECT_EQ(calls(), Notes());
        }
}

TEST_F(SoundStreamInfo, GetInfoWritesListsOfOneValue)
{
    // clang-format off
    const struct { OSType code; std::string value; const char* call; const char* why; } facts[] = {
        {0x63686176, bytesOf(UInt16{2}),          "NewHandle(2)", "chav"},
        {0x73726176, bytesOf(UInt32{0xAC440000}), "NewHandle(4)", "srav: a whole rate"},
        {0x73736176, bytesOf(UInt16{16}),         "NewHandle(2)", "ssav"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        struct {
            SoundInfoList list;
            UInt16 guard;
        } result;
        std::memset(&result, 0x77, sizeof result);
        EXPECT_EQ(getInfo(fact.code, &result), noErr);
        EXPECT_EQ(result.list.count, 1);
        EXPECT_EQ(calls(), (Notes{fact.call}));
        EXPECT_EQ(sound_spy::bytesOf(result.list.infoHandle), fact.value)
            << "the handle has the value's size";
        EXPECT_EQ(result.guard, 0x7777);
        DisposeHandle(result.list.infoHandle);

        std::memset(&result, 0x77, sizeof result);
        spy::answer("NewHandle").status = -108;
        EXPECT_EQ(getInfo(fact.code, &result), memFullErr);
        EXPECT_EQ(result.list.count, 0x7777) << "nothing is written";
        spy::answer("NewHandle").status = noErr;
    }
}

TEST_F(SoundStreamInfo, GetInfoRefusesANullPointer)
{
    for (const OSType code : {'chan', 'chav', 'srat', 'srav', 'ssav', 'ssiz'}) {
        EXPECT_EQ(getInfo(static_cast<OSType>(code), nullptr), paramErr);
        EXPECT_EQ(calls(), Notes());
    }
}

TEST_F(SoundStreamInfo, GetInfoNeedsNoInstance)
{
    UInt32 rate = 0;
    EXPECT_EQ(sendWith(nullptr, 259, {0, 'srat', reinterpret_cast<long>(&rate)}), noErr);
    EXPECT_EQ(rate, 0xAC440000u);
}

TEST_F(SoundStreamInfo, SetInfoAcceptsTheFixedValuesOnly)
{
    // clang-format off
    const struct { OSType code; long value; OSStatus status; const char* why; } facts[] = {
        {'chan', 2,                0,    "two channels"},
        {'chan', 0,                -201, "none"},
        {'chan', 1,                -201, "one"},
        {'chan', 3,                -201, "three"},
        {'chan', -2,               -201, "two, negative"},
        {'chan', 0x10002,          0,    "only the low 16 bits count"},
        {'chan', long(0xFFFF0002), 0,    "only the low 16 bits count"},
        {'chan', 0x20000,          -201, "only the low 16 bits count"},
        {'ssiz', 16,               0,    "16 bits"},
        {'ssiz', 0,                -226, "none"},
        {'ssiz', 8,                -226, "8"},
        {'ssiz', 15,               -226, "one less"},
        {'ssiz', 17,               -226, "one more"},
        {'ssiz', 24,               -226, "24"},
        {'ssiz', 0x7FFF0010,       0,    "only the low 16 bits count"},
        {'ssiz', 0x100000,         -226, "only the low 16 bits count"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        EXPECT_EQ(setInfo(fact.code, fact.value), fact.status);
        EXPECT_EQ(calls(), Notes());
    }
    SInt16 channels = 0;
    getInfo('chan', &channels);
    EXPECT_EQ(channels, 2) << "nothing has changed";
}

TEST_F(SoundStreamInfo, SetInfoReadsTheRateThroughAPointer)
{
    // clang-format off
    const struct { UInt32 rate; OSStatus status; const char* why; } facts[] = {
        {0xAC440000, 0,    "44100"},
        {0xAC440001, -225, "a little more"},
        {0xAC43FFFF, -225, "a little less"},
        {0xBB800000, -225, "48000"},
        {0x56220000, -225, "22050"},
        {0x0000AC44, -225, "44100 as an integer"},
        {0,          -225, "none"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const std::size_t offset : {std::size_t{0}, std::size_t{1}}) {
            SCOPED_TRACE(fact.why);
            char buffer[8];
            std::memcpy(buffer + offset, &fact.rate, sizeof fact.rate);
            EXPECT_EQ(setInfo('srat', reinterpret_cast<long>(buffer + offset)), fact.status);
            EXPECT_EQ(calls(), Notes());
        }
    EXPECT_EQ(setInfo('srat', 0), -225) << "a null pointer";
    UInt32 rate = 0;
    getInfo('srat', &rate);
    EXPECT_EQ(rate, 0xAC440000u) << "nothing has changed";
}

TEST_F(SoundStreamInfo, ForwardsUnknownCodesToTheMixer)
{
    char value = 0;
    const long source = 0x4444;
    spy::name(reinterpret_cast<void*>(source), "source");
    spy::name(&value, "value");
    spy::answer("SoundComponentGetInfo").status = -231;
    spy::answer("SoundComponentSetInfo").status = -232;
    for (const std::string code : {"volu", "rmul", "qual", "chaN", "wxyz"}) {
        const OSType word = static_cast<OSType>(static_cast<unsigned char>(code[0])) << 24 |
                            static_cast<OSType>(static_cast<unsigned char>(code[1])) << 16 |
                            static_cast<OSType>(static_cast<unsigned char>(code[2])) << 8 |
                            static_cast<OSType>(static_cast<unsigned char>(code[3]));
        EXPECT_EQ(getInfo(word, &value, source), -231);
        EXPECT_EQ(calls(), (Notes{"SoundComponentGetInfo(mixer1, source, '" + code + "', value)"}));
        EXPECT_EQ(getInfo(word, nullptr, source), -231);
        EXPECT_EQ(calls(), (Notes{"SoundComponentGetInfo(mixer1, source, '" + code + "', null)"}));
        EXPECT_EQ(setInfo(word, reinterpret_cast<long>(&value), source), -232);
        EXPECT_EQ(calls(), (Notes{"SoundComponentSetInfo(mixer1, source, '" + code + "', value)"}));
    }
    for (const char* const list : {"chav", "srav", "ssav"}) {
        const OSType word =
            OSType(list[0]) << 24 | OSType(list[1]) << 16 | OSType(list[2]) << 8 | OSType(list[3]);
        EXPECT_EQ(setInfo(word, 0), -232) << "lists cannot be set: the mixer answers";
        EXPECT_EQ(calls(), (Notes{std::string("SoundComponentSetInfo(mixer1, null, '") + list + "', null)"}));
    }
}

} // namespace
