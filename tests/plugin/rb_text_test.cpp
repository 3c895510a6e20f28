// The text of a host string as UTF-8 and as Mac Roman: the source of the text in each host version, and the
// release of all host values.
#include "plugin/rb_text.h"
#include "tests/plugin/host_fixture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <stdexcept>

namespace {

const double before2012 = std::nextafter(2012.0, 0), before2015_03 = std::nextafter(2015.03, 0),
             before2016 = std::nextafter(2016.0, 0);

enum class View { utf8, macRoman };
constexpr View bothViews[] = {View::utf8, View::macRoman};

const char* nameOf(View view) { return view == View::utf8 ? "UTF-8" : "Mac Roman"; }

class RbTextTest : public HostTest {
protected:
    /// Construct an rbText. Returns the calls to the host.
    Notes open(REALstringStruct* string)
    {
        host.forget();
        text.reset(new rbText(string));
        return takeCalls();
    }

    /// Get a view of the text. Returns the calls to the host.
    Notes take(View view)
    {
        host.forget();
        bytes = view == View::utf8 ? text->GetUTF8() : text->ConvertMacRoman();
        length = view == View::utf8 ? text->lengthUTF8() : text->lengthMacRoman();
        return takeCalls();
    }

    Notes close()
    {
        host.forget();
        text.reset();
        return takeCalls();
    }

    void expectView(const std::string& expected)
    {
        ASSERT_NE(bytes, nullptr);
        ASSERT_EQ(length, static_cast<HostInteger>(expected.size()));
        EXPECT_EQ(std::string(bytes, static_cast<std::size_t>(length)), expected);
        EXPECT_EQ(bytes[length], 0);
    }

    /// Expect an empty view with at least four zeros, because a four-character code reads four bytes.
    void expectEmpty(bool flag)
    {
        expectView("");
        EXPECT_TRUE(std::all_of(bytes, bytes + 4, [](char c) { return c == 0; }));
        EXPECT_EQ(text->isEmptyText(), flag);
    }

    std::unique_ptr<rbText> text;
    const char* bytes = nullptr;
    HostInteger length = -9;
};

// ---- the source of a text in a known encoding ----

enum class Source { record, data, conversion };

TEST_F(RbTextTest, EachViewHasItsSourceOnEachHost)
{
    // clang-format off
    const struct { double version; std::uint32_t encoding; Source utf8, macRoman; const char* why; } facts[] = {
        {0.0,           0x08000100, Source::record,     Source::conversion, "UTF-8 needs no conversion"},
        {2011.5,        0x08000100, Source::record,     Source::conversion, "the same on a newer host"},
        {2011.5,        0x0600,     Source::record,     Source::conversion, "ASCII needs no conversion"},
        {2011.5,        0x0000,     Source::conversion, Source::conversion, "Mac Roman is always converted"},
        {2011.5,        0x0500,     Source::conversion, Source::conversion, "Windows Latin 1"},
        {before2012,    0x0000,     Source::conversion, Source::conversion, "the last old host"},
        {2012.0,        0x0000,     Source::data,       Source::data,       "the first host with string data"},
        {2012.0,        0x08000100, Source::record,     Source::data,       "UTF-8 is read from the record"},
        {2012.0,        0x0600,     Source::record,     Source::data,       "ASCII is read from the record"},
        {2015.02,       0x0600,     Source::record,     Source::data,       "ASCII is read from the record"},
        {before2015_03, 0x08000100, Source::record,     Source::data,       "the last host whose record is read"},
        {2015.03,       0x08000100, Source::data,       Source::data,       "the record is not read"},
        {2015.03,       0x0600,     Source::data,       Source::data,       "the record is not read for ASCII"},
        {2015.99,       0x0600,     Source::data,       Source::data,       "a host in between"},
        {2016.0,        0x0600,     Source::data,       Source::data,       "a new host"},
        {2016.0,        0x0000,     Source::data,       Source::data,       "a new host"},
        {2019.01,       0x08000100, Source::data,       Source::data,       "a later one"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (View view : bothViews) {
            SCOPED_TRACE(testing::Message() << fact.version << ", " << std::hex << fact.encoding << " as "
                                            << nameOf(view) << ": " << fact.why);
            enter(fact.version);
            REALstringStruct* string = host.newString("abc", fact.encoding);
            char constructed[60];
            std::snprintf(constructed, sizeof constructed, "REALGetStringEncoding(s1) = 0x%X",
                          static_cast<unsigned>(fact.encoding));
            EXPECT_EQ(open(string), (Notes{constructed, "REALLockString(s1)"}));
            EXPECT_EQ(host.references(string), 2);

            const std::string code = view == View::utf8 ? "0x8000100" : "0x0";
            switch (view == View::utf8 ? fact.utf8 : fact.macRoman) {
            case Source::record:
                EXPECT_EQ(take(view), Notes{});
                EXPECT_EQ(bytes, host.storageOf(string)) << "the string's own buffer";
                expectView("abc");
                EXPECT_EQ(close(), Notes{"REALUnlockString(s1)"});
                break;
            case Source::data:
                EXPECT_EQ(take(view), Notes{"PluginGetStringData(s1, " + code + ") = true"});
                expectView("abc");
                EXPECT_EQ(close(), (Notes{"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)"}));
                break;
            case Source::conversion:
                EXPECT_EQ(take(view), Notes{"REALConvertString(s1, " + code + ") = s2"});
                expectView("abc");
                EXPECT_EQ(close(), (Notes{"REALUnlockString(s1)", "REALUnlockString(s2)"}));
                break;
            }
            EXPECT_EQ(host.live(), Notes{"s1: 1"}) << "the test's reference remains";
            host.drop(string);
        }
}

TEST_F(RbTextTest, TextIsConverted)
{
    for (double version : {2011.5, 2012.0, 2015.03, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        REALstringStruct* string = host.newString("caf\xC3\xA9", encodingUTF8);
        open(string);
        take(View::utf8);
        expectView("caf\xC3\xA9");
        take(View::macRoman);
        expectView("caf\x8E");
        EXPECT_FALSE(text->isRaw());
        EXPECT_FALSE(text->isEmptyText());
        close();
        host.drop(string);
    }
}

TEST_F(RbTextTest, AViewIsComputedOnce)
{
    for (double version : {2011.5, 2012.0, 2015.03, 2016.0})
        for (const char* after : {"", "#"})
            for (View view : bothViews) {
                SCOPED_TRACE(testing::Message() << version << ", " << nameOf(view));
                if (*after) host.afterText = after;
                enter(version);
                REALstringStruct* string = host.newString("abc", encodingMacRoman);
                open(string);
                EXPECT_EQ(take(view).size(), 1u);
                const char* first = bytes;
                EXPECT_EQ(take(view), Notes{});
                EXPECT_EQ(bytes, first);
                expectView("abc");
                close();
                host.drop(string);
                host.afterText.assign(5, '\0');
            }
}

TEST_F(RbTextTest, LengthsAreNegativeBeforeTheFirstView)
{
    REALstringStruct* string = host.newString("abc", encodingUTF8);
    open(string);
    EXPECT_EQ(text->lengthUTF8(), -1);
    EXPECT_EQ(text->lengthMacRoman(), -1);
    take(View::utf8);
    EXPECT_EQ(text->lengthUTF8(), 3);
    EXPECT_EQ(text->lengthMacRoman(), -1) << "the other view is not computed";
    close();
    host.drop(string);
}

// ---- no text, and text that cannot be converted ----

TEST_F(RbTextTest, ANullStringIsEmpty)
{
    for (double version : {2011.5, 2012.0, 2016.0}) {
        enter(version);
        EXPECT_EQ(open(nullptr), Notes{}) << "the host is not called";
        for (View view : bothViews) {
            EXPECT_EQ(take(view), Notes{});
            expectEmpty(false);
        }
        EXPECT_EQ(close(), Notes{});
    }
}

TEST_F(RbTextTest, AnEmptyStringIsEmpty)
{
    for (double version : {2011.5, 2012.0, 2015.03, 2016.0})
        for (std::uint32_t encoding : {encodingUTF8, encodingMacRoman, encodingUnknown})
            for (View view : bothViews) {
                SCOPED_TRACE(testing::Message() << version << ", " << std::hex << encoding);
                enter(version);
                REALstringStruct* string = host.newString("", encoding);
                open(string);
                take(view);
                expectEmpty(false);
                EXPECT_EQ(text->isRaw(), encoding == encodingUnknown);
                close();
                host.drop(string);
            }
}

TEST_F(RbTextTest, AnUnconvertibleTextIsEmptyAndSetsTheFlag)
{
    // clang-format off
    const struct { double version; const char* service; } facts[] = {
        {2011.5,     "REALConvertString"},
        {before2012, "REALConvertString"},
        {2012.0,     "PluginGetStringData"},
        {2015.03,    "PluginGetStringData"},
        {2016.0,     "PluginGetStringData"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (View view : bothViews)
            for (bool isMissing : {false, true}) {
                SCOPED_TRACE(testing::Message()
                             << fact.version << ", " << nameOf(view) << ", missing: " << isMissing);
                enter(fact.version);
                if (isMissing)
                    withhold(fact.service);
                else
                    host.failNext(fact.service);
                REALstringStruct* string = host.newString("abc", encodingMacRoman);
                open(string);
                EXPECT_FALSE(text->isEmptyText()) << "before the first view";
                take(view);
                expectEmpty(true);
                EXPECT_EQ(take(view), Notes{}) << "computed once";
                EXPECT_EQ(close(), Notes{"REALUnlockString(s1)"}) << "no data to release";
                EXPECT_TRUE(host.raised().empty());
                host.provide(fact.service);
                host.drop(string);
            }
}

TEST_F(RbTextTest, ACharacterOutsideMacRomanMakesOnlyThatViewEmpty)
{
    for (double version : {2011.5, 2016.0}) {
        enter(version);
        REALstringStruct* string = host.newString("\xE2\x82\xAC", encodingUTF8);
        open(string);
        take(View::macRoman);
        expectEmpty(true);
        take(View::utf8);
        expectView("\xE2\x82\xAC");
        close();
        host.drop(string);
    }
}

TEST_F(RbTextTest, ARecordWithoutABufferOrWithANegativeLengthIsEmpty)
{
    enter(2011.5);
    REALstringStruct* string = host.newString("abc", encodingUTF8);
    const REALstringStruct whole = *string;
    for (int damage : {0, 1}) {
        *string = whole;
        if (damage == 0)
            string->buffer = nullptr;
        else
            string->length = -1;
        open(string);
        take(View::utf8);
        expectEmpty(false);
        close();
    }
    host.drop(string);
}

// ---- termination ----

TEST_F(RbTextTest, ATextWithoutATerminatorIsCopiedWithZerosAfterIt)
{
    // clang-format off
    const struct { double version; std::uint32_t encoding; View view; Notes closing; const char* why; } facts[] = {
        {2011.5, encodingUTF8,     View::utf8,     {"REALUnlockString(s1)"}, "the string's own buffer"},
        {2015.0, encodingASCII,    View::utf8,     {"REALUnlockString(s1)"}, "the string's own buffer"},
        {2011.5, encodingMacRoman, View::utf8,     {"REALUnlockString(s1)", "REALUnlockString(s2)"}, "a converted string's buffer"},
        {2011.5, encodingMacRoman, View::macRoman, {"REALUnlockString(s1)", "REALUnlockString(s2)"}, "a converted string's buffer"},
        {2012.0, encodingMacRoman, View::utf8,     {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)"}, "string data"},
        {2016.0, encodingUTF8,     View::utf8,     {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)"}, "string data"},
        {2016.0, encodingUTF8,     View::macRoman, {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)"}, "string data"},
    };
    // clang-format on
    host.afterText = "#";
    for (const auto& fact : facts) {
        SCOPED_TRACE(testing::Message() << fact.version << ", " << nameOf(fact.view) << ": " << fact.why);
        enter(fact.version);
        REALstringStruct* string = host.newString("abc", fact.encoding);
        open(string);
        take(fact.view);
        expectView("abc");
        EXPECT_NE(bytes, host.storageOf(string));
        EXPECT_EQ(std::string(bytes, 7), std::string("abc\0\0\0\0", 7));
        EXPECT_EQ(close(), fact.closing);
        host.drop(string);
    }
}

// ---- text in an unknown encoding ----

TEST_F(RbTextTest, UnknownTextThatIsASCIIIsNotCopied)
{
    const Notes record = {"REALGetStringEncoding(s1) = 0xFFFF", "REALLockString(s1)", "REALLockString(s1)",
                          "REALUnlockString(s1)"};
    const Notes service = {"REALGetStringEncoding(s1) = 0xFFFF",
                           "StringGetCString(s1)",
                           "REALLoadGlobalMethod(null, LenB( s as string ) as integer) = LenB",
                           "LenB(s1) = 3",
                           "REALLockString(s1)",
                           "REALLockString(s1)",
                           "REALUnlockString(s1)"};
    const Notes byRecord = {};
    const Notes byFirstService = {"StringGetCString(s1)",
                                  "REALLoadGlobalMethod(null, LenB( s as string ) as integer) = LenB",
                                  "LenB(s1) = 3"};
    const Notes byService = {"StringGetCString(s1)", "LenB(s1) = 3"};
    // clang-format off
    const struct { double version; const Notes& opening; const Notes& viewing; const char* why; } facts[] = {
        {0.0,        record,  byRecord,       "an old host: the record's buffer"},
        {2011.5,     record,  byRecord,       "an old host"},
        {before2012, record,  byRecord,       "the last old host"},
        {2012.0,     record,  byFirstService, "checked in the record, viewed by services"},
        {2015.99,    record,  byFirstService, "the same"},
        {before2016, record,  byFirstService, "the last host with readable records"},
        {2016.0,     service, byService,      "services only"},
    };
    // clang-format on
    for (const auto& fact : facts)
        // The plug-in does not copy the text, even if "#" follows the text instead of a terminator.
        for (const char* after : {"", "#"})
            for (View view : bothViews) {
                SCOPED_TRACE(testing::Message() << fact.version << ", " << nameOf(view) << ": " << fact.why);
                if (*after) host.afterText = after;
                enter(fact.version);
                REALstringStruct* string = host.newString("abc", encodingUnknown);
                EXPECT_EQ(open(string), fact.opening);
                EXPECT_TRUE(text->isRaw());
                EXPECT_EQ(host.references(string), 2);
                EXPECT_EQ(take(view), fact.viewing);
                EXPECT_EQ(bytes, host.storageOf(string));
                EXPECT_EQ(length, 3);
                EXPECT_EQ(take(view), Notes{});
                EXPECT_FALSE(text->isEmptyText());
                EXPECT_EQ(close(), Notes{"REALUnlockString(s1)"});
                EXPECT_EQ(host.live(), Notes{"s1: 1"});
                host.drop(string);
                host.afterText.assign(5, '\0');
            }
}

TEST_F(RbTextTest, RawTextWithoutTheServicesIsEmpty)
{
    // clang-format off
    const struct { double version; const char* missing; } facts[] = {
        {2012.0, "StringGetCString"}, {2012.0, "LenB"}, {2016.0, "StringGetCString"}, {2016.0, "LenB"}, {2016.0, "REALLoadGlobalMethod"},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (View view : bothViews) {
            SCOPED_TRACE(testing::Message() << fact.version << " without " << fact.missing);
            enter(fact.version);
            withhold(fact.missing);
            REALstringStruct* string = host.newString("abc", encodingUnknown);
            open(string);
            EXPECT_TRUE(text->isRaw());
            take(view);
            EXPECT_EQ(length, 0);
            EXPECT_NE(bytes, nullptr);
            close();
            host.provide(fact.missing);
            host.drop(string);
        }
}

TEST_F(RbTextTest, OtherUnknownTextIsReadAsMacRoman)
{
    const Notes building = {"REALBuildString(\"caf\\x8E\", 4) = s2", "REALSetStringEncoding(s2, 0x0)",
                            "REALUnlockString(s1)"};
    for (double version : {0.0, 2011.5, 2012.0, 2015.03, before2016, 2016.0}) {
        SCOPED_TRACE(version);
        enter(version);
        REALstringStruct* string = host.newString("caf\x8E", encodingUnknown);
        Notes opening = open(string);
        ASSERT_GE(opening.size(), 3u);
        EXPECT_EQ(Notes(opening.end() - 3, opening.end()), building) << "the original string is released";
        EXPECT_FALSE(text->isRaw());
        EXPECT_FALSE(text->isEmptyText());
        EXPECT_EQ(host.references(string), 1);
        take(View::utf8);
        expectView("caf\xC3\xA9");
        take(View::macRoman);
        expectView("caf\x8E");
        close();
        EXPECT_EQ(host.live(), Notes{"s1: 1"});
        host.drop(string);
    }
}

TEST_F(RbTextTest, UnknownTextIsASCIIIfAllBytesAreBelow0x80)
{
    // clang-format off
    const struct { const char* bytes; bool isRaw; } facts[] = {
        {"\x7F", true}, {"ab\x7F", true}, {"\x80", false}, {"ab\x80", false}, {"\xFF" "ab", false},
    };
    // clang-format on
    for (double version : {2011.5, 2016.0})
        for (const auto& fact : facts) {
            enter(version);
            REALstringStruct* string = host.newString(fact.bytes, encodingUnknown);
            open(string);
            EXPECT_EQ(text->isRaw(), fact.isRaw) << fact.bytes;
            close();
            host.drop(string);
        }
}

TEST_F(RbTextTest, UnknownTextIsEmptyAndSetsTheFlagIfNoStringCanBeBuilt)
{
    for (double version : {2011.5, 2016.0})
        for (bool isMissing : {false, true}) {
            SCOPED_TRACE(testing::Message() << version << ", missing: " << isMissing);
            enter(version);
            if (isMissing)
                withhold("REALBuildString");
            else
                host.failNext("REALBuildString");
            REALstringStruct* string = host.newString("caf\x8E", encodingUnknown);
            open(string);
            EXPECT_TRUE(text->isEmptyText());
            EXPECT_FALSE(text->isRaw());
            for (View view : bothViews) {
                EXPECT_EQ(take(view), Notes{});
                expectEmpty(true);
            }
            EXPECT_EQ(close(), Notes{}) << "no reference";
            host.provide("REALBuildString");
            host.drop(string);
        }
}

TEST_F(RbTextTest, UnknownTextHasALargestLength)
{
    // clang-format off
    const struct { HostInteger length; bool isTried; const char* why; } facts[] = {
        {0x7FFFFFFB, true,  "with four zeros: the largest allocation"},
        {0x7FFFFFFC, false, "with four zeros: larger than any allocation"},
        {0x7FFFFFFF, false, "the largest length"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.why);
        enter(2016.0);
        // The first byte is not ASCII, so the plug-in reads no byte after it, whatever length the host
        // claims.
        host.claimedLength = fact.length;
        host.failNext("REALBuildString");
        REALstringStruct* string = host.newString("\x8E", encodingUnknown);
        const Notes opening = open(string);
        const bool isTried = std::any_of(opening.begin(), opening.end(),
                                         [](auto& n) { return n.find("REALBuildString(") == 0; });
        EXPECT_EQ(isTried, fact.isTried);
        EXPECT_TRUE(text->isEmptyText());
        close();
        host.drop(string);
    }
}

TEST_F(RbTextTest, UnknownTextOfNegativeLengthIsRawAndEmpty)
{
    for (double version : {2012.0, 2016.0}) {
        enter(version);
        host.claimedLength = -1;
        REALstringStruct* string = host.newString("abc", encodingUnknown);
        open(string);
        EXPECT_TRUE(text->isRaw());
        for (View view : bothViews) {
            take(view);
            EXPECT_EQ(length, 0);
            EXPECT_NE(bytes, nullptr);
        }
        close();
        host.drop(string);
    }
}

// ---- references, and exceptions of the host ----

TEST_F(RbTextTest, TheEncodingCountsAsKnownWithoutTheEncodingService)
{
    withhold("REALGetStringEncoding");
    REALstringStruct* string = host.newString("abc", encodingUnknown);
    EXPECT_EQ(open(string), Notes{"REALLockString(s1)"});
    EXPECT_FALSE(text->isRaw());
    close();
    host.drop(string);
}

TEST_F(RbTextTest, BothViewsAreReleased)
{
    // clang-format off
    const struct { double version; std::uint32_t encoding; Notes closing; } facts[] = {
        {2011.5, encodingMacRoman, {"REALUnlockString(s1)", "REALUnlockString(s2)", "REALUnlockString(s3)"}},
        {2011.5, encodingUTF8,     {"REALUnlockString(s1)", "REALUnlockString(s2)"}},
        {2012.0, encodingMacRoman, {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)", "PluginDisposeStringData(data of s1)"}},
        {2012.0, encodingUTF8,     {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)"}},
        {2016.0, encodingUTF8,     {"REALUnlockString(s1)", "PluginDisposeStringData(data of s1)", "PluginDisposeStringData(data of s1)"}},
        {2016.0, encodingUnknown,  {"REALUnlockString(s1)"}},
    };
    // clang-format on
    for (const auto& fact : facts)
        for (const char* after : {"", "#"}) {
            SCOPED_TRACE(testing::Message() << fact.version << ", " << std::hex << fact.encoding);
            if (*after) host.afterText = after;
            enter(fact.version);
            REALstringStruct* string = host.newString("abc", fact.encoding);
            open(string);
            take(View::utf8);
            take(View::macRoman);
            EXPECT_EQ(close(), fact.closing);
            EXPECT_EQ(host.live(), Notes{"s1: 1"});
            host.drop(string);
            host.afterText.assign(5, '\0');
        }
}

TEST_F(RbTextTest, AThrowingConstructionReleasesAllReferences)
{
    // clang-format off
    const struct { double version; const char* bytes; std::uint32_t encoding; const char* service; } facts[] = {
        {2016.0, "abc",  encodingUTF8,    "REALGetStringEncoding"},
        {2016.0, "abc",  encodingUTF8,    "REALLockString"},
        {2016.0, "abc",  encodingUnknown, "StringGetCString"},
        {2016.0, "abc",  encodingUnknown, "LenB"},
        {2016.0, "abc",  encodingUnknown, "REALLockString"},
        {2011.5, "abc",  encodingUnknown, "REALLockString"},
    };
    // clang-format on
    for (const auto& fact : facts) {
        SCOPED_TRACE(fact.service);
        enter(fact.version);
        REALstringStruct* string = host.newString(fact.bytes, fact.encoding);
        host.inNext(fact.service, [] { throw std::runtime_error("thrown"); });
        EXPECT_THROW(open(string), std::runtime_error);
        EXPECT_EQ(host.live(), Notes{"s1: 1"});
        host.drop(string);
    }
}

TEST_F(RbTextTest, AThrowingBuildOfUnknownTextRaisesAHostException)
{
    REALstringStruct* string = host.newString("\x8E", encodingUnknown);
    host.inNext("REALBuildString", [] { throw std::bad_alloc(); });
    open(string);
    EXPECT_TRUE(text->isEmptyText());
    ASSERT_EQ(host.raised().size(), 1u);
    EXPECT_EQ(host.raised()[0].message, "Failed to allocate memory.");
    close();
    host.drop(string);
}

TEST_F(RbTextTest, AThrowingViewReleasesAllReferences)
{
    for (double version : {2011.5, 2016.0})
        for (View view : bothViews) {
            enter(version);
            REALstringStruct* string = host.newString("abc", encodingMacRoman);
            open(string);
            host.inNext(version < 2012 ? "REALConvertString" : "PluginGetStringData",
                        [] { throw std::runtime_error("thrown"); });
            EXPECT_THROW(take(view), std::runtime_error);
            close();
            EXPECT_EQ(host.live(), Notes{"s1: 1"});
            host.drop(string);
        }
}

} // namespace
