// The setters of the property family, with data from text and from memory blocks.
#include "tests/coreaudio/targets.h"

#include <climits>

namespace {

using namespace subject;
using spy::Calls;

constexpr OSStatus unknown = 0x77686F3F; // platform status 'who?'
constexpr double oldHost = 2015.99, newHost = 2016.0;

class PropertySetters : public Subject {
protected:
    template <class Test>
    void forAll(Test test)
    {
        for (std::size_t i = 0; i < 4; ++i) {
            property_spy::reset();
            const Text selector = host().newString(selectorText, encodingASCII);
            const Target target = targets(selector)[i];
            SCOPED_TRACE(target.name);
            lasterror() = 4711;
            test(target);
            host().drop(selector);
            expectBalance();
        }
    }
};

UInt32 count(const std::string& bytes) { return static_cast<UInt32>(bytes.size()); }

TEST_F(PropertySetters, PassTheStoredBytesOfText)
{
    const struct {
        std::string bytes;
        std::uint32_t encoding;
    } texts[] = {
        {"x", encodingASCII},
        {"four", encodingUTF8},
        {"caf\xC3\xA9", encodingUTF8},
        {"caf\x8E", encodingMacRoman},
        {std::string("h\0\0\0", 4), encodingUTF32},
        {std::string("in\0side\0", 8), encodingUnknown},
        {std::string(1000, '\xFF'), encodingUnknown},
    };
    for (const double version : {0.0, 2011.5, oldHost, newHost, 2020.1})
        for (const auto& each : texts) {
            SCOPED_TRACE(version);
            SCOPED_TRACE(each.bytes.substr(0, 10));
            startHost(version);
            forAll([&](const Target& target) {
                const Text text = host().newString(each.bytes, each.encoding);
                spy::name(host().storageOf(text), "text");
                int referencesDuring = 0;
                spy::answer(target.setFunction()).during = [&] {
                    referencesDuring = host().references(text);
                };
                target.setString(object(), nullptr, text);
                EXPECT_EQ(spy::calls(), Calls{target.setCall("null", count(each.bytes), "text")});
                EXPECT_EQ(spy::lastValue(), each.bytes);
                EXPECT_EQ(referencesDuring, 2) << "held during the platform call";
                EXPECT_EQ(host().references(text), 1);
                EXPECT_EQ(lasterror(), 0);
                host().drop(text);
            });
        }
}

TEST_F(PropertySetters, PassNoBytesForNilText)
{
    for (const double version : {oldHost, newHost}) {
        SCOPED_TRACE(version);
        startHost(version);
        forAll([&](const Target& target) {
            target.setString(object(), nullptr, nullptr);
            EXPECT_EQ(spy::calls(), Calls{target.setCall("null", 0, "null")});
            EXPECT_EQ(lasterror(), 0);
        });
    }
}

TEST_F(PropertySetters, PassNoBytesForEmptyText)
{
    for (const double version : {oldHost, newHost}) {
        SCOPED_TRACE(version);
        startHost(version);
        forAll([&](const Target& target) {
            const Text text = host().newString("", encodingASCII);
            spy::name(host().storageOf(text), "text");
            target.setString(object(), nullptr, text);
            EXPECT_EQ(spy::calls(), Calls{target.setCall("null", 0, "text")});
            EXPECT_EQ(spy::lastValue(), "");
            EXPECT_EQ(lasterror(), 0);
            host().drop(text);
        });
    }
}

TEST_F(PropertySetters, UseTheServicesOfTheHostsVersion)
{
    const struct {
        double version;
        Calls services;
    } hosts[] = {
        {oldHost, {"REALLockString(s2)", "REALUnlockString(s2)"}},
        {newHost, {"StringGetCString(s2)", "LenB(s2) = 3", "REALLockString(s2)", "REALUnlockString(s2)"}},
    };
    for (const auto& each : hosts) {
        SCOPED_TRACE(each.version);
        startHost(each.version);
        const Text selector = host().newString(selectorText, encodingASCII);
        const Text text = host().newString("abc", encodingASCII);
        // Units have no selector text, so all calls concern the data. The first call looks up the length
        // method.
        const Target unit = targets(selector)[3];
        unit.setString(object(), nullptr, text);
        host().forget();
        unit.setString(object(), nullptr, text);
        EXPECT_EQ(host().notes(), each.services);
        host().drop(text);
        host().drop(selector);
        expectBalance();
    }
}

TEST_F(PropertySetters, StoreThePlatformsStatus)
{
    for (const OSStatus status :
         {OSStatus{0}, OSStatus{1}, OSStatus{-1}, OSStatus{-50}, unknown, OSStatus{INT_MIN}})
        forAll([&](const Target& target) {
            const Text text = host().newString("abc", encodingASCII);
            const Block block = host().newMemoryBlock("abc");
            spy::answer(target.setFunction()).status = status;
            target.setString(object(), nullptr, text);
            EXPECT_EQ(lasterror(), status);
            lasterror() = 4711;
            target.setMemory(object(), nullptr, block, 0, 3);
            EXPECT_EQ(lasterror(), status);
            host().drop(block);
            host().drop(text);
        });
}

TEST_F(PropertySetters, PassTheTimeStampOfTheBlock)
{
    const std::string stamp(sizeof(AudioTimeStamp), '\x11');
    forAll([&](const Target& target) {
        const Block when = host().newMemoryBlock(stamp), data = host().newMemoryBlock("abc");
        const Block tooShort = host().newMemoryBlock("1");
        const Block withoutMemory = host().newMemoryBlock("22");
        host().takeMemory(withoutMemory);
        const Text text = host().newString("abc", encodingASCII);
        spy::name(host().storageOf(text), "text");
        spy::name(host().storageOf(data), "data");
        spy::name(host().storageOf(when), "when");
        spy::name(host().storageOf(tooShort), "too short");

        const struct {
            Block block;
            const char* shown;
        } stamps[] = {{nullptr, "null"}, {when, "when"}, {tooShort, "too short"}, {withoutMemory, "null"}};
        for (const auto& each : stamps) {
            spy::forgetCalls();
            target.setString(object(), each.block, text);
            target.setMemory(object(), each.block, data, 0, 3);
            EXPECT_EQ(spy::calls(),
                      (Calls{target.setCall(each.shown, 3, "text"), target.setCall(each.shown, 3, "data")}));
        }
        for (const Block block : {when, data, tooShort, withoutMemory}) host().drop(block);
        host().drop(text);
    });
}

TEST_F(PropertySetters, PassAnyRangeOfMemoryUnchecked)
{
    const struct {
        HostInteger offset, length;
        const char* why;
    } ranges[] = {
        {0, 10, "the whole block"},
        {0, 4, "the start of the block"},
        {6, 4, "the end of the block"},
        {3, 1, "a byte inside"},
        {0, 0, "no bytes"},
        {10, 0, "no bytes at the end"},
        {0, 11, "one byte too many"},
        {10, 1, "a byte after the end"},
        {1000, 5, "far after the end"},
        {-1, 4, "before the start"},
        {-1000, 4, "far before the start"},
        {0, -1, "a negative length"},
        {5, INT_MIN, "the most negative length"},
        {INT_MAX, INT_MAX, "the largest offset and length"},
        {INT_MIN, INT_MIN, "the smallest offset and length"},
    };
    for (const auto& range : ranges) {
        SCOPED_TRACE(range.why);
        forAll([&](const Target& target) {
            const Block block = host().newMemoryBlock("0123456789");
            const auto base = reinterpret_cast<Word>(host().storageOf(block));
            spy::name(reinterpret_cast<const void*>(base + static_cast<Word>(range.offset)), "there");
            // The spy must not read these ranges, which may be invalid memory.
            property_spy::readValues(false);
            target.setMemory(object(), nullptr, block, range.offset, range.length);
            EXPECT_EQ(spy::calls(),
                      Calls{target.setCall("null", static_cast<UInt32>(range.length), "there")});
            EXPECT_EQ(lasterror(), 0);
            EXPECT_TRUE(host().raised().empty());
            host().drop(block);
        });
    }
}

TEST_F(PropertySetters, PassTheBytesOfTheBlock)
{
    forAll([&](const Target& target) {
        const Block block = host().newMemoryBlock("0123456789");
        target.setMemory(object(), nullptr, block, 2, 5);
        EXPECT_EQ(spy::lastValue(), "23456");
        host().drop(block);
    });
}

TEST_F(PropertySetters, UseTheOffsetAsAddressForNilMemory)
{
    for (const HostInteger offset : {HostInteger{0x1234}, HostInteger{-16}, HostInteger{0}}) {
        SCOPED_TRACE(offset);
        forAll([&](const Target& target) {
            if (offset) spy::name(reinterpret_cast<const void*>(offset), "there");
            const std::string there = offset ? "there" : "null";
            property_spy::readValues(false);
            target.setMemory(object(), nullptr, nullptr, offset, 8);
            EXPECT_EQ(spy::calls(), Calls{target.setCall("null", 8, there)});

            spy::forgetCalls();
            const Block withoutMemory = host().newMemoryBlock("0123456789");
            host().takeMemory(withoutMemory);
            target.setMemory(object(), nullptr, withoutMemory, offset, 8);
            EXPECT_EQ(spy::calls(), Calls{target.setCall("null", 8, there)});
            host().drop(withoutMemory);
        });
    }
}

TEST_F(PropertySetters, PassNoPlatformExceptionToTheHost)
{
    for (const double version : {oldHost, newHost}) {
        startHost(version);
        forAll([&](const Target& target) {
            const Text text = host().newString("abc", encodingASCII);
            const Block block = host().newMemoryBlock("abc");
            throwInPlatform(target.setFunction());
            EXPECT_NO_THROW(target.setString(object(), nullptr, text));
            EXPECT_EQ(lasterror(), -1);
            EXPECT_EQ(host().references(text), 1) << "the reference is released";
            lasterror() = 4711;
            EXPECT_NO_THROW(target.setMemory(object(), nullptr, block, 0, 3));
            EXPECT_EQ(lasterror(), -1);
            EXPECT_EQ(host().references(block), 1);
            EXPECT_TRUE(host().raised().empty());
            host().drop(block);
            host().drop(text);
        });
    }
}

TEST_F(PropertySetters, PassNoExceptionOfTheHost)
{
    for (const char* service : {"StringGetCString", "LenB", "REALLockString"}) {
        SCOPED_TRACE(service);
        startHost(newHost);
        const Text text = host().newString("abc", encodingASCII);
        const Target unit = targets(nullptr)[3];
        lasterror() = 4711;
        throwInHost(service);
        property_spy::reset();
        EXPECT_NO_THROW(unit.setString(object(), nullptr, text));
        EXPECT_EQ(lasterror(), -1);
        EXPECT_EQ(spy::calls(), Calls());
        EXPECT_EQ(host().references(text), 1);
        host().drop(text);
        expectBalance();
    }
}

TEST_F(PropertySetters, SetLasterrorBeforeAnyOtherCall)
{
    for (const double version : {oldHost, newHost}) {
        startHost(version);
        forAll([&](const Target& target) {
            const Text text = host().newString("abc", encodingASCII);
            const Block block = host().newMemoryBlock("abc");
            watchFirstCall();
            target.setString(object(), block, text);
            EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
            lasterror() = 4711;
            watchFirstCall();
            target.setMemory(object(), block, block, 0, 3);
            EXPECT_EQ(lasterrorInFirstCall(), std::vector<HostInteger>{-1});
            host().drop(block);
            host().drop(text);
        });
    }
}

TEST_F(PropertySetters, ContinueWithoutAMissingService)
{
    const struct {
        double version;
        const char* service;
        UInt32 size;
        const char* bytes;
    } rows[] = {
        {newHost, "StringGetCString", 3, "null"},
        {newHost, "REALUnlockString", 3, "text"},
        {oldHost, "REALLockString", 3, "text"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.service);
        startHost(row.version);
        const Text text = host().newString("abc", encodingASCII);
        property_spy::reset();
        spy::name(host().storageOf(text), "text");
        property_spy::readValues(false);
        host().withhold(row.service);
        const Target unit = targets(nullptr)[3];
        unit.setString(object(), nullptr, text);
        EXPECT_EQ(spy::calls(), Calls{unit.setCall("null", row.size, row.bytes)});
        EXPECT_EQ(lasterror(), 0);
        host().dropAll();
    }
}

// The death test runs in a new process because a process keeps the length method after its first look-up.
TEST_F(PropertySetters, PassNoBytesWithoutTheLengthMethod)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const Text text = host().newString("abc", encodingASCII);
            spy::name(host().storageOf(text), "text");
            host().withhold("LenB");
            const Target unit = targets(nullptr)[3];
            unit.setString(object(), nullptr, text);
            host().withhold("REALLoadGlobalMethod");
            unit.setString(object(), nullptr, text);
            const bool passedNoBytes = spy::calls() == Calls(2, unit.setCall("null", 0, "text"));
            host().provide("LenB");
            unit.setString(object(), nullptr, text);
            const bool found = spy::calls().back() == unit.setCall("null", 3, "text");
            std::exit(passedNoBytes && found && lasterror() == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(PropertySetters, UseTheOffsetAsAddressWithoutTheAddressService)
{
    host().withhold("memoryBlockGetPtr");
    const Block block = host().newMemoryBlock("abc");
    const Target unit = targets(nullptr)[3];
    spy::name(reinterpret_cast<const void*>(2), "two");
    property_spy::readValues(false);
    unit.setMemory(object(), nullptr, block, 2, 1);
    EXPECT_EQ(spy::calls(), Calls{unit.setCall("null", 1, "two")});
    host().drop(block);
}

// ---- selectors, and the input or output side of a device ----

TEST_F(PropertySetters, SelectorsAreFourCharactersOfAnyText)
{
    const struct {
        const char* text; ///< selector text; null for nil
        const char* code;
        const char* why;
    } selectors[] = {
        {"uid ", "0x75696420", "a trailing space counts"},
        {"dev#", "0x64657623", "the first character is the most significant byte"},
        {"****", "0x2A2A2A2A", "the wildcard"},
        {"abcdef", "0x61626364", "characters after the fourth are ignored"},
        {"", "0x20202020", "an empty text is four spaces"},
        {nullptr, "0x20202020", "nil is four spaces"},
    };
    for (const auto& each : selectors) {
        SCOPED_TRACE(each.why);
        const Text selector = each.text ? host().newString(each.text, encodingASCII) : nullptr;
        property_spy::reset();
        members.call<void>("AudioHardwareSetPropertyString", object(), selector, Text{});
        members.call<void>("AudioStreamSetPropertyString", object(), HostInteger{7}, Block{}, HostInteger{9},
                           selector, Text{});
        EXPECT_EQ(spy::calls(), (Calls{std::string("AudioHardwareSetProperty(") + each.code + ", 0x0, null)",
                                       std::string("AudioStreamSetProperty(0x7, null, 0x9, ") + each.code +
                                           ", 0x0, null)"}));
        if (selector) host().drop(selector);
        expectBalance();
    }
}

TEST_F(PropertySetters, TheSideOfADeviceIsZeroOrOne)
{
    const struct {
        HostBoolean side;
        const char* shown;
    } sides[] = {{0, "0"}, {1, "1"}, {0x80, "1"}, {0xFF, "1"}};
    const Text selector = host().newString(selectorText, encodingASCII);
    for (const auto& each : sides) {
        property_spy::reset();
        members.call<void>("AudioDeviceSetPropertyString", object(), HostInteger{7}, Block{}, HostInteger{9},
                           each.side, selector, Text{});
        EXPECT_EQ(spy::calls(), Calls{std::string("AudioDeviceSetProperty(0x7, null, 0x9, ") + each.shown +
                                      ", 0x61626364, 0x0, null)"});
    }
    host().drop(selector);
}

} // namespace
