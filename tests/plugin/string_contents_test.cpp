// The bytes of a host string, read from the string's structure in older hosts and through host services in
// newer hosts.
#include "plugin/string_contents.h"
#include "tests/plugin/host_fixture.h"

#include <cmath>

namespace {

class StringContentsTest : public HostTest {
protected:
    /// Read and release the contents of `text`, and store their address, their count and the reference count.
    /// Returns the calls to the host.
    Notes read(REALstringStruct* text)
    {
        host.forget();
        {
            const StringContents contents = REALGetStringContents(text);
            count = contents.count;
            address = contents.bytes;
            referencesWhileHeld = host.references(text);
        }
        return takeCalls();
    }

    HostInteger count = -1;
    const char* address = nullptr;
    int referencesWhileHeld = 0;
};

const Notes byRecord = {"REALLockString(s1)", "REALUnlockString(s1)"};
const Notes byService = {"StringGetCString(s1)",
                         "REALLoadGlobalMethod(null, LenB( s as string ) as integer) = LenB", "LenB(s1) = 3",
                         "REALLockString(s1)", "REALUnlockString(s1)"};

TEST_F(StringContentsTest, ComeFromTheRecordBefore2016AndFromServicesAfterwards)
{
    // clang-format off
    const struct { double version; const Notes& calls; const char* why; } facts[] = {
        {0.0,       byRecord,  "no version"},
        {2010.5,    byRecord,  "an old host"},
        {2012.0,    byRecord,  "a host with string encodings"},
        {2015.0,    byRecord,  "host 2015: the record"},
        {2015.9999, byRecord,  "just below 2016"},
        {2016.0,    byService, "host 2016: StringGetCString and LenB"},
        {2019.01,   byService, "a later one"},
        {std::nan(""), byRecord, "NaN counts as an old host"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.version << ": " << fact.why);
        enter(fact.version);
        REALstringStruct* text = host.newString(std::string_view("a\0b", 3), encodingUTF8);
        EXPECT_EQ(read(text), fact.calls);
        EXPECT_EQ(count, 3);
        EXPECT_EQ(address, host.storageOf(text));
        EXPECT_EQ(referencesWhileHeld, 2) << "the contents hold a reference";
        host.drop(text);
    }
}

TEST_F(StringContentsTest, AreNullAndZeroForANullString)
{
    for (double version : {2015.0, 2016.0}) {
        enter(version);
        EXPECT_EQ(read(nullptr), Notes{});
        EXPECT_EQ(address, nullptr);
        EXPECT_EQ(count, 0);
    }
}

TEST_F(StringContentsTest, AreIncompleteWithoutAService)
{
    // clang-format off
    const struct { const char* missing; bool hasBytes; HostInteger count; Notes calls; } facts[] = {
        {"StringGetCString",     false, 3, {byService.begin() + 1, byService.end()}},
        {"REALLoadGlobalMethod", true,  0, {byService[0], byService[3], byService[4]}},
        {"LenB",                 true,  0, {byService[0], "REALLoadGlobalMethod(null, LenB( s as string ) as integer) = null", byService[3], byService[4]}},
        {"REALLockString",       true,  3, {byService[0], byService[1], byService[2], byService[4]}},
        {"REALUnlockString",     true,  3, {byService.begin(), byService.end() - 1}},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.missing);
        enter(2016.0);
        withhold(fact.missing);
        REALstringStruct* text = host.newString("abc", encodingUTF8);
        // An additional reference, because the plug-in releases one even in the host without REALLockString.
        host.hold(text);

        EXPECT_EQ(read(text), fact.calls);
        EXPECT_EQ(address, fact.hasBytes ? host.storageOf(text) : nullptr);
        EXPECT_EQ(count, fact.count);
        host.provide(fact.missing);
        host.dropAll();
    }
}

TEST_F(StringContentsTest, LookUpEachServiceOnce)
{
    REALstringStruct* text = host.newString("abc", encodingUTF8);
    read(text);
    REALGetStringContents(text);
    EXPECT_EQ(host.lookUps(), Notes{});
    enter(2016.0);
    REALGetStringContents(text);
    EXPECT_EQ(host.lookUps(),
              (Notes{"StringGetCString", "REALLoadGlobalMethod", "REALLockString", "REALUnlockString"}));
    host.drop(text);
}

TEST_F(StringContentsTest, AreNullAndZeroForARecordWithoutABuffer)
{
    enter(2015.0);
    REALstringStruct* text = host.newString("", encodingUTF8);
    text->buffer = nullptr;
    read(text);
    EXPECT_EQ(address, nullptr);
    EXPECT_EQ(count, 0);
    host.drop(text);
}

} // namespace
