// Host strings built from platform strings. This program replaces two platform functions in order to record
// their arguments and to make the functions fail.
#include "plugin/host_string.h"
#include "tests/plugin/host_fixture.h"
#include "tests/support/c_library_spy.h"
#include "tests/support/platform_spy.h"

#include <CoreFoundation/CoreFoundation.h>

#include <algorithm>
#include <dlfcn.h>
#include <optional>

namespace {

template <class Function>
Function* platformFunction(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

} // namespace

extern "C" Boolean CFStringGetCString(CFStringRef text, char* buffer, CFIndex capacity,
                                      CFStringEncoding encoding)
{
    const bool isZeroed = std::all_of(buffer, buffer + capacity, [](char c) { return c == 0; });
    if (spy::record(__func__, isZeroed ? "zeroed" : "filled", capacity, encoding).status) return 0;
    return platformFunction<decltype(CFStringGetCString)>("CFStringGetCString")(text, buffer, capacity,
                                                                                encoding);
}

/// The scripted size of the function, if there is one, replaces the length of the text.
extern "C" CFIndex CFStringGetLength(CFStringRef text)
{
    if (const std::optional<UInt32> length = spy::answer(__func__).size) return static_cast<CFIndex>(*length);
    return platformFunction<decltype(CFStringGetLength)>("CFStringGetLength")(text);
}

namespace {

/// The calls of CFStringGetCString with a zeroed buffer of `capacity` bytes and UTF-8.
spy::Calls conversion(CFIndex capacity)
{
    return {"CFStringGetCString(zeroed, " + std::to_string(capacity) + ", 134217984)"};
}

class PlatformStringTest : public HostTest {
protected:
    PlatformStringTest() : blocksBefore(c_library_spy::liveBlocks()) { reset(); }
    ~PlatformStringTest() override { reset(); }

    void reset()
    {
        spy::reset();
        c_library_spy::refuseCalloc(0);
    }

    void TearDown() override
    {
        EXPECT_EQ(c_library_spy::liveBlocks(), blocksBefore);
        HostTest::TearDown();
    }

    /// Convert a platform string of these UTF-16 units. `memory` receives the allocations of the conversion.
    REALstringStruct* convert(const std::u16string& units)
    {
        CFStringRef text =
            CFStringCreateWithCharacters(kCFAllocatorDefault, reinterpret_cast<const UniChar*>(units.data()),
                                         static_cast<CFIndex>(units.size()));
        REALstringStruct* result = convert(text);
        CFRelease(text);
        return result;
    }
    REALstringStruct* convert(CFStringRef text)
    {
        spy::forgetCalls();
        c_library_spy::begin();
        REALstringStruct* result = CFString2RBString(text);
        memory = c_library_spy::end();
        return result;
    }

    void expectText(REALstringStruct* text, const std::string& bytes)
    {
        ASSERT_NE(text, nullptr);
        EXPECT_EQ(host.bytesOf(text), bytes);
        EXPECT_EQ(host.encodingOf(text), encodingUTF8);
        EXPECT_EQ(host.references(text), 1);
        host.drop(text);
    }

    const long blocksBefore;
    Notes memory;
};

TEST_F(PlatformStringTest, BecomeUTF8)
{
    // clang-format off
    const struct { std::u16string units; const char* bytes; const char* why; } facts[] = {
        {u"a",                "a",                    "one unit"},
        {u"Built-in Output",  "Built-in Output",      "plain text"},
        {u"caf\u00E9",        "caf\xC3\xA9",          "two bytes per unit"},
        {u"\u20AC",           "\xE2\x82\xAC",         "three bytes per unit"},
        {u"\U0001F600",       "\xF0\x9F\x98\x80",     "four bytes per two units"},
        {std::u16string(u"ab\0cd", 5), "ab",          "up to the first zero, like a C string"},
    };
    // clang-format on
    for (double version : {0.0, 2012.0, 2013.0, 2016.0})
        for (const auto& fact : facts) {
            SCOPED_TRACE(testing::Message() << version << ": " << fact.why);
            enter(version);
            REALstringStruct* text = convert(fact.units);
            EXPECT_EQ(host.calls(), (Notes{"REALBuildString(" + fake::quoted(fact.bytes) + ", " +
                                               std::to_string(std::string(fact.bytes).size()) + ") = s1",
                                           "REALSetStringEncoding(s1, 0x8000100)"}));
            expectText(text, fact.bytes);
        }
}

TEST_F(PlatformStringTest, AreNullWithoutText)
{
    EXPECT_EQ(convert(CFStringRef(nullptr)), nullptr);
    EXPECT_EQ(convert(u""), nullptr);
    EXPECT_EQ(spy::calls(), spy::Calls());
    spy::answer("CFStringGetLength").size = 0xFFFFFFFF; // -1
    EXPECT_EQ(convert(u"abc"), nullptr);
    EXPECT_EQ(spy::calls(), spy::Calls());
    spy::reset();
    EXPECT_EQ(convert(std::u16string(1, 0)), nullptr) << "no text before the zero";
    EXPECT_EQ(host.notes(), Notes{});
}

TEST_F(PlatformStringTest, UseTheStackUpTo99UnitsThenSixBytesPerUnit)
{
    // clang-format off
    const struct { std::size_t units; CFIndex capacity; const char* heap; } facts[] = {
        {1,    600,  nullptr},
        {98,   600,  nullptr},
        {99,   600,  nullptr},
        {100,  600,  "calloc 600"},
        {101,  606,  "calloc 606"},
        {1000, 6000, "calloc 6000"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (char16_t unit : {u'a', u'\u20AC'}) {
            SCOPED_TRACE(fact.units);
            enter(2016.0);
            REALstringStruct* text = convert(std::u16string(fact.units, unit));
            EXPECT_EQ(spy::calls(), conversion(fact.capacity));
            EXPECT_EQ(memory, fact.heap ? (Notes{fact.heap, "free"}) : Notes{});
            std::string bytes;
            for (std::size_t i = 0; i < fact.units; ++i) bytes += unit == u'a' ? "a" : "\xE2\x82\xAC";
            expectText(text, bytes);
        }
}

TEST_F(PlatformStringTest, AreNullWhenTheConversionFails)
{
    for (std::size_t units : {1u, 99u, 100u, 500u}) {
        SCOPED_TRACE(units);
        enter(2016.0);
        spy::answer("CFStringGetCString").status = -1;
        EXPECT_EQ(convert(std::u16string(units, u'a')), nullptr);
        EXPECT_EQ(spy::calls().size(), 1u);
        EXPECT_EQ(memory.size(), units > 99 ? 2u : 0u) << "the buffer is freed";
        EXPECT_EQ(host.notes(), Notes{});
    }
}

TEST_F(PlatformStringTest, AreNullWithoutMemory)
{
    c_library_spy::refuseCalloc(1);
    EXPECT_EQ(convert(std::u16string(100, u'a')), nullptr);
    EXPECT_EQ(memory, Notes{"calloc 600"});
    EXPECT_EQ(spy::calls(), spy::Calls());
    EXPECT_EQ(host.notes(), Notes{}) << "no exception";
}

TEST_F(PlatformStringTest, AreNullAboveTheLargestSize)
{
    // clang-format off
    const struct { UInt32 units; Notes memory; } facts[] = {
        {357913941, {"calloc 2147483646"}}, // largest multiple of 6 that fits 31 bits
        {357913942, {}},
        {0x7FFFFFFF, {}},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.units);
        c_library_spy::refuseCalloc(1);
        spy::answer("CFStringGetLength").size = fact.units;
        EXPECT_EQ(convert(u"abc"), nullptr);
        EXPECT_EQ(memory, fact.memory);
        EXPECT_EQ(spy::calls(), spy::Calls());
        reset();
    }
}

TEST_F(PlatformStringTest, AreNullWhenTheHostBuildsNone)
{
    for (std::size_t units : {99u, 100u}) {
        enter(2016.0);
        host.failNext("REALBuildString");
        EXPECT_EQ(convert(std::u16string(units, u'a')), nullptr);
        EXPECT_EQ(memory.size(), units > 99 ? 2u : 0u);
    }
}

} // namespace
