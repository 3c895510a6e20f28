// Units, components and parameters: one platform call per method.
#include "tests/coreaudio/subject.h"

#include <climits>
#include <cmath>
#include <cstring>

namespace {

using namespace subject;
using spy::Calls;

using UnitCalls = Subject;

HostInteger integer(std::uint32_t bits) { return static_cast<std::int32_t>(bits); }

const OSStatus statuses[] = {0, 1, -1, -50, -10879, static_cast<OSStatus>(0x80008001), INT_MAX, INT_MIN};

TEST_F(UnitCalls, ReturnTheStatusOfAUnitFunction)
{
    for (const char* name :
         {"AudioUnitInitialize", "AudioUnitUninitialize", "AudioOutputUnitStart", "AudioOutputUnitStop"})
        for (const OSStatus status : statuses) {
            SCOPED_TRACE(name);
            property_spy::reset();
            spy::answer(name).status = status;
            lasterror() = 4711;
            EXPECT_EQ(members.call<HostInteger>(name, object(), integer(0x7654320C)), status);
            EXPECT_EQ(lasterror(), status);
            EXPECT_EQ(spy::calls(), Calls{std::string(name) + "(handle 0x7654320C)"});
        }
}

TEST_F(UnitCalls, PassANullUnitToThePlatform)
{
    for (const char* name :
         {"AudioUnitInitialize", "AudioUnitUninitialize", "AudioOutputUnitStart", "AudioOutputUnitStop"}) {
        property_spy::reset();
        spy::answer(name).status = -50;
        EXPECT_EQ(members.call<HostInteger>(name, object(), HostInteger{0}), -50);
        EXPECT_EQ(spy::calls(), Calls{std::string(name) + "(handle 0x0)"});
    }
}

TEST_F(UnitCalls, PassScopeAndElementToReset)
{
    for (const OSStatus status : statuses) {
        property_spy::reset();
        spy::answer("AudioUnitReset").status = status;
        EXPECT_EQ(members.call<HostInteger>("AudioUnitReset", object(), integer(0x7654320C),
                                            integer(0x80000002), integer(0xFFFFFFFF)),
                  status);
        EXPECT_EQ(lasterror(), status);
        EXPECT_EQ(spy::calls(), Calls{"AudioUnitReset(handle 0x7654320C, 0x80000002, 0xFFFFFFFF)"});
    }
}

TEST_F(UnitCalls, OpenTheDefaultComponent)
{
    const struct {
        const char* why;
        const char *type, *subtype; ///< component codes as text; null if there is no string
        const char* codes;
        std::uint32_t handle;
        HostInteger lasterror;
    } rows[] = {
        {"a match", "auou", "def ", "0x61756F75, 0x64656620", 0x7654320C, 0},
        {"no match", "auou", "none", "0x61756F75, 0x6E6F6E65", 0, -1},
        {"a handle of 1", "aufx", "dely", "0x61756678, 0x64656C79", 1, 0},
        {"only the first four characters count", "auouxyz", "def more", "0x61756F75, 0x64656620", 2, 0},
        {"an empty text is four spaces", "", "abcd", "0x20202020, 0x61626364", 0, -1},
        {"null is four spaces", nullptr, nullptr, "0x20202020, 0x20202020", 0, -1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.why);
        property_spy::reset();
        const auto text = [&](const char* bytes) {
            return bytes ? host().newString(bytes, encodingASCII) : Text{};
        };
        const Text type = text(row.type), subtype = text(row.subtype);
        spy::answer("OpenDefaultComponent").bits = row.handle;
        lasterror() = 4711;
        EXPECT_EQ(members.call<HostInteger>("OpenDefaultComponent", object(), type, subtype),
                  integer(row.handle));
        EXPECT_EQ(lasterror(), row.lasterror);
        EXPECT_EQ(spy::calls(), Calls{std::string("OpenDefaultComponent(") + row.codes + ")"});
        if (type) host().drop(type);
        if (subtype) host().drop(subtype);
        expectBalance();
    }
}

TEST_F(UnitCalls, AHandleMayBeNegative)
{
    spy::answer("OpenDefaultComponent").bits = static_cast<std::uintptr_t>(integer(0x80000004));
    EXPECT_EQ(members.call<HostInteger>("OpenDefaultComponent", object(), Text{}, Text{}),
              integer(0x80000004));
    EXPECT_EQ(lasterror(), 0);
}

TEST_F(UnitCalls, CloseAComponentAndStoreItsSignedStatus)
{
    const struct {
        int status;
        HostInteger lasterror;
    } rows[] = {{0, 0},         {-3000, -3000},   {1, 1},           {-1, -1},
                {32767, 32767}, {-32768, -32768}, {-32767, -32767}, {-32766, -32766}};
    for (const auto& row : rows) {
        property_spy::reset();
        spy::answer("CloseComponent").status = row.status;
        lasterror() = 4711;
        members.call<void>("CloseComponent", object(), integer(0x7654320C));
        EXPECT_EQ(lasterror(), row.lasterror);
        EXPECT_EQ(spy::calls(), Calls{"CloseComponent(handle 0x7654320C)"});
    }
    property_spy::reset();
    members.call<void>("CloseComponent", object(), HostInteger{0});
    EXPECT_EQ(spy::calls(), Calls{"CloseComponent(handle 0x0)"});
}

// ---- parameters ----

float single(std::uint32_t bits)
{
    float value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

std::uint32_t bitsOf(float value)
{
    std::uint32_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    return bits;
}

const struct {
    std::uint32_t bits;
    const char* shown;
    const char* why;
} values[] = {
    {0x00000000, "0x0", "zero"},
    {0x80000000, "0x80000000", "minus zero"},
    {0x3F800000, "0x3F800000", "one"},
    {0xBF000000, "0xBF000000", "minus a half"},
    {0x7F7FFFFF, "0x7F7FFFFF", "the largest number"},
    {0x00000001, "0x1", "the smallest positive number"},
    {0x3DCCCCCD, "0x3DCCCCCD", "a tenth"},
    {0x7F800000, "0x7F800000", "infinity"},
    {0xFF800000, "0xFF800000", "minus infinity"},
    {0x7FC12345, "0x7FC12345", "NaN"},
};

TEST_F(UnitCalls, SetAParameterWithAllItsBits)
{
    for (const auto& value : values)
        for (const OSStatus status : statuses) {
            SCOPED_TRACE(value.why);
            property_spy::reset();
            spy::answer("AudioUnitSetParameter").status = status;
            lasterror() = 4711;
            members.call<void>("AudioUnitSetParameter", object(), integer(0x7654320C), integer(0x80000001),
                               integer(0x80000002), integer(0x80000003), single(value.bits),
                               integer(0xFFFFFFF0));
            EXPECT_EQ(lasterror(), status);
            EXPECT_EQ(spy::calls(),
                      Calls{std::string("AudioUnitSetParameter(handle 0x7654320C, 0x80000001, 0x80000002, "
                                        "0x80000003, bits ") +
                            value.shown + ", 0xFFFFFFF0)"});
        }
}

TEST_F(UnitCalls, GetAParameterWithAllItsBits)
{
    const auto get = [&] {
        return bitsOf(members.call<float>("AudioUnitGetParameter", object(), integer(0x7654320C),
                                          integer(0x80000001), integer(0x80000002), integer(0x80000003)));
    };
    for (const auto& value : values)
        for (const OSStatus status : statuses) {
            SCOPED_TRACE(value.why);
            property_spy::reset();
            spy::answer("AudioUnitGetParameter").status = status;
            const float written = single(value.bits);
            spy::answer("AudioUnitGetParameter").value =
                std::string(reinterpret_cast<const char*>(&written), sizeof written);
            lasterror() = 4711;
            EXPECT_EQ(get(), value.bits) << "also after an error";
            EXPECT_EQ(lasterror(), status);
            EXPECT_EQ(spy::calls(), Calls{"AudioUnitGetParameter(handle 0x7654320C, 0x80000001, "
                                          "0x80000002, 0x80000003, output of bits 0x0)"});
        }
    property_spy::reset();
    spy::answer("AudioUnitGetParameter").status = static_cast<OSStatus>(0x80008001);
    EXPECT_EQ(get(), 0u) << "an invalid unit returns no value";
    EXPECT_EQ(lasterror(), static_cast<OSStatus>(0x80008001));
}

// ---- rules for all members ----

const struct {
    const char* name;
    HostInteger (*run)(Object, Text);
    bool hasStatusResult;
} rows[] = {
    {"AudioUnitInitialize",
     [](Object o, Text) { return members.call<HostInteger>("AudioUnitInitialize", o, HostInteger{8}); },
     true},
    {"AudioUnitUninitialize",
     [](Object o, Text) { return members.call<HostInteger>("AudioUnitUninitialize", o, HostInteger{8}); },
     true},
    {"AudioOutputUnitStart",
     [](Object o, Text) { return members.call<HostInteger>("AudioOutputUnitStart", o, HostInteger{8}); },
     true},
    {"AudioOutputUnitStop",
     [](Object o, Text) { return members.call<HostInteger>("AudioOutputUnitStop", o, HostInteger{8}); },
     true},
    {"AudioUnitReset",
     [](Object o, Text) {
         return members.call<HostInteger>("AudioUnitReset", o, HostInteger{8}, HostInteger{1},
                                          HostInteger{2});
     },
     true},
    {"OpenDefaultComponent",
     [](Object o, Text t) { return members.call<HostInteger>("OpenDefaultComponent", o, t, t); }, false},
    {"CloseComponent",
     [](Object o, Text) { return members.call<void>("CloseComponent", o, HostInteger{8}), HostInteger{0}; },
     false},
    {"AudioUnitSetParameter",
     [](Object o, Text) {
         members.call<void>("AudioUnitSetParameter", o, HostInteger{8}, HostInteger{1}, HostInteger{2},
                            HostInteger{3}, 1.0f, HostInteger{4});
         return HostInteger{0};
     },
     false},
    {"AudioUnitGetParameter",
     [](Object o, Text) {
         const float value = members.call<float>("AudioUnitGetParameter", o, HostInteger{8}, HostInteger{1},
                                                 HostInteger{2}, HostInteger{3});
         return static_cast<HostInteger>(value);
     },
     false},
};

TEST_F(UnitCalls, SetLasterrorBeforeAnyOtherCall)
{
    for (const auto& member : rows) {
        SCOPED_TRACE(member.name);
        const Text text = host().newString("abcd", encodingASCII);
        property_spy::reset();
        lasterror() = 4711;
        watchFirstCall();
        member.run(object(), text);
        EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
        host().drop(text);
    }
}

TEST_F(UnitCalls, HaveLasterrorMinusOneDuringThePlatformCall)
{
    for (const auto& member : rows) {
        SCOPED_TRACE(member.name);
        property_spy::reset();
        lasterror() = 4711;
        HostInteger seen = 0;
        spy::answer(member.name).during = [&] { seen = lasterror(); };
        member.run(object(), nullptr);
        EXPECT_EQ(seen, -1);
    }
}

TEST_F(UnitCalls, PassNoExceptionToTheHost)
{
    for (const auto& member : rows) {
        SCOPED_TRACE(member.name);
        const Text text = host().newString("abcd", encodingASCII);
        property_spy::reset();
        lasterror() = 4711;
        throwInPlatform(member.name);
        EXPECT_NO_THROW(EXPECT_EQ(member.run(object(), text), 0));
        EXPECT_EQ(lasterror(), -1);
        EXPECT_TRUE(host().raised().empty());
        host().drop(text);
        expectBalance();
    }
}

} // namespace
